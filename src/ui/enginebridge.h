#pragma once

namespace duomir {

class Engine;

// The engine commands that frmMain runs, in one place, so that the window code reads the same
// whichever way the engine spells them.
namespace bridge {

// The Compare command over all pairs; false when nothing was compared or the run failed (the
// engine has told the person why).
bool compareAll(Engine &engine);
// Applies the filter selection to CompareResults and refills VisibleRows and the counts.
void buildVisibleRows(Engine &engine, int fileFilter);
// Loads Engine::ProfilePath into the pair list and the toolbar selections; false after message 805.
bool loadProfile(Engine &engine);
// Writes the pair list and the toolbar selections into Engine::ProfilePath.
void saveProfile(Engine &engine);

} // namespace bridge
} // namespace duomir

#pragma once

namespace duomir {

class Engine;
class dlgProgress;

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
// The synchronize driver from `startEntry` (0 = everything); false when a precondition refused.
bool synchronize(Engine &engine, int startEntry, dlgProgress *progress);
void copySelected(Engine &engine, int direction, int entry, dlgProgress *progress);
void deleteEntries(Engine &engine, int side, int entry);

} // namespace bridge
} // namespace duomir

#pragma once

#include "core/side.h"

namespace duomir {

class Engine;

// The synchronize driver over the comparison's rows. `startEntry` 0 runs every row; a positive
// index runs that row and, for a directory, its subtree. Checks the preconditions on the compare
// counters and the directions (messages 808, 809, 810 with the profile path; silent with
// DontAsk) and returns false when one refuses. Otherwise writes the "Start" log line, deletes on
// the sending side when Delete is on with exactly one direction, counts the bytes, shows the
// progress (not with DontAsk), copies source to destination and then destination to source,
// hides the progress, writes the "End" line and returns true, also when cancelled.
// It does not confirm, touch buttons or compare again: the caller does.
bool Synchronize(Engine &engine, int startEntry);

// Copies the row `startEntry` (and a directory's subtree) from side `d` to the other side
// whichever side is newer, with progress. No confirmation, no re-compare.
void CopySelected(Engine &engine, Side d, int startEntry);

} // namespace duomir

#pragma once

namespace duomir {

class Engine;

// Mode bit of DeleteEntries: delete only what the other side lacks.
namespace DeleteMode {
inline constexpr int OnlyMissingOnOtherSide = 2;
// Folders the other side lacks go too once their files are gone (a mirror), deepest first; one
// that still holds something stays, silently.
inline constexpr int EmptiedFolders = 4;
} // namespace DeleteMode

// Deletes on `side` the entry `start` when it is a file (marked or not), or the marked files of
// its subtree when it is a directory (all pairs' rows when `start` is 0). A selected directory is
// removed only when it is already empty; subdirectories always stay. Read-only files are made
// writable first. Runs to the end even when the run is cancelled; every failure goes to
// ReportResult.
void DeleteEntries(Engine &engine, int side, int start, int mode);

} // namespace duomir

#pragma once

#include <QFlags>

#include "core/side.h"

namespace duomir {

class Comparison;
class Reporter;
class SyncRun;

enum class DeleteMode {
    // Delete only what the other side lacks.
    OnlyMissingOnOtherSide = 2,
    // Folders the other side lacks go too once their files are gone (a mirror), deepest first;
    // one that still holds something stays, silently.
    EmptiedFolders = 4,
};
Q_DECLARE_FLAGS(DeleteModes, DeleteMode)
Q_DECLARE_OPERATORS_FOR_FLAGS(DeleteModes)

// Deletes on `side` the entry `start` when it is a file (marked or not), or the marked files of
// its subtree when it is a directory (all pairs' rows when `start` is 0). A selected directory is
// removed only when it is already empty; subdirectories always stay. Read-only files are made
// writable first. Pairs whose deletion the guard held back in this run are left alone. Runs to
// the end even when the run is cancelled; every failure goes to the reporter.
void DeleteEntries(const Comparison &comparison, SyncRun &run, Reporter &reporter, Side side,
                   int start, DeleteModes mode = {});

} // namespace duomir

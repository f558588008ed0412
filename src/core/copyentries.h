#pragma once

#include <QFlags>

#include "core/side.h"

namespace duomir {

class Comparison;
class Reporter;
class SyncRun;

enum class CopyMode {
    CountOnly = 1,        // add the sizes to the run's byte total, touch nothing
    ReceivingDecides = 2, // leave out what is missing on the receiving side
    IgnoreState = 4,      // copy whichever side is newer (a selected entry)
};
Q_DECLARE_FLAGS(CopyModes, CopyMode)
Q_DECLARE_OPERATORS_FOR_FLAGS(CopyModes)

// Copies the comparison's rows from side `d` to side `d xor 1`: the entry `start` alone
// when it is a file, its subtree when it is a directory, every pair's rows when `start` is 0.
// Creates missing directories (sending directory's permission bits), makes read-only targets
// writable, and copies the marked files whose State names `d` as the newer side (or any marked
// file with IgnoreState). Stops before the next entry once the run is cancelled. Every
// failure goes to the reporter and the walk goes on. Drives the run's progress when it is visible.
// Small files are copied on worker threads (see CopyPipeline); every result is still reported on
// the calling thread, in walk order.
void CopyEntries(const Comparison &comparison, SyncRun &run, Reporter &reporter, Side d, int start,
                 CopyModes mode = {});

} // namespace duomir

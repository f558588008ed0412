#pragma once

#include <cstdint>

namespace duomir {

// What the last synchronization did, for a summary; reset by the driver at the start of a run.
struct SyncStats
{
    int filesCopied = 0;
    std::int64_t bytesCopied = 0;
    int directoriesCreated = 0;
    int filesDeleted = 0;
    int failures = 0; // failed operations that were reported
};

} // namespace duomir

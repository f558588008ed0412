#pragma once

#include <array>
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
    // The same by direction (0: source to destination) and by side that lost files, in the shape
    // of the plan the confirmation showed.
    std::array<int, 2> copies{};
    std::array<std::int64_t, 2> bytes{};
    std::array<int, 2> replaces{};
    std::array<int, 2> deletions{};
    std::array<int, 2> folderRemovals{};
};

} // namespace duomir

#pragma once

#include <QString>
#include <atomic>
#include <cstdint>
#include <vector>

#include "core/fileentry.h"
#include "core/textstore.h"

namespace duomir {

class Interaction;

// What a scan finds besides its entries.
struct ScanExtras
{
    // In: a folder below the root ("/"-separated) that is never listed, as the versions folder.
    QString skipFolder;
    // In: how many folders are listed at once; -1 lets the file system of the root decide
    // (several on a network mount, where each call is a round trip; else one).
    int listingThreads = -1;
    // In: counts the entries listed so far, for a progress display on another thread.
    std::atomic<std::int64_t> *listed = nullptr;
    std::vector<QString> leftovers; // temporary files of killed copies, full paths
    // The directory listed as the root (device and inode), 0 when none was: the file operations
    // later act only in this very directory, whatever its path names by then.
    std::uint64_t rootDevice = 0;
    std::uint64_t rootInode = 0;
    // The root's file system keeps modification times only to two seconds (FAT, exFAT).
    bool coarseTimes = false;
};
struct DirPair;
struct MaskSet;

// The seconds east of UTC of the local time zone now. Every date of one run uses this one offset
// (daylight saving as it is today, not as it was on the file's date).
int currentUtcOffset();

// A file time (seconds since the epoch, UTC) as a Date: local time by `utcOffset` seconds,
// whole seconds, days since 1899-12-30.
Date FileTimeToDate(std::int64_t seconds, int utcOffset);
// The file time back from a Date made with the same offset, to the second.
std::int64_t DateToFileTime(Date date, int utcOffset);

// Scans one side of a pair into `entries`: element 0 describes the root, then every admitted file
// and directory in pre-order (a directory's entry precedes what it holds; within one directory
// first the files, then the directories, each by their sort keys, so that a scan without case
// twins among its directories is in the order of SortEntries already). `directory` is the root path
// ending in the separator. The switches SubDirs, SysDirs, HiddenDirs, SysFiles and HiddenFiles of
// `flags` and the two mask sets decide what is taken; a name beginning with "." is a hidden one
// ("." and ".." are never taken). Files of one directory share one path string. The texts go to
// `texts`, which must outlive the entries. `ui` (may be null) gets a yield after every listed item;
// null gives a scan that may run on any thread. `utcOffset` is fixed by the caller, so that scans
// on several threads share one offset and never ask for the local time zone concurrently. The
// temporary files that copies left behind are never entries; their full paths, and which directory
// the root was, go to `extras` when it is given. Returns true only when the root itself cannot be
// listed (missing, not a directory, refused, an empty text or one holding NUL); `entries` then
// holds element 0 alone. Unreadable subdirectories stay as empty directories.
bool ScanDirectory(const QString &directory, const MaskSet &directoryMasks,
                   const MaskSet &fileMasks, const DirPair &flags, FileArray &entries,
                   TextStore &texts, Interaction *ui, int utcOffset, ScanExtras *extras = nullptr);

} // namespace duomir

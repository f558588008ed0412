#pragma once

#include <QByteArray>
#include <sys/types.h>

namespace duomir {

// Whether the file system of the directory open as `fd` keeps modification times only to two
// seconds (FAT, exFAT, and FUSE mounts of them): a copy there gets a time up to two seconds off
// its source's.
bool keepsCoarseTimes(int fd);

// The parts of that decision that read no system state, for tests: the file system type by
// statfs, the mount table's type for a FUSE mount, and the first sector of its device when the
// type does not tell (fuseblk serves NTFS as well).
enum class ClockKind { Fine, Coarse, AskMountTable };
ClockKind clockOfFileSystemType(long statfsType);
bool coarseMountType(const QByteArray &fsType);
bool coarseBootSector(const QByteArray &sector);

} // namespace duomir

#pragma once

#include <QByteArray>
#include <QDateTime>
#include <sys/types.h>

#include "core/platform/anchor.h"
#include "core/platform/fileops.h"

namespace duomir {

// One trash in the freedesktop.org layout: its files/ and info/ folders, and the
// directory that the Path lines of its info files are relative to (empty for the home trash,
// whose Path lines are absolute).
struct TrashCan
{
    Fd files;
    Fd info;
    QByteArray top;
    dev_t device = 0;
};

// Opens the trash for files on `device`: the home trash `homeTrash` when it lies on that volume,
// else `$topdir/.Trash/$uid` when `$topdir/.Trash` is a sticky folder and no link, else
// `$topdir/.Trash-$uid`; `folderPath` is the real absolute path of a folder on that volume
// (its topdir is the highest folder above it on the same device). Missing trash folders are made
// (mode 0700). A trash folder that is a link, not a folder or somebody else's is never used:
// OpError::NoTrash when no trash can be had.
OpResult openTrash(dev_t device, const QByteArray &folderPath, const QByteArray &homeTrash,
                   TrashCan &out);

// The info file's Path value: every byte outside the unreserved URL characters and "/" as %XX.
QByteArray trashPathValue(const QByteArray &path);

// Makes the info file for a file of original path `originalPath` in `can` under a name no other
// file of the trash holds (created with O_EXCL, so two runs never take the same one); `name` is
// set to the name the file must take in files/. `attempt` counts the names tried so far: a
// caller whose move found files/NAME taken calls again and gets the next one.
OpResult reserveTrashName(const TrashCan &can, const QByteArray &originalPath,
                          const QDateTime &when, QByteArray &name, int &attempt);

// The real absolute path of the folder open as `fd` (through /proc), empty when unknown.
QByteArray folderPathOf(int fd);

} // namespace duomir

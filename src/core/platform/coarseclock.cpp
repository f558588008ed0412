#include "core/platform/coarseclock.h"

#include <QFile>
#include <QList>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "core/platform/anchor.h"

namespace duomir {

namespace {

constexpr long MsdosMagic = 0x4d44;
constexpr long ExfatMagic = 0x2011BAB0;
constexpr long FuseMagic = 0x65735546;

// The file-system type and source of the mount whose device is `device`, from the mount table.
bool findMount(dev_t device, QByteArray &type, QByteArray &source)
{
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    if (!table.open(QIODevice::ReadOnly))
        return false;
    const QByteArray wanted =
        QByteArray::number(major(device)) + ':' + QByteArray::number(minor(device));
    for (const QByteArray &line : table.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf("-");
        if (fields.size() < 3 || fields[2] != wanted || dash < 0 || dash + 2 >= fields.size())
            continue;
        type = fields[dash + 1];
        source = fields[dash + 2];
        return true;
    }
    return false;
}

// What udev found on the device, where udev runs: no need to read the device itself.
QByteArray udevFileSystem(dev_t device)
{
    QFile data(QStringLiteral("/run/udev/data/b%1:%2").arg(major(device)).arg(minor(device)));
    if (!data.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray &line : data.readAll().split('\n')) {
        if (line.startsWith("E:ID_FS_TYPE="))
            return line.mid(13);
    }
    return {};
}

} // namespace

ClockKind clockOfFileSystemType(long statfsType)
{
    if (statfsType == MsdosMagic || statfsType == ExfatMagic)
        return ClockKind::Coarse;
    return statfsType == FuseMagic ? ClockKind::AskMountTable : ClockKind::Fine;
}

bool coarseMountType(const QByteArray &fsType)
{
    const QByteArray type = fsType.startsWith("fuse.") ? fsType.mid(5) : fsType;
    return type == "exfat" || type == "vfat" || type == "msdos" || type == "fat" ||
           type == "fusefat" || type == "exfat-fuse";
}

bool coarseBootSector(const QByteArray &sector)
{
    if (sector.size() < 90)
        return false;
    return sector.mid(3, 8) == "EXFAT   " || sector.mid(54, 5) == "FAT12" ||
           sector.mid(54, 5) == "FAT16" || sector.mid(82, 5) == "FAT32";
}

bool keepsCoarseTimes(int fd)
{
    struct statfs fs;
    if (::fstatfs(fd, &fs) != 0)
        return false;
    const ClockKind kind = clockOfFileSystemType(long(fs.f_type));
    if (kind != ClockKind::AskMountTable)
        return kind == ClockKind::Coarse;
    struct stat st;
    QByteArray type;
    QByteArray source;
    if (::fstat(fd, &st) != 0 || !findMount(st.st_dev, type, source))
        return false;
    if (type != "fuseblk")
        return coarseMountType(type);
    // fuseblk names no file system: ask udev, else the device's first sector where it may be
    // read (never opened when it is not a block device).
    if (const QByteArray found = udevFileSystem(st.st_dev); !found.isEmpty())
        return coarseMountType(found);
    const Fd device(::open(source.constData(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    struct stat ds;
    if (!device.valid() || ::fstat(device.get(), &ds) != 0 || !S_ISBLK(ds.st_mode))
        return false;
    QByteArray sector(512, '\0');
    const ssize_t n = ::pread(device.get(), sector.data(), size_t(sector.size()), 0);
    return n == sector.size() && coarseBootSector(sector);
}

} // namespace duomir

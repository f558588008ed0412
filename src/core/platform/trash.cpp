#include "core/platform/trash.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace duomir {

namespace {

// A trash folder (or one of its two parts) that this user may use: made when missing, and no
// link, no file and nobody else's when found.
Fd ownFolder(int dir, const char *name)
{
    if (::mkdirat(dir, name, 0700) != 0 && errno != EEXIST)
        return Fd();
    Fd fd(::openat(dir, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat st;
    if (!fd.valid() || ::fstat(fd.get(), &st) != 0 || st.st_uid != ::geteuid())
        return Fd();
    return fd;
}

bool openParts(int trash, TrashCan &out)
{
    out.files = ownFolder(trash, "files");
    out.info = ownFolder(trash, "info");
    return out.files.valid() && out.info.valid();
}

// The highest folder above `path` (itself included) on `device`: the mount point of its volume.
QByteArray topdirOf(QByteArray path, dev_t device)
{
    while (path.size() > 1) {
        const qsizetype slash = path.lastIndexOf('/');
        const QByteArray parent = slash <= 0 ? QByteArray("/") : path.left(slash);
        struct stat st;
        if (::lstat(parent.constData(), &st) != 0 || st.st_dev != device)
            break;
        path = parent;
    }
    return path;
}

OpResult noTrash()
{
    return OpResult::failure(OpError::NoTrash);
}

} // namespace

QByteArray folderPathOf(int fd)
{
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    QByteArray path(PATH_MAX, '\0');
    const ssize_t n = ::readlink(link.c_str(), path.data(), size_t(path.size()));
    if (n <= 0 || n >= path.size() || path.at(0) != '/')
        return {};
    path.truncate(n);
    // A folder removed since it was opened: no path names it any more.
    if (path.endsWith(" (deleted)"))
        return {};
    return path;
}

QByteArray trashPathValue(const QByteArray &path)
{
    return path.toPercentEncoding("/");
}

OpResult openTrash(dev_t device, const QByteArray &folderPath, const QByteArray &homeTrash,
                   TrashCan &out)
{
    out.device = device;
    struct stat st;
    if (!homeTrash.isEmpty()) {
        const qsizetype slash = homeTrash.lastIndexOf('/');
        const QByteArray parent = slash <= 0 ? QByteArray("/") : homeTrash.left(slash);
        if (::stat(parent.constData(), &st) == 0 && st.st_dev == device) {
            const Fd dir(::open(parent.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            const QByteArray name = homeTrash.mid(slash + 1);
            if (dir.valid()) {
                const Fd trash = ownFolder(dir.get(), name.constData());
                if (trash.valid() && openParts(trash.get(), out)) {
                    out.top.clear();
                    return OpResult::success();
                }
            }
            return noTrash();
        }
    }
    if (folderPath.isEmpty())
        return noTrash();
    out.top = topdirOf(folderPath, device);
    const Fd top(::open(out.top.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!top.valid() || ::fstat(top.get(), &st) != 0 || st.st_dev != device)
        return noTrash();
    const std::string uid = std::to_string(::geteuid());
    // A shared .Trash counts only when every user's part of it is protected by the sticky bit.
    if (::fstatat(top.get(), ".Trash", &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode) &&
        (st.st_mode & S_ISVTX)) {
        const Fd shared(
            ::openat(top.get(), ".Trash", O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (shared.valid()) {
            const Fd mine = ownFolder(shared.get(), uid.c_str());
            if (mine.valid() && openParts(mine.get(), out))
                return OpResult::success();
        }
    }
    const std::string own = ".Trash-" + uid;
    const Fd mine = ownFolder(top.get(), own.c_str());
    if (mine.valid() && openParts(mine.get(), out))
        return OpResult::success();
    return noTrash();
}

OpResult reserveTrashName(const TrashCan &can, const QByteArray &originalPath,
                          const QDateTime &when, QByteArray &name, int &attempt)
{
    QByteArray path = originalPath;
    if (!can.top.isEmpty() && can.top != "/" && path.startsWith(QByteArray(can.top + '/')))
        path = path.mid(can.top.size() + 1);
    else if (can.top == "/" && path.startsWith('/'))
        path = path.mid(1);
    const QByteArray content =
        "[Trash Info]\nPath=" + trashPathValue(path) +
        "\nDeletionDate=" + when.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLatin1() + "\n";
    const qsizetype slash = originalPath.lastIndexOf('/');
    const QByteArray base = originalPath.mid(slash + 1);
    for (; attempt < 1000; ++attempt) {
        const QByteArray suffix = attempt == 0 ? QByteArray() : '.' + QByteArray::number(attempt);
        // Room for the suffix and ".trashinfo" within one name's 255 bytes.
        name = base.left(NAME_MAX - suffix.size() - 10) + suffix;
        const QByteArray infoName = name + ".trashinfo";
        const Fd fd(::openat(can.info.get(), infoName.constData(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!fd.valid() && errno == EEXIST)
            continue;
        if (!fd.valid())
            return OpResult::failure(errno);
        if (::write(fd.get(), content.constData(), size_t(content.size())) != content.size()) {
            const int error = errno != 0 ? errno : EIO;
            ::unlinkat(can.info.get(), infoName.constData(), 0);
            return OpResult::failure(error);
        }
        ++attempt;
        return OpResult::success();
    }
    return OpResult::failure(EEXIST);
}

} // namespace duomir

#include "core/platform/anchor.h"

#include <QList>
#include <atomic>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <linux/openat2.h>

namespace duomir {

namespace {

// Set once the kernel has said that it has no openat2 (before Linux 5.6).
std::atomic<bool> noOpenat2 = false;

bool isDotName(const QByteArray &name)
{
    return name.isEmpty() || name == "." || name == "..";
}

int openPiece(int at, const QByteArray &piece)
{
    if (!noOpenat2.load(std::memory_order_relaxed)) {
        open_how how{};
        how.flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
        how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
        for (int attempt = 0; attempt < 8; ++attempt) {
            const long fd = ::syscall(SYS_openat2, at, piece.constData(), &how, sizeof how);
            if (fd >= 0)
                return int(fd);
            // EAGAIN: a rename elsewhere on the file system raced the look-up; ask again.
            if (errno != EAGAIN)
                break;
        }
        if (errno != ENOSYS)
            return -1;
        noOpenat2 = true;
    }
    Fd current;
    int dir = at;
    for (const QByteArray &name : piece.split('/')) {
        if (isDotName(name)) {
            errno = EINVAL;
            return -1;
        }
        Fd next(::openat(dir, name.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!next.valid())
            return -1;
        current = std::move(next);
        dir = current.get();
    }
    return current.release();
}

} // namespace

void Fd::reset()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

int openRoot(const QByteArray &root)
{
    return ::open(root.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
}

int openBeneath(int base, const QByteArray &relative)
{
    if (relative.isEmpty())
        return ::fcntl(base, F_DUPFD_CLOEXEC, 0);
    if (relative.startsWith('/') || relative.endsWith('/')) {
        errno = EINVAL;
        return -1;
    }
    Fd current;
    int at = base;
    qsizetype pos = 0;
    while (pos < relative.size()) {
        // A piece of whole names short enough for the kernel's path limit.
        qsizetype end = relative.size();
        if (end - pos >= PATH_MAX) {
            end = relative.lastIndexOf('/', pos + PATH_MAX - 1);
            if (end <= pos) {
                errno = ENAMETOOLONG;
                return -1;
            }
        }
        Fd next(openPiece(at, relative.mid(pos, end - pos)));
        if (!next.valid())
            return -1;
        current = std::move(next);
        at = current.get();
        pos = end + 1;
    }
    return current.release();
}

bool isFolderChange(int error)
{
    return error == ELOOP || error == ENOTDIR || error == EXDEV;
}

} // namespace duomir

#include "core/platform/posixfileops.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "core/platform/nativename.h"

namespace duomir {

namespace {

OpResult lastError()
{
    return OpResult::failure(errno != 0 ? errno : EIO);
}

// Closes a descriptor when the copy leaves its scope, whichever way.
class Fd
{
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    ~Fd()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;

    int get() const { return m_fd; }
    int release() { return std::exchange(m_fd, -1); }

private:
    int m_fd;
};

// The hidden temporary name beside the target: ".name.duomir-XXXXXX", cut so that it stays within
// the 255-byte limit of a name.
QByteArray temporaryTemplate(const QByteArray &target)
{
    const qsizetype slash = target.lastIndexOf('/');
    const QByteArray dir = target.left(slash + 1);
    QByteArray name = target.mid(slash + 1);
    static constexpr qsizetype maxName = 255 - 1 - 14;
    if (name.size() > maxName)
        name.truncate(maxName);
    return dir + '.' + name + ".duomir-XXXXXX";
}

bool fallbackNeeded(int error)
{
    return error == EXDEV || error == ENOSYS || error == EOPNOTSUPP || error == EINVAL;
}

} // namespace

PosixFileOps &PosixFileOps::instance()
{
    static PosixFileOps ops;
    return ops;
}

bool PosixFileOps::directoryExists(const QString &path)
{
    if (!placeKnown(path))
        return false;
    struct stat st;
    return ::stat(toNative(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
}

OpResult PosixFileOps::makeDirectory(const QString &path, const QString &templateDir)
{
    if (!placeKnown(path))
        return OpResult::failure(OpError::PlaceUnknown);
    mode_t mode = 0777;
    struct stat st;
    const bool haveTemplate = ::stat(toNative(templateDir).constData(), &st) == 0;
    if (haveTemplate)
        mode = (st.st_mode & 07777) | S_IRWXU;
    const QByteArray name = toNative(path);
    if (sysMkdir(name.constData(), mode) != 0)
        return lastError();
    // mkdir leaves out the umask bits; the template's bits are the ones wanted.
    if (haveTemplate && ::chmod(name.constData(), mode) != 0)
        return lastError();
    return OpResult::success();
}

OpResult PosixFileOps::clearReadOnly(const QString &path)
{
    if (!placeKnown(path))
        return OpResult::failure(OpError::PlaceUnknown);
    const QByteArray name = toNative(path);
    struct stat st;
    if (::lstat(name.constData(), &st) != 0)
        return lastError();
    if (S_ISLNK(st.st_mode))
        return OpResult::success(); // a link has no permission bits of its own
    if (sysChmod(name.constData(), (st.st_mode & 07777) | S_IWUSR) != 0)
        return lastError();
    return OpResult::success();
}

OpResult PosixFileOps::removeFile(const QString &path)
{
    if (!placeKnown(path))
        return OpResult::failure(OpError::PlaceUnknown);
    return sysUnlink(toNative(path).constData()) == 0 ? OpResult::success() : lastError();
}

OpResult PosixFileOps::removeDirectory(const QString &path)
{
    if (!placeKnown(path))
        return OpResult::failure(OpError::PlaceUnknown);
    return sysRmdir(toNative(path).constData()) == 0 ? OpResult::success() : lastError();
}

OpResult PosixFileOps::copyFile(const QString &fromText, const QString &toText,
                                const CopyProgress &progress, const std::atomic<bool> &cancel)
{
    if (!placeKnown(fromText) || !placeKnown(toText))
        return OpResult::failure(OpError::PlaceUnknown);
    const QByteArray from = toNative(fromText);
    const QByteArray to = toNative(toText);

    struct stat st;
    if (::lstat(from.constData(), &st) != 0)
        return lastError();
    if (S_ISLNK(st.st_mode))
        return copyLink(from, to);
    if (!S_ISREG(st.st_mode))
        return OpResult::failure(OpError::NotRegularFile);

    // O_NONBLOCK: should the name have turned into a FIFO since the lstat, opening it must not
    // hang; the fstat below then refuses it.
    Fd in(sysOpenSource(from.constData()));
    if (in.get() < 0)
        return lastError();
    if (::fstat(in.get(), &st) != 0)
        return lastError();
    if (!S_ISREG(st.st_mode))
        return OpResult::failure(OpError::NotRegularFile);

    QByteArray temp = temporaryTemplate(to);
    Fd out(::mkostemp(temp.data(), O_CLOEXEC));
    if (out.get() < 0)
        return lastError();

    DataCopy copy(in.get(), out.get(), st.st_size, progress, cancel);
    OpResult result = copyData(copy, st.st_blocks);
    if (result.ok()) {
        const struct timespec times[2] = {st.st_atim, st.st_mtim};
        if (::fchmod(out.get(), st.st_mode & 07777) != 0 || ::futimens(out.get(), times) != 0)
            result = lastError();
    }
    // No fsync: flushing every file would make a tree of small files many times slower, and a
    // crash can at worst leave the new file empty or old beside an intact source; the next run
    // sees the difference and copies again. The old target is never truncated in place.
    if (result.ok() && ::close(out.release()) != 0)
        result = lastError();
    if (result.ok() && sysRename(temp.constData(), to.constData()) != 0)
        result = lastError();
    if (!result.ok())
        ::unlink(temp.constData());
    return result;
}

OpResult PosixFileOps::copyData(DataCopy &copy, blkcnt_t blocks)
{
    // Fewer blocks than bytes: the source has holes. They stay holes in the copy, so that a sparse
    // file (a disk image, a database) takes no more room on the receiving side than here.
    if (std::int64_t(blocks) * 512 < copy.size) {
        while (copy.pos < copy.size && !copy.endOfFile) {
            const off_t data = ::lseek(copy.in, copy.pos, SEEK_DATA);
            if (data < 0 && errno != ENXIO)
                break; // no word on holes here: the rest is copied as data
            const std::int64_t next = data < 0 ? copy.size : data; // ENXIO: a hole to the end
            if (next > copy.pos) {
                copy.pos = next;
                if (::lseek(copy.in, next, SEEK_SET) < 0 || ::lseek(copy.out, next, SEEK_SET) < 0)
                    return lastError();
                if (copy.progress)
                    copy.progress(copy.size, copy.pos);
            }
            const off_t hole = data < 0 ? -1 : ::lseek(copy.in, data, SEEK_HOLE);
            if (hole < 0 || ::lseek(copy.in, data, SEEK_SET) < 0)
                break;
            if (const OpResult r = copyRun(copy, hole); !r.ok())
                return r;
        }
    }
    // The rest, and whatever was appended since the size was read.
    if (const OpResult r = copyRun(copy, -1); !r.ok())
        return r;
    // A hole at the end has no data to write: the length says it.
    if (copy.pos > copy.writtenEnd && ::ftruncate(copy.out, copy.pos) != 0)
        return lastError();
    return OpResult::success();
}

// Copies from the current offsets until `end` (-1: the end of the file) in chunks, with a cancel
// check before and a progress call after each.
OpResult PosixFileOps::copyRun(DataCopy &copy, std::int64_t end)
{
    while (!copy.endOfFile && (end < 0 || copy.pos < end)) {
        if (copy.cancel)
            return OpResult::failure(ECANCELED);
        const std::int64_t want = end < 0 ? m_chunkSize : std::min(m_chunkSize, end - copy.pos);
        ssize_t n = -1;
        if (copy.useRange) {
            n = sysCopyRange(copy.in, copy.out, static_cast<size_t>(want));
            if (n < 0 && !copy.copiedAny && fallbackNeeded(errno)) {
                copy.useRange = false;
                continue;
            }
            if (n < 0)
                return lastError();
        } else {
            // One buffer a thread, kept: between two file systems every file takes this path, and
            // allocating (and zeroing) a buffer per small file would cost more than its copy.
            constexpr size_t bufferSize = 1 << 20;
            thread_local const std::unique_ptr<char[]> buffer(new char[bufferSize]);
            std::int64_t chunkDone = 0;
            while (chunkDone < want) {
                const size_t ask = std::min<size_t>(bufferSize, size_t(want - chunkDone));
                const ssize_t got = ::read(copy.in, buffer.get(), ask);
                if (got < 0 && errno == EINTR)
                    continue;
                if (got < 0)
                    return lastError();
                if (got == 0)
                    break;
                for (ssize_t put = 0; put < got;) {
                    const ssize_t w = sysWrite(copy.out, buffer.get() + put, size_t(got - put));
                    if (w < 0 && errno == EINTR)
                        continue;
                    if (w < 0)
                        return lastError();
                    put += w;
                }
                chunkDone += got;
            }
            n = static_cast<ssize_t>(chunkDone);
        }
        if (n == 0) {
            copy.endOfFile = true;
            break;
        }
        copy.copiedAny = true;
        copy.pos += n;
        copy.writtenEnd = copy.pos;
        if (copy.progress)
            copy.progress(std::max(copy.size, copy.pos), copy.pos);
    }
    return OpResult::success();
}

OpResult PosixFileOps::copyLink(const QByteArray &from, const QByteArray &to)
{
    std::vector<char> target(4096);
    for (;;) {
        const ssize_t n = ::readlink(from.constData(), target.data(), target.size());
        if (n < 0)
            return lastError();
        if (size_t(n) < target.size()) {
            target.resize(size_t(n));
            break;
        }
        target.resize(target.size() * 2);
    }
    target.push_back('\0');
    struct stat st;
    if (::lstat(from.constData(), &st) != 0)
        return lastError();

    // symlink() has no mkstemp of its own: try fresh names until one is free.
    const QByteArray pattern = temporaryTemplate(to);
    for (int attempt = 0; attempt < 100; ++attempt) {
        QByteArray temp = pattern;
        Fd probe(::mkstemp(temp.data())); // reserves a unique name, replaced at once
        if (probe.get() < 0)
            return lastError();
        ::unlink(temp.constData());
        if (::symlink(target.data(), temp.constData()) != 0) {
            if (errno == EEXIST)
                continue;
            return lastError();
        }
        const struct timespec times[2] = {st.st_atim, st.st_mtim};
        ::utimensat(AT_FDCWD, temp.constData(), times, AT_SYMLINK_NOFOLLOW);
        if (sysRename(temp.constData(), to.constData()) != 0) {
            const OpResult failed = lastError();
            ::unlink(temp.constData());
            return failed;
        }
        return OpResult::success();
    }
    return OpResult::failure(EEXIST);
}

int PosixFileOps::sysOpenSource(const char *path)
{
    return ::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

ssize_t PosixFileOps::sysCopyRange(int in, int out, size_t length)
{
    return ::copy_file_range(in, nullptr, out, nullptr, length, 0);
}

ssize_t PosixFileOps::sysWrite(int fd, const void *data, size_t length)
{
    return ::write(fd, data, length);
}

int PosixFileOps::sysRename(const char *from, const char *to)
{
    return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}

int PosixFileOps::sysMkdir(const char *path, mode_t mode)
{
    return ::mkdir(path, mode);
}

int PosixFileOps::sysUnlink(const char *path)
{
    return ::unlink(path);
}

int PosixFileOps::sysRmdir(const char *path)
{
    return ::rmdir(path);
}

int PosixFileOps::sysChmod(const char *path, mode_t mode)
{
    return ::chmod(path, mode);
}

} // namespace duomir

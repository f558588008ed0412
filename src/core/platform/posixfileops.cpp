#include "core/platform/posixfileops.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/nativename.h"
#include "core/platform/temporaryname.h"

namespace duomir {

namespace {

OpResult lastError()
{
    return OpResult::failure(errno != 0 ? errno : EIO);
}

// A failure while reaching a folder below the root: a link or a file on the way is a change since
// the comparison, which listed only real folders there.
OpResult folderError()
{
    const int error = errno != 0 ? errno : EIO;
    return OpResult::failure(isFolderChange(error) ? OpError::FolderChanged : error);
}

bool matches(const struct stat &st, const Seen &seen)
{
    return st.st_size == seen.size && st.st_mtim.tv_sec == seen.mtime &&
           std::uint32_t(st.st_mtim.tv_nsec) == seen.mtimeNs;
}

bool unchanged(const struct stat &now, const struct stat &before)
{
    return now.st_size == before.st_size && now.st_mtim.tv_sec == before.st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
}

bool fallbackNeeded(int error)
{
    return error == EXDEV || error == ENOSYS || error == EOPNOTSUPP || error == EINVAL;
}

// The owner and group of `st` on the new object `fd` (or, with a name, the link `name` in `dir`):
// a process that may not give them (not root) keeps its own. A program that runs with its
// owner's rights must not become one that runs with someone else's, so setuid and setgid go
// whenever the owner could not be kept.
mode_t keepOwner(int fd, int dir, const char *name, const struct stat &st)
{
    mode_t mode = st.st_mode & 07777;
    struct stat now;
    const int got = name ? ::fstatat(dir, name, &now, AT_SYMLINK_NOFOLLOW) : ::fstat(fd, &now);
    bool kept = got == 0 && now.st_uid == st.st_uid && now.st_gid == st.st_gid;
    if (!kept && got == 0) {
        kept = name ? ::fchownat(dir, name, st.st_uid, st.st_gid, AT_SYMLINK_NOFOLLOW) == 0
                    : ::fchown(fd, st.st_uid, st.st_gid) == 0;
    }
    if (!kept)
        mode &= ~mode_t(S_ISUID | S_ISGID);
    return mode;
}

// A new temporary file in `dir`, locked while it is written: a lock that can be taken marks one
// that a dead run left behind.
int createTemporary(int dir, std::string &name)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        name = newTemporaryName();
        const int fd =
            ::openat(dir, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (fd < 0 && errno == EEXIST)
            continue;
        if (fd >= 0)
            ::flock(fd, LOCK_EX);
        return fd;
    }
    errno = EEXIST;
    return -1;
}

} // namespace

PosixFileOps &PosixFileOps::instance()
{
    static PosixFileOps ops;
    return ops;
}

OpResult PosixFileOps::locate(const TreePath &place, Located &out)
{
    if (!placeKnown(place) || place.relative.isEmpty())
        return OpResult::failure(OpError::PlaceUnknown);
    const QByteArray relative = toNative(place.relative);
    const qsizetype slash = relative.lastIndexOf('/');
    out.name = relative.mid(slash + 1);
    if (out.name.isEmpty() || out.name == "." || out.name == "..")
        return OpResult::failure(OpError::PlaceUnknown);
    beforeResolve(place);
    return folder(place, slash < 0 ? QByteArray() : relative.left(slash), out.dir);
}

// Opening every folder anew for every file would cost several system calls a file, on trees of
// small files a quarter of the run. A walk meets the files of one folder one after the other, so
// the folders it acts in stay open until the walk ends (walkEnded). What a descriptor names is the
// folder that was reached without a link when it was opened: a link swapped in later is never
// followed through it.
OpResult PosixFileOps::rootFolder(const TreePath &place, std::shared_ptr<const Fd> &out)
{
    const QByteArray root = toNative(place.root);
    if (root.contains('\0'))
        return OpResult::failure(OpError::PlaceUnknown);
    const std::lock_guard lock(m_cacheMutex);
    const auto found = m_roots.constFind(root);
    if (found != m_roots.cend()) {
        out = *found;
        return OpResult::success();
    }
    // A root is looked up by its path once a walk: a path swapped for a link while the walk goes
    // on is never followed again. And it must still be the directory the comparison listed.
    auto opened = std::make_shared<Fd>(openRoot(root));
    if (!opened->valid())
        return lastError();
    struct stat st;
    if (::fstat(opened->get(), &st) != 0)
        return lastError();
    const RootIdentity &seen = place.rootId;
    if (seen.device != 0 &&
        (std::uint64_t(st.st_dev) != seen.device || std::uint64_t(st.st_ino) != seen.inode))
        return OpResult::failure(OpError::FolderChanged);
    m_roots.insert(root, opened);
    out = std::move(opened);
    return OpResult::success();
}

OpResult PosixFileOps::folder(const TreePath &place, const QByteArray &relative,
                              std::shared_ptr<const Fd> &out)
{
    if (relative.contains('\0'))
        return OpResult::failure(OpError::PlaceUnknown);
    std::shared_ptr<const Fd> base;
    if (const OpResult r = rootFolder(place, base); !r.ok())
        return r;
    if (relative.isEmpty()) {
        out = base;
        return OpResult::success();
    }
    const QByteArray key = toNative(place.root) + '\0' + relative;
    {
        const std::lock_guard lock(m_cacheMutex);
        const auto found = m_cache.constFind(key);
        if (found != m_cache.cend()) {
            out = *found;
            return OpResult::success();
        }
    }
    auto opened = std::make_shared<Fd>(openBeneath(base->get(), relative));
    if (!opened->valid())
        return folderError();
    out = opened;
    const std::lock_guard lock(m_cacheMutex);
    // Few folders are in use at once; a bounded set keeps far below any descriptor limit.
    if (m_cache.size() >= 64)
        m_cache.clear();
    m_cache.insert(key, std::move(opened));
    return OpResult::success();
}

void PosixFileOps::walkEnded()
{
    // A descriptor kept open would hold the file system busy: an unmount after the run fails.
    const std::lock_guard lock(m_cacheMutex);
    m_cache.clear();
    m_roots.clear();
    m_trashes.clear();
}

OpResult PosixFileOps::checkDirectory(const TreePath &dir)
{
    if (!placeKnown(dir))
        return OpResult::failure(OpError::PlaceUnknown);
    beforeResolve(dir);
    const QByteArray relative = toNative(dir.relative);
    // Looked at afresh, not in the kept folders: a walk checks each folder as it enters it, and
    // the files that follow use what this check found.
    {
        const std::lock_guard lock(m_cacheMutex);
        m_cache.remove(toNative(dir.root) + '\0' + relative);
    }
    std::shared_ptr<const Fd> found;
    return folder(dir, relative, found);
}

OpResult PosixFileOps::makeDirectory(const TreePath &dir, const TreePath &templateDir)
{
    if (!placeKnown(dir))
        return OpResult::failure(OpError::PlaceUnknown);
    struct stat st;
    bool haveTemplate = false;
    if (std::shared_ptr<const Fd> root; placeKnown(templateDir) && templateDir.relative.isEmpty()) {
        haveTemplate = rootFolder(templateDir, root).ok() && ::fstat(root->get(), &st) == 0;
    } else if (Located t; placeKnown(templateDir) && locate(templateDir, t).ok()) {
        haveTemplate = ::fstatat(t.fd(), t.name.constData(), &st, AT_SYMLINK_NOFOLLOW) == 0;
    }
    haveTemplate = haveTemplate && S_ISDIR(st.st_mode);
    const mode_t mode = haveTemplate ? (st.st_mode & 07777) | S_IRWXU : 0777;

    // The pair's own root is created where it is missing (a first copy into a new folder); it is
    // the one place named by the person, not reached through the tree.
    Located at;
    int parent = AT_FDCWD;
    if (dir.relative.isEmpty()) {
        at.name = toNative(dir.root);
    } else if (const OpResult r = locate(dir, at); !r.ok()) {
        return r;
    } else {
        parent = at.fd();
    }
    if (sysMkdir(parent, at.name.constData(), mode) != 0)
        return errno == EEXIST ? OpResult::failure(OpError::NotSeen) : lastError();
    if (dir.relative.isEmpty()) {
        // The root made here is the one this walk fills, whatever the comparison recorded of the
        // directory that stood there before.
        auto made = std::make_shared<Fd>(openRoot(at.name));
        const std::lock_guard lock(m_cacheMutex);
        if (made->valid())
            m_roots.insert(at.name, std::move(made));
    }
    if (!haveTemplate)
        return OpResult::success();
    // mkdir leaves out the umask bits; the template's bits are the ones wanted.
    const Fd made(
        ::openat(parent, at.name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!made.valid())
        return lastError();
    struct stat wanted = st;
    wanted.st_mode = mode;
    if (::fchmod(made.get(), keepOwner(made.get(), -1, nullptr, wanted)) != 0)
        return lastError();
    return OpResult::success();
}

OpResult PosixFileOps::lookAt(const TreePath &place, Located &at, struct stat &st)
{
    if (const OpResult r = locate(place, at); !r.ok())
        return r;
    if (::fstatat(at.fd(), at.name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return lastError();
    return OpResult::success();
}

OpResult PosixFileOps::clearReadOnly(const TreePath &file)
{
    Located at;
    struct stat st;
    if (const OpResult r = lookAt(file, at, st); !r.ok())
        return r;
    if (S_ISLNK(st.st_mode))
        return OpResult::success(); // a link has no permission bits of its own
    // The bits belong to the file, not to this name: a file with other hard links is shared with
    // places outside the pair, and its bits stay. (Replacing and deleting work without them.)
    if (st.st_nlink > 1 || (st.st_mode & S_IWUSR))
        return OpResult::success();
    if (sysChmod(at.fd(), at.name.constData(), (st.st_mode & 07777) | S_IWUSR) != 0)
        return lastError();
    return OpResult::success();
}

OpResult PosixFileOps::removeFile(const TreePath &file, const Seen &seen)
{
    Located at;
    struct stat st;
    if (const OpResult r = lookAt(file, at, st); !r.ok())
        return r;
    if (S_ISDIR(st.st_mode))
        return OpResult::failure(EISDIR);
    if (!matches(st, seen))
        return OpResult::failure(OpError::ChangedSinceCompare);
    if (keeping().mode != Keeping::Mode::ForGood)
        return keep(at.fd(), at.name, st, file, false);
    return sysUnlink(at.fd(), at.name.constData(), 0) == 0 ? OpResult::success() : lastError();
}

OpResult PosixFileOps::removeDirectory(const TreePath &dir)
{
    if (!placeKnown(dir))
        return OpResult::failure(OpError::PlaceUnknown);
    if (dir.relative.isEmpty()) {
        return sysUnlink(AT_FDCWD, toNative(dir.root).constData(), AT_REMOVEDIR) == 0
                   ? OpResult::success()
                   : lastError();
    }
    Located at;
    if (const OpResult r = locate(dir, at); !r.ok())
        return r;
    if (sysUnlink(at.fd(), at.name.constData(), AT_REMOVEDIR) != 0)
        return lastError();
    walkEnded(); // a kept descriptor of it would name a folder that is gone
    return OpResult::success();
}

OpResult PosixFileOps::removeLeftover(const TreePath &file)
{
    Located at;
    if (const OpResult r = locate(file, at); !r.ok())
        return r;
    if (!isTemporaryName(at.name.constData(), size_t(at.name.size())))
        return OpResult::failure(OpError::PlaceUnknown);
    struct stat st;
    if (::fstatat(at.fd(), at.name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return lastError();
    // A copy's temporary file is a regular file of mode 0600 until its data is complete; anything
    // else under such a name is somebody's own and stays.
    if (!S_ISREG(st.st_mode) || (st.st_mode & 07777) != 0600)
        return OpResult::failure(EEXIST);
    // A running copy holds its lock until its file has its name: such a file is kept. The lock
    // taken here is held until the name is gone.
    const Fd fd(
        ::openat(at.fd(), at.name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!fd.valid())
        return lastError();
    if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0)
        return OpResult::failure(EBUSY);
    return sysUnlink(at.fd(), at.name.constData(), 0) == 0 ? OpResult::success() : lastError();
}

OpResult PosixFileOps::copyFile(const TreePath &from, const Seen &fromSeen, const TreePath &to,
                                const std::optional<Seen> &toSeen, const CopyProgress &progress,
                                const std::atomic<bool> &cancel)
{
    if (!placeKnown(from) || !placeKnown(to))
        return OpResult::failure(OpError::PlaceUnknown);
    Located source;
    if (const OpResult r = locate(from, source); !r.ok())
        return r;
    struct stat st;
    if (::fstatat(source.fd(), source.name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
        return lastError();
    if (S_ISLNK(st.st_mode)) {
        if (!matches(st, fromSeen))
            return OpResult::failure(OpError::ChangedSinceCompare);
        return copyLink(source, st, to, toSeen);
    }
    if (!S_ISREG(st.st_mode))
        return OpResult::failure(OpError::NotRegularFile);

    // O_NONBLOCK: should the name have turned into a FIFO since the look, opening it must not
    // hang; the fstat below then refuses it.
    const Fd in(sysOpenSource(source.fd(), source.name.constData()));
    if (!in.valid())
        return lastError();
    if (::fstat(in.get(), &st) != 0)
        return lastError();
    if (!S_ISREG(st.st_mode))
        return OpResult::failure(OpError::NotRegularFile);
    // An old backup put back since the comparison must not go over the newer file it was
    // compared with: only the file the comparison saw is sent.
    if (!matches(st, fromSeen))
        return OpResult::failure(OpError::ChangedSinceCompare);

    Located target;
    if (const OpResult r = locate(to, target); !r.ok())
        return r;
    std::string temp;
    Fd out(createTemporary(target.fd(), temp));
    if (!out.valid())
        return lastError();

    DataCopy copy(in.get(), out.get(), st.st_size, progress, cancel);
    OpResult result = copyData(copy, st.st_blocks);
    if (result.ok()) {
        const struct timespec times[2] = {st.st_atim, st.st_mtim};
        // A file system without permission bits (FAT through FUSE) refuses the change; the copy
        // then keeps the temporary file's owner-only bits, never more than the source's.
        if (::fchmod(out.get(), keepOwner(out.get(), -1, nullptr, st)) != 0 && errno != ENOSYS &&
            errno != EOPNOTSUPP && errno != EPERM)
            result = lastError();
        if (result.ok() && ::futimens(out.get(), times) != 0)
            result = lastError();
    }
    // Written to while it was read: what arrived is neither the old nor the new content.
    if (struct stat after; result.ok() && (::fstat(in.get(), &after) != 0 || !unchanged(after, st)))
        result = OpResult::failure(OpError::ChangedSinceCompare);
    // No fsync: flushing every file would make a tree of small files many times slower, and a
    // crash can at worst leave the new file empty or old beside an intact source; the next run
    // sees the difference and copies again. The old target is never truncated in place.
    // The lock stays with a second descriptor until the file has its name, so that no other run
    // takes it for a leftover; closing the first one reports a failed write-back (NFS) here.
    Fd lock;
    if (result.ok()) {
        lock = Fd(::fcntl(out.get(), F_DUPFD_CLOEXEC, 0));
        if (::close(out.release()) != 0)
            result = lastError();
    }
    // What the file system stored of the time (FAT keeps two seconds): a change of it while the
    // file takes its name is the file system's own doing.
    struct stat stamped = {};
    const bool haveStamp = result.ok() && lock.valid() && ::fstat(lock.get(), &stamped) == 0;
    if (result.ok())
        result = place(target.fd(), temp.c_str(), target.name, to, toSeen);
    // Some FUSE file systems (FAT) stamp a renamed file with the time of the rename: the copy
    // would look newer than its source at the next comparison and be copied back.
    if (struct stat now; result.ok() && haveStamp && ::fstat(lock.get(), &now) == 0 &&
                         (now.st_mtim.tv_sec != stamped.st_mtim.tv_sec ||
                          now.st_mtim.tv_nsec != stamped.st_mtim.tv_nsec)) {
        const struct timespec times[2] = {st.st_atim, st.st_mtim};
        ::futimens(lock.get(), times);
    }
    if (!result.ok())
        ::unlinkat(target.fd(), temp.c_str(), 0);
    return result;
}

OpResult PosixFileOps::place(int dir, const char *temporary, const QByteArray &name,
                             const TreePath &to, const std::optional<Seen> &seen)
{
    const char *target = name.constData();
    struct stat st;
    if (seen) {
        // An edit made since the comparison is kept; so is whatever took the file's place.
        if (sysLookup(dir, target, &st) != 0)
            return errno == ENOENT ? OpResult::failure(OpError::ChangedSinceCompare) : lastError();
        if (S_ISDIR(st.st_mode) || !matches(st, *seen))
            return OpResult::failure(OpError::ChangedSinceCompare);
        if (keeping().mode != Keeping::Mode::ForGood) {
            // The old file gets its second name before the new one takes the first: at every
            // moment the name holds the old file or the new one. Should the rename fail after
            // that, the old file stays where it was and has a kept copy besides: nothing lost.
            OpResult kept = keep(dir, name, st, to, true);
            if (!kept.ok() &&
                (kept.error == EPERM || kept.error == EMLINK || kept.error == EOPNOTSUPP ||
                 kept.error == ENOSYS || kept.error == EIO)) {
                // No hard links here (FAT, exFAT): the old file is moved away first, and only
                // for the moment between the two renames is the name free. Should the second
                // rename fail, the old file is where it was kept, not lost.
                kept = keep(dir, name, st, to, false);
            }
            if (!kept.ok())
                return kept;
        }
        return sysRename(dir, temporary, target, 0) == 0 ? OpResult::success() : lastError();
    }
    // The comparison saw the name free: nothing that holds it now is replaced, be it a file made
    // since or the case twin that a case-blind file system takes for the same name.
    if (sysRename(dir, temporary, target, RENAME_NOREPLACE) == 0)
        return OpResult::success();
    if (errno == EEXIST)
        return OpResult::failure(OpError::NotSeen);
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        return lastError();
    // No exclusive rename here: a hard link never replaces anything either.
    if (sysLink(dir, temporary, target) == 0) {
        ::unlinkat(dir, temporary, 0);
        return OpResult::success();
    }
    if (errno == EEXIST)
        return OpResult::failure(OpError::NotSeen);
    // rclone mount answers EIO: no link was made there either.
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK && errno != EIO)
        return lastError();
    // Nor hard links (FAT, exFAT, rclone mount): look, then rename. Copies of this run do both
    // under one lock, so two case twins copied at once cannot both find the name free; only another
    // program making the name in the moment between could still lose it.
    static std::mutex lookThenRename;
    const std::lock_guard lock(lookThenRename);
    if (sysLookup(dir, target, &st) == 0)
        return OpResult::failure(OpError::NotSeen);
    if (errno != ENOENT)
        return lastError();
    return sysRename(dir, temporary, target, 0) == 0 ? OpResult::success() : lastError();
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
            const std::int64_t next =
                data < 0 ? copy.size : std::min<std::int64_t>(data, copy.size);
            if (next > copy.pos) {
                copy.pos = next;
                if (::lseek(copy.in, next, SEEK_SET) < 0 || ::lseek(copy.out, next, SEEK_SET) < 0)
                    return lastError();
                if (copy.progress)
                    copy.progress(copy.size, copy.pos);
            }
            if (data < 0 || next >= copy.size)
                break;
            const off_t hole = ::lseek(copy.in, data, SEEK_HOLE);
            if (hole < 0 || ::lseek(copy.in, data, SEEK_SET) < 0)
                break;
            if (const OpResult r = copyRun(copy, std::min<std::int64_t>(hole, copy.size)); !r.ok())
                return r;
        }
    }
    // The rest, up to the size seen when the file was opened: a file that keeps growing is not
    // chased (what was appended meanwhile shows in the next comparison).
    if (const OpResult r = copyRun(copy, copy.size); !r.ok())
        return r;
    // A hole at the end has no data to write: the length says it.
    if (copy.pos > copy.writtenEnd && ::ftruncate(copy.out, copy.pos) != 0)
        return lastError();
    return OpResult::success();
}

// Copies from the current offsets until `end` in chunks, with a cancel check before and a
// progress call after each.
OpResult PosixFileOps::copyRun(DataCopy &copy, std::int64_t end)
{
    while (!copy.endOfFile && copy.pos < end) {
        if (copy.cancel)
            return OpResult::failure(ECANCELED);
        const std::int64_t want = std::min(m_chunkSize, end - copy.pos);
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
            copy.progress(copy.size, copy.pos);
    }
    return OpResult::success();
}

OpResult PosixFileOps::copyLink(Located &source, const struct stat &st, const TreePath &to,
                                const std::optional<Seen> &toSeen)
{
    std::vector<char> target(4096);
    for (;;) {
        const ssize_t n =
            ::readlinkat(source.fd(), source.name.constData(), target.data(), target.size());
        if (n < 0)
            return lastError();
        if (size_t(n) < target.size()) {
            target.resize(size_t(n));
            break;
        }
        target.resize(target.size() * 2);
    }
    target.push_back('\0');

    Located at;
    if (const OpResult r = locate(to, at); !r.ok())
        return r;
    const int dir = at.fd();
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string temp = newTemporaryName();
        if (::symlinkat(target.data(), dir, temp.c_str()) != 0) {
            if (errno == EEXIST)
                continue;
            return lastError();
        }
        const struct timespec times[2] = {st.st_atim, st.st_mtim};
        ::utimensat(dir, temp.c_str(), times, AT_SYMLINK_NOFOLLOW);
        keepOwner(-1, dir, temp.c_str(), st);
        const OpResult placed = place(dir, temp.c_str(), at.name, to, toSeen);
        if (!placed.ok())
            ::unlinkat(dir, temp.c_str(), 0);
        return placed;
    }
    return OpResult::failure(EEXIST);
}

OpResult PosixFileOps::keep(int dir, const QByteArray &name, const struct stat &st,
                            const TreePath &place, bool byLink)
{
    switch (keeping().mode) {
    case Keeping::Mode::Trash:
        return keepInTrash(dir, name, st, byLink);
    case Keeping::Mode::Folder:
        return keepInFolder(dir, name, st, place, byLink);
    case Keeping::Mode::ForGood:
        break;
    }
    return OpResult::success();
}

OpResult PosixFileOps::keepInTrash(int dir, const QByteArray &name, const struct stat &st,
                                   bool byLink)
{
    // The trash of the file's own volume: a rename or a hard link, never a copy.
    const QByteArray folderPath = folderPathOf(dir);
    if (folderPath.isEmpty())
        return OpResult::failure(OpError::NoTrash);
    std::shared_ptr<const TrashCan> can;
    {
        const std::lock_guard lock(m_cacheMutex);
        if (const auto found = m_trashes.find(st.st_dev); found != m_trashes.end())
            can = found->second;
    }
    if (!can) {
        auto opened = std::make_shared<TrashCan>();
        if (const OpResult r =
                openTrash(st.st_dev, folderPath, toNative(keeping().homeTrash), *opened);
            !r.ok())
            return r;
        const std::lock_guard lock(m_cacheMutex);
        can = m_trashes.emplace(st.st_dev, std::move(opened)).first->second;
    }
    const QByteArray original = (folderPath == "/" ? QByteArray() : folderPath) + '/' + name;
    const QDateTime now = QDateTime::currentDateTime();
    int attempt = 0;
    for (;;) {
        QByteArray trashName;
        if (const OpResult r = reserveTrashName(*can, original, now, trashName, attempt); !r.ok())
            return r;
        if (sysKeep(dir, name.constData(), can->files.get(), trashName.constData(), byLink) == 0)
            return OpResult::success();
        const int error = errno;
        ::unlinkat(can->info.get(), QByteArray(trashName + ".trashinfo").constData(), 0);
        if (error == EEXIST)
            continue; // a file in the trash without its info file: another name
        return OpResult::failure(error == EXDEV ? OpError::NoTrash : error);
    }
}

OpResult PosixFileOps::keepInFolder(int dir, const QByteArray &name, const struct stat &,
                                    const TreePath &place, bool byLink)
{
    std::shared_ptr<const Fd> into;
    if (const OpResult r = versionsFolder(place, into); !r.ok())
        return r;
    for (int attempt = 1; attempt < 1000; ++attempt) {
        // Two files of one run under one name (a case twin, two pairs sharing a folder): the
        // later one is numbered.
        const QByteArray kept =
            attempt == 1 ? name : name.left(NAME_MAX - 4) + '.' + QByteArray::number(attempt);
        if (sysKeep(dir, name.constData(), into->get(), kept.constData(), byLink) == 0)
            return OpResult::success();
        if (errno != EEXIST)
            return lastError();
    }
    return OpResult::failure(EEXIST);
}

OpResult PosixFileOps::versionsFolder(const TreePath &place, std::shared_ptr<const Fd> &out)
{
    const Keeping &k = keeping();
    const QByteArray relative = toNative(place.relative);
    const qsizetype slash = relative.lastIndexOf('/');
    const QByteArray from = slash < 0 ? QByteArray() : relative.left(slash);
    const QByteArray key = "\x01" + toNative(place.root) + '\0' + from;
    {
        const std::lock_guard lock(m_cacheMutex);
        if (const auto found = m_cache.constFind(key); found != m_cache.cend()) {
            out = *found;
            return OpResult::success();
        }
    }
    const bool absolute = k.folder.startsWith(u'/');
    QList<QByteArray> names;
    if (!absolute)
        names = toNative(k.folder).split('/');
    names << toNative(k.runFolder);
    if (!from.isEmpty())
        names << from.split('/');
    std::shared_ptr<const Fd> base;
    if (absolute) {
        // A folder named by the person: made where missing, links on its path followed as for
        // a root.
        const QByteArray folder = toNative(k.folder);
        for (qsizetype at = folder.indexOf('/', 1); at > 0; at = folder.indexOf('/', at + 1))
            ::mkdir(folder.left(at).constData(), 0700);
        ::mkdir(folder.constData(), 0700);
        base = std::make_shared<const Fd>(openRoot(folder));
        if (!base->valid())
            return lastError();
    } else if (const OpResult r = rootFolder(place, base); !r.ok()) {
        return r;
    }
    Fd current;
    int at = base->get();
    for (const QByteArray &name : std::as_const(names)) {
        if (name.isEmpty() || name == "." || name == ".." || name.contains('\0'))
            return OpResult::failure(OpError::PlaceUnknown);
        if (::mkdirat(at, name.constData(), 0700) != 0 && errno != EEXIST)
            return lastError();
        current = Fd(::openat(at, name.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!current.valid())
            return folderError();
        at = current.get();
    }
    auto opened = std::make_shared<const Fd>(std::move(current));
    out = opened;
    const std::lock_guard lock(m_cacheMutex);
    if (m_cache.size() >= 64)
        m_cache.clear();
    m_cache.insert(key, std::move(opened));
    return OpResult::success();
}

OpResult PosixFileOps::listFolders(const TreePath &dir, QStringList &names)
{
    names.clear();
    std::shared_ptr<const Fd> found;
    if (!placeKnown(dir))
        return OpResult::failure(OpError::PlaceUnknown);
    if (const OpResult r = folder(dir, toNative(dir.relative), found); !r.ok())
        return r.error == ENOENT ? OpResult::success() : r;
    const int fd = ::openat(found->get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return lastError();
    DIR *stream = ::fdopendir(fd);
    if (!stream) {
        ::close(fd);
        return lastError();
    }
    while (const dirent *d = ::readdir(stream)) {
        struct stat st;
        if (std::strcmp(d->d_name, ".") == 0 || std::strcmp(d->d_name, "..") == 0 ||
            ::fstatat(::dirfd(stream), d->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISDIR(st.st_mode))
            continue;
        names << fromNative(QByteArray(d->d_name));
    }
    ::closedir(stream);
    return OpResult::success();
}

namespace {

// Empties the folder `name` in `parent` and removes it, never following a link.
int removeAll(int parent, const char *name)
{
    const int fd = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return -1;
    DIR *stream = ::fdopendir(fd);
    if (!stream) {
        ::close(fd);
        return -1;
    }
    int result = 0;
    while (const dirent *d = ::readdir(stream)) {
        if (std::strcmp(d->d_name, ".") == 0 || std::strcmp(d->d_name, "..") == 0)
            continue;
        struct stat st;
        if (::fstatat(::dirfd(stream), d->d_name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        const int r = S_ISDIR(st.st_mode) ? removeAll(::dirfd(stream), d->d_name)
                                          : ::unlinkat(::dirfd(stream), d->d_name, 0);
        if (r != 0)
            result = -1;
    }
    ::closedir(stream);
    if (result != 0)
        return -1;
    return ::unlinkat(parent, name, AT_REMOVEDIR);
}

} // namespace

OpResult PosixFileOps::removeTree(const TreePath &dir)
{
    Located at;
    if (const OpResult r = locate(dir, at); !r.ok())
        return r;
    if (removeAll(at.fd(), at.name.constData()) != 0)
        return lastError();
    walkEnded(); // a kept descriptor of a folder in it would name one that is gone
    return OpResult::success();
}

int PosixFileOps::sysKeep(int fromDir, const char *from, int toDir, const char *to, bool byLink)
{
    if (byLink)
        return ::linkat(fromDir, from, toDir, to, 0);
    if (::renameat2(fromDir, from, toDir, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        return -1;
    // No exclusive rename (FUSE): look, then rename, one keeper at a time.
    static std::mutex lookThenRename;
    const std::lock_guard lock(lookThenRename);
    struct stat st;
    if (::fstatat(toDir, to, &st, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return -1;
    }
    if (errno != ENOENT)
        return -1;
    return ::renameat(fromDir, from, toDir, to);
}

int PosixFileOps::sysOpenSource(int dir, const char *name)
{
    return ::openat(dir, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

ssize_t PosixFileOps::sysCopyRange(int in, int out, size_t length)
{
    return ::copy_file_range(in, nullptr, out, nullptr, length, 0);
}

ssize_t PosixFileOps::sysWrite(int fd, const void *data, size_t length)
{
    return ::write(fd, data, length);
}

int PosixFileOps::sysRename(int dir, const char *from, const char *to, unsigned flags)
{
    return ::renameat2(dir, from, dir, to, flags);
}

int PosixFileOps::sysLink(int dir, const char *from, const char *to)
{
    return ::linkat(dir, from, dir, to, 0);
}

int PosixFileOps::sysMkdir(int dir, const char *name, mode_t mode)
{
    return ::mkdirat(dir, name, mode);
}

int PosixFileOps::sysUnlink(int dir, const char *name, int flags)
{
    return ::unlinkat(dir, name, flags);
}

int PosixFileOps::sysLookup(int dir, const char *name, struct stat *st)
{
    return ::fstatat(dir, name, st, AT_SYMLINK_NOFOLLOW);
}

int PosixFileOps::sysChmod(int dir, const char *name, mode_t mode)
{
    // The name was just seen as no link; should it have become one since, the change must not
    // reach the file the link names: either call refuses a link.
    if (::fchmodat(dir, name, mode, AT_SYMLINK_NOFOLLOW) == 0)
        return 0;
    if (errno != ENOTSUP && errno != ENOSYS)
        return -1;
    // Without /proc the C library cannot change a name's bits without following it.
    const Fd fd(::openat(dir, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return fd.valid() ? ::fchmod(fd.get(), mode) : -1;
}

} // namespace duomir

#include "common/faultyfileops.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <strings.h>

namespace duomir {

namespace {

int fail(int code)
{
    errno = code;
    return -1;
}

} // namespace

bool FaultyFileOps::hits(const char *name) const
{
    return onlyPathsWith.isEmpty() || std::strstr(name, onlyPathsWith.constData()) != nullptr;
}

bool FaultyFileOps::writeFails()
{
    ++writes;
    return failWriteAt > 0 && writes == failWriteAt;
}

std::string FaultyFileOps::caseTwin(int dir, const char *name) const
{
    const int fd = ::openat(dir, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return {};
    DIR *listing = ::fdopendir(fd);
    if (!listing) {
        ::close(fd);
        return {};
    }
    std::string found;
    while (const dirent *d = ::readdir(listing)) {
        if (::strcasecmp(d->d_name, name) == 0)
            found = d->d_name;
    }
    ::closedir(listing);
    return found;
}

void FaultyFileOps::beforeResolve(const TreePath &place)
{
    if (onResolve)
        onResolve(place);
}

int FaultyFileOps::sysOpenSource(int dir, const char *name)
{
    if (sourcesVanish && hits(name))
        return fail(ENOENT);
    return PosixFileOps::sysOpenSource(dir, name);
}

ssize_t FaultyFileOps::sysCopyRange(int in, int out, size_t length)
{
    if (copyRangeErrno != 0)
        return fail(copyRangeErrno);
    if (writeFails())
        return fail(ENOSPC);
    return PosixFileOps::sysCopyRange(in, out, length);
}

ssize_t FaultyFileOps::sysWrite(int fd, const void *data, size_t length)
{
    if (writeFails())
        return fail(ENOSPC);
    return PosixFileOps::sysWrite(fd, data, length);
}

int FaultyFileOps::sysRename(int dir, const char *from, const char *to, unsigned flags)
{
    if (onChange)
        onChange();
    if (renameErrno != 0 && hits(to))
        return fail(renameErrno);
    if ((caseBlind || linkErrno != 0) && flags != 0)
        return fail(EINVAL);
    return PosixFileOps::sysRename(dir, from, to, flags);
}

int FaultyFileOps::sysLink(int dir, const char *from, const char *to)
{
    if (onChange)
        onChange();
    if (linkErrno != 0)
        return fail(linkErrno);
    if (caseBlind)
        return fail(EPERM);
    return PosixFileOps::sysLink(dir, from, to);
}

int FaultyFileOps::sysMkdir(int dir, const char *name, mode_t mode)
{
    if (caseBlind && !caseTwin(dir, name).empty())
        return fail(EEXIST);
    return PosixFileOps::sysMkdir(dir, name, mode);
}

int FaultyFileOps::sysUnlink(int dir, const char *name, int flags)
{
    if (onChange)
        onChange();
    return PosixFileOps::sysUnlink(dir, name, flags);
}

int FaultyFileOps::sysKeep(int fromDir, const char *from, int toDir, const char *to, bool byLink)
{
    if (onChange)
        onChange();
    if (caseBlind && byLink)
        return fail(EPERM);
    return PosixFileOps::sysKeep(fromDir, from, toDir, to, byLink);
}

int FaultyFileOps::sysLookup(int dir, const char *name, struct stat *st)
{
    if (caseBlind) {
        const std::string twin = caseTwin(dir, name);
        if (!twin.empty())
            return PosixFileOps::sysLookup(dir, twin.c_str(), st);
    }
    return PosixFileOps::sysLookup(dir, name, st);
}

} // namespace duomir

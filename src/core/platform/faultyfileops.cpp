#include "core/platform/faultyfileops.h"

#include <cstring>

namespace duomir {

namespace {

int fail(int code)
{
    errno = code;
    return -1;
}

} // namespace

bool FaultyFileOps::hits(const char *path) const
{
    return onlyPathsWith.isEmpty() || std::strstr(path, onlyPathsWith.constData()) != nullptr;
}

bool FaultyFileOps::writeFails()
{
    ++writes;
    return failWriteAt > 0 && writes == failWriteAt;
}

int FaultyFileOps::sysOpenSource(const char *path)
{
    if (sourcesVanish && hits(path))
        return fail(ENOENT);
    return PosixFileOps::sysOpenSource(path);
}

ssize_t FaultyFileOps::sysCopyRange(int in, int out, size_t length)
{
    if (copyRangeErrno != 0)
        return fail(copyRangeErrno);
    if (writeFails())
        return fail(writeErrno);
    return PosixFileOps::sysCopyRange(in, out, length);
}

ssize_t FaultyFileOps::sysWrite(int fd, const void *data, size_t length)
{
    if (writeFails())
        return fail(writeErrno);
    return PosixFileOps::sysWrite(fd, data, length);
}

int FaultyFileOps::sysRename(const char *from, const char *to)
{
    if (renameErrno != 0 && hits(to))
        return fail(renameErrno);
    return PosixFileOps::sysRename(from, to);
}

int FaultyFileOps::sysMkdir(const char *path, mode_t mode)
{
    if (mkdirErrno != 0 && hits(path))
        return fail(mkdirErrno);
    return PosixFileOps::sysMkdir(path, mode);
}

int FaultyFileOps::sysUnlink(const char *path)
{
    if (unlinkErrno != 0 && hits(path))
        return fail(unlinkErrno);
    return PosixFileOps::sysUnlink(path);
}

int FaultyFileOps::sysRmdir(const char *path)
{
    if (rmdirErrno != 0 && hits(path))
        return fail(rmdirErrno);
    return PosixFileOps::sysRmdir(path);
}

int FaultyFileOps::sysChmod(const char *path, mode_t mode)
{
    if (chmodErrno != 0 && hits(path))
        return fail(chmodErrno);
    return PosixFileOps::sysChmod(path, mode);
}

} // namespace duomir

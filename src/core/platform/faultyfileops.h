#pragma once

#include <QByteArray>
#include <cerrno>

#include "core/platform/posixfileops.h"

namespace duomir {

// The real operations with chosen faults, for tests: a full disk on the Nth data write, a refused
// rename, failing mkdir/unlink/rmdir/chmod, a source that vanished before it was opened. A fault
// with a non-empty `onlyPathsWith` hits only paths that contain those bytes.
class FaultyFileOps : public PosixFileOps
{
public:
    using PosixFileOps::PosixFileOps;

    int failWriteAt = 0; // 1-based count of data writes over the object's life; 0 = never
    int writeErrno = ENOSPC;
    int copyRangeErrno = 0; // e.g. EXDEV: forces the read/write path
    int renameErrno = 0;    // 0 = no fault
    int mkdirErrno = 0;
    int unlinkErrno = 0;
    int rmdirErrno = 0;
    int chmodErrno = 0;
    bool sourcesVanish = false;
    QByteArray onlyPathsWith;

    std::atomic<int> writes = 0; // data writes so far

    // Counting writes is only meaningful in one order.
    std::int64_t parallelCopyLimit() const override
    {
        return failWriteAt > 0 ? 0 : PosixFileOps::parallelCopyLimit();
    }

protected:
    int sysOpenSource(const char *path) override;
    ssize_t sysCopyRange(int in, int out, size_t length) override;
    ssize_t sysWrite(int fd, const void *data, size_t length) override;
    int sysRename(const char *from, const char *to) override;
    int sysMkdir(const char *path, mode_t mode) override;
    int sysUnlink(const char *path) override;
    int sysRmdir(const char *path) override;
    int sysChmod(const char *path, mode_t mode) override;

private:
    bool hits(const char *path) const;
    bool writeFails();
};

} // namespace duomir

#pragma once

#include <QByteArray>
#include <cerrno>
#include <functional>
#include <string>

#include "core/platform/posixfileops.h"

namespace duomir {

// The real operations with chosen faults, for tests: a full disk on the Nth data write, a refused
// rename, a source that vanished before it was opened, a file system that matches names without
// case, and a hook that runs just before an operation reaches for its place (to swap a folder for
// a link at that moment). A fault with a non-empty `onlyPathsWith` hits only names that contain
// those bytes.
class FaultyFileOps : public PosixFileOps
{
public:
    using PosixFileOps::PosixFileOps;

    int failWriteAt = 0; // 1-based count of data writes over the object's life (ENOSPC); 0 = never
    int copyRangeErrno = 0; // e.g. EXDEV: forces the read/write path
    int renameErrno = 0;    // 0 = no fault
    // A hard link answers this (rclone mount: EIO), and there is no exclusive rename either.
    int linkErrno = 0;
    bool sourcesVanish = false;
    // Names that differ only in ASCII case are one name, as on FAT, exFAT and SMB; and the file
    // system has neither an exclusive rename nor hard links, as exFAT through FUSE.
    bool caseBlind = false;
    QByteArray onlyPathsWith;
    std::function<void(const TreePath &)> onResolve;
    // Called before every rename, link, keep and unlink: a test can look at the tree between them.
    std::function<void()> onChange;

    std::atomic<int> writes = 0; // data writes so far

    // Counting writes is only meaningful in one order.
    std::int64_t parallelCopyLimit() const override
    {
        return failWriteAt > 0 || onResolve ? 0 : PosixFileOps::parallelCopyLimit();
    }

protected:
    void beforeResolve(const TreePath &place) override;
    int sysOpenSource(int dir, const char *name) override;
    ssize_t sysCopyRange(int in, int out, size_t length) override;
    ssize_t sysWrite(int fd, const void *data, size_t length) override;
    int sysRename(int dir, const char *from, const char *to, unsigned flags) override;
    int sysLink(int dir, const char *from, const char *to) override;
    int sysMkdir(int dir, const char *name, mode_t mode) override;
    int sysUnlink(int dir, const char *name, int flags) override;
    int sysLookup(int dir, const char *name, struct stat *st) override;
    int sysKeep(int fromDir, const char *from, int toDir, const char *to, bool byLink) override;

private:
    bool hits(const char *name) const;
    bool writeFails();
    // The name under which a case-blind file system would find `name` in `dir`, if any.
    std::string caseTwin(int dir, const char *name) const;
};

} // namespace duomir

#pragma once

#include <sys/types.h>

#include "core/platform/fileops.h"

namespace duomir {

// The real file operations on a POSIX system.
class PosixFileOps : public FileOps
{
public:
    // `chunkSize`: bytes copied between two progress calls and cancel checks.
    explicit PosixFileOps(std::int64_t chunkSize = 8 << 20) : m_chunkSize(chunkSize) {}

    // One shared instance for the engine's default.
    static PosixFileOps &instance();

    bool directoryExists(const QString &path) override;
    OpResult makeDirectory(const QString &path, const QString &templateDir) override;
    OpResult clearReadOnly(const QString &path) override;
    OpResult removeFile(const QString &path) override;
    OpResult removeDirectory(const QString &path) override;
    OpResult copyFile(const QString &from, const QString &to, const CopyProgress &progress,
                      const std::atomic<bool> &cancel) override;
    // A file of one chunk reports its progress once: nothing is lost by copying it beside others.
    std::int64_t parallelCopyLimit() const override { return m_chunkSize; }

protected:
    // The system calls everything above is built from, with the system's convention (-1 and
    // errno). A fault-injecting subclass overrides them.
    virtual int sysOpenSource(const char *path);
    virtual ssize_t sysCopyRange(int in, int out, size_t length);
    virtual ssize_t sysWrite(int fd, const void *data, size_t length);
    virtual int sysRename(const char *from, const char *to);
    virtual int sysMkdir(const char *path, mode_t mode);
    virtual int sysUnlink(const char *path);
    virtual int sysRmdir(const char *path);
    virtual int sysChmod(const char *path, mode_t mode);

private:
    // Where the copy of one file's data stands.
    struct DataCopy
    {
        DataCopy(int source, int target, std::int64_t sourceSize, const CopyProgress &report,
                 const std::atomic<bool> &stop)
            : in(source), out(target), size(sourceSize), progress(report), cancel(stop)
        {}

        int in;
        int out;
        std::int64_t size; // as the source's fstat gave it
        const CopyProgress &progress;
        const std::atomic<bool> &cancel;
        std::int64_t pos = 0;        // next byte of the source, the same offset in the copy
        std::int64_t writtenEnd = 0; // end of the data written so far
        bool useRange = true;
        bool copiedAny = false;
        bool endOfFile = false;
    };
    OpResult copyData(DataCopy &copy, blkcnt_t blocks);
    OpResult copyRun(DataCopy &copy, std::int64_t end);
    OpResult copyLink(const QByteArray &from, const QByteArray &to);

    std::int64_t m_chunkSize;
};

} // namespace duomir

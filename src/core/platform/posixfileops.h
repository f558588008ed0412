#pragma once

#include <QHash>
#include <map>
#include <memory>
#include <mutex>
#include <sys/types.h>

#include "core/platform/anchor.h"
#include "core/platform/fileops.h"
#include "core/platform/trash.h"

struct stat;

namespace duomir {

// The real file operations on a POSIX system. Every operation opens the pair's root and reaches
// the directory it acts in one component at a time without following a link (anchor.h); the
// change itself is an *at call on the last name. So a link anywhere below a root, made before the
// run or swapped in during it, never leads an operation outside the pair, and paths longer than
// the kernel's limit work as any other.
class PosixFileOps : public FileOps
{
public:
    // `chunkSize`: bytes copied between two progress calls and cancel checks.
    explicit PosixFileOps(std::int64_t chunkSize = 8 << 20) : m_chunkSize(chunkSize) {}

    // One shared instance for the engine's default.
    static PosixFileOps &instance();

    OpResult checkDirectory(const TreePath &dir) override;
    OpResult makeDirectory(const TreePath &dir, const TreePath &templateDir) override;
    OpResult clearReadOnly(const TreePath &file) override;
    OpResult removeFile(const TreePath &file, const Seen &seen) override;
    OpResult removeDirectory(const TreePath &dir) override;
    OpResult copyFile(const TreePath &from, const Seen &fromSeen, const TreePath &to,
                      const std::optional<Seen> &toSeen, const CopyProgress &progress,
                      const std::atomic<bool> &cancel) override;
    OpResult removeLeftover(const TreePath &file) override;
    OpResult listFolders(const TreePath &dir, QStringList &names) override;
    OpResult removeTree(const TreePath &dir) override;
    void walkEnded() override;
    // A file of one chunk reports its progress once: nothing is lost by copying it beside others.
    std::int64_t parallelCopyLimit() const override { return m_chunkSize; }

protected:
    // Called before every operation reaches for `place`: a test can change the tree right there.
    virtual void beforeResolve(const TreePath & /*place*/) {}
    // The system calls everything above is built from, with the system's convention (-1 and
    // errno). A fault-injecting subclass overrides them.
    virtual int sysOpenSource(int dir, const char *name);
    virtual ssize_t sysCopyRange(int in, int out, size_t length);
    virtual ssize_t sysWrite(int fd, const void *data, size_t length);
    // `flags`: 0 or RENAME_NOREPLACE.
    virtual int sysRename(int dir, const char *from, const char *to, unsigned flags);
    virtual int sysLink(int dir, const char *from, const char *to);
    virtual int sysMkdir(int dir, const char *name, mode_t mode);
    // `flags`: 0 or AT_REMOVEDIR.
    virtual int sysUnlink(int dir, const char *name, int flags);
    virtual int sysChmod(int dir, const char *name, mode_t mode);
    // fstatat without following a link.
    virtual int sysLookup(int dir, const char *name, struct stat *st);
    // Gives the file `from` in `fromDir` the name `to` in `toDir`, replacing nothing there: moved
    // (rename), or with `byLink` a second name (hard link).
    virtual int sysKeep(int fromDir, const char *from, int toDir, const char *to, bool byLink);

private:
    // The directory holding the last name of a place, and that name.
    struct Located
    {
        std::shared_ptr<const Fd> dir;
        QByteArray name;
        int fd() const { return dir->get(); }
    };
    OpResult locate(const TreePath &place, Located &out);
    // locate, then what stands there (not following a link).
    OpResult lookAt(const TreePath &place, Located &at, struct stat &st);
    OpResult rootFolder(const TreePath &place, std::shared_ptr<const Fd> &out);
    OpResult folder(const TreePath &place, const QByteArray &relative,
                    std::shared_ptr<const Fd> &out);

    // Where the copy of one file's data stands.
    struct DataCopy
    {
        DataCopy(int source, int target, std::int64_t sourceSize, const CopyProgress &report,
                 const std::atomic<bool> &stop)
            : in(source), out(target), size(sourceSize), progress(report), cancel(stop)
        {}

        int in;
        int out;
        std::int64_t size; // as the source's fstat gave it when it was opened: no more is read
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
    OpResult copyLink(Located &source, const struct stat &st, const TreePath &to,
                      const std::optional<Seen> &toSeen);
    // Puts the finished temporary file under `name` (at `to`), replacing only what `seen`
    // describes; a replaced file is kept as keeping() says.
    OpResult place(int dir, const char *temporary, const QByteArray &name, const TreePath &to,
                   const std::optional<Seen> &seen);
    // Moves (or with `byLink` hard-links) the file `name` in `dir`, found as `st` at `place`, to
    // where keeping() says.
    OpResult keep(int dir, const QByteArray &name, const struct stat &st, const TreePath &place,
                  bool byLink);
    OpResult keepInTrash(int dir, const QByteArray &name, const struct stat &st, bool byLink);
    OpResult keepInFolder(int dir, const QByteArray &name, const struct stat &st,
                          const TreePath &place, bool byLink);
    // The folder of this run in the versions folder that receives files from the folder of
    // `place`, made where missing.
    OpResult versionsFolder(const TreePath &place, std::shared_ptr<const Fd> &out);

    std::int64_t m_chunkSize;
    std::mutex m_cacheMutex;
    QHash<QByteArray, std::shared_ptr<const Fd>> m_cache;       // root NUL relative: an open folder
    QHash<QByteArray, std::shared_ptr<const Fd>> m_roots;       // root: opened once a walk
    std::map<dev_t, std::shared_ptr<const TrashCan>> m_trashes; // by volume: opened once a walk
};

} // namespace duomir

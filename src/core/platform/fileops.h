#pragma once

#include <QString>
#include <QStringList>
#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

namespace duomir {

// The outcome of one file-system call: 0 for success, otherwise the system's error number (errno)
// or one of Duomir's own codes below. Failures are values; nothing here throws.
struct OpResult
{
    int error = 0;

    bool ok() const { return error == 0; }
    static OpResult success() { return {}; }
    static OpResult failure(int code) { return {code}; }
};

// Duomir's own error codes, far above every errno value.
namespace OpError {
// Sockets, FIFOs and device nodes are never opened for reading.
inline constexpr int NotRegularFile = 0x10001;
// An empty or relative root, or a path outside its root: nobody's data to change.
inline constexpr int PlaceUnknown = 0x10002;
// A folder on the way below the root is now a symbolic link or no folder at all: links are never
// followed, so nothing below it is touched.
inline constexpr int FolderChanged = 0x10003;
// The name the comparison saw free is taken now (a twin on a case-blind file system, or a file
// made since): nothing is replaced.
inline constexpr int NotSeen = 0x10004;
// The file no longer has the size and time the comparison saw: neither side is changed.
inline constexpr int ChangedSinceCompare = 0x10005;
// A file to be deleted or replaced could not be put into a trash of its volume (none there, or
// none this user may use): it stays where it is.
inline constexpr int NoTrash = 0x10006;
} // namespace OpError

// The text shown and logged for an error code: the system's own text for errno values.
QString errorText(int code);

// Called after every copied chunk with the file's size and the bytes written so far (bytes).
using CopyProgress = std::function<void(std::int64_t total, std::int64_t done)>;

// A place inside one of a pair's two trees. The root is the directory the comparison listed (a
// root given as a symbolic link is the directory it names, as for the scanner); everything below
// it is reached one component at a time, never through a link and never outside the root.
// Which directory a root is (device and inode as stat gives them); 0 when not known.
struct RootIdentity
{
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};

struct TreePath
{
    TreePath() = default;
    TreePath(QString rootPath, QString relativePath, RootIdentity id = {})
        : root(std::move(rootPath)), relative(std::move(relativePath)), rootId(id)
    {}

    QString root;     // absolute, without a trailing separator except "/" itself
    QString relative; // "/"-separated; empty for the root itself
    // The directory the comparison listed as the root: a root path that names another one now (a
    // folder swapped for a link, another drive mounted there) is not acted in.
    RootIdentity rootId;
    QString full() const
    {
        if (relative.isEmpty())
            return root;
        if (root.endsWith(u'/'))
            return root + relative;
        return root + u'/' + relative;
    }
};

// Every path the walks act on lies below a pair's root. An empty or relative root (a pair without
// a directory, a row built by hand) would be resolved against the working directory, which is
// nobody's data to change: such a call is refused (PlaceUnknown) before it reaches the system.
inline bool placeKnown(const TreePath &place)
{
    return place.root.startsWith(u'/');
}

// What the comparison saw of a file: its size in bytes and its modification time (seconds since
// the epoch and nanoseconds). A file is replaced, deleted or copied only while it still looks like
// this.
struct Seen
{
    std::int64_t size = 0;
    std::int64_t mtime = 0;
    std::uint32_t mtimeNs = 0;
};

// Where a file that is deleted or replaced goes instead of being gone for good.
struct Keeping
{
    enum class Mode { ForGood, Trash, Folder };
    Mode mode = Mode::ForGood;
    // Folder: relative to the root of the side that loses the file ("/"-separated, no "." or
    // ".."), or absolute.
    QString folder;
    // Folder: this run's own folder inside it, named by the run's start ("2026-11-24 140000").
    QString runFolder;
    // Trash: the home trash ($XDG_DATA_HOME/Trash), for files on its volume.
    QString homeTrash;
};

// Every file-system change the synchronization makes goes through this interface, so that tests
// can inject faults and a dry run can record instead of act.
class FileOps
{
public:
    virtual ~FileOps() = default;

    // Where the files that removeFile deletes and copyFile replaces go from now on.
    // (A layer that forwards to another one forwards this too.)
    virtual void setKeeping(Keeping keeping) { m_keeping = std::move(keeping); }
    const Keeping &keeping() const { return m_keeping; }

    // Whether `dir` is a directory reached without a link; the result says why not.
    virtual OpResult checkDirectory(const TreePath &dir) = 0;

    // Creates one directory level with the permission bits of `templateDir` (the owner keeps
    // write and search permission, so that the copy can fill it). A name that is taken already
    // (the comparison saw it free) fails with NotSeen.
    virtual OpResult makeDirectory(const TreePath &dir, const TreePath &templateDir) = 0;

    // Adds owner write permission and keeps every other permission bit.
    virtual OpResult clearReadOnly(const TreePath &file) = 0;

    // Removes the file while it is still as `seen`: moves it where keeping() says.
    virtual OpResult removeFile(const TreePath &file, const Seen &seen) = 0;
    virtual OpResult removeDirectory(const TreePath &dir) = 0; // only an empty one

    // Copies a regular file or a symbolic link to `to`, carrying the modification time, the
    // permission bits and (where the process may) the owner. The source must still be as
    // `fromSeen`; an existing target is replaced only while it is as `toSeen`, and with no
    // `toSeen` the name must still be free; a replaced file goes where keeping() says, by a hard
    // link made before the new content takes its name. The data goes into a temporary file beside
    // `to` that is renamed into place at the end; a failed or cancelled copy (`cancel` read between
    // chunks, result ECANCELED) removes it and leaves an existing `to` untouched.
    virtual OpResult copyFile(const TreePath &from, const Seen &fromSeen, const TreePath &to,
                              const std::optional<Seen> &toSeen, const CopyProgress &progress,
                              const std::atomic<bool> &cancel) = 0;

    // Removes a temporary file that a copy which died left behind, and nothing else: a file still
    // being written by a running copy (EBUSY), or anything a copy does not make (EEXIST), is kept.
    // Success means the file is gone.
    virtual OpResult removeLeftover(const TreePath &file) = 0;

    // The names of the folders in `dir` (none when it is missing); links are not followed.
    virtual OpResult listFolders(const TreePath &dir, QStringList &names) = 0;
    // Removes `dir` with everything below it, for good; links inside are removed, not followed.
    virtual OpResult removeTree(const TreePath &dir) = 0;

    // A walk is over: whatever the operations keep open for it (folders) is let go.
    virtual void walkEnded() {}

    // Files up to this many bytes may be copied on several threads at once (copyFile is then
    // called concurrently); 0 keeps every copy on the caller's thread, one after the other.
    virtual std::int64_t parallelCopyLimit() const { return 0; }

private:
    Keeping m_keeping;
};

} // namespace duomir

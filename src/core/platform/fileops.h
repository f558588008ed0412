#pragma once

#include <QString>
#include <atomic>
#include <cstdint>
#include <functional>

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
// An empty or relative path: the walks act only on absolute paths.
inline constexpr int PlaceUnknown = 0x10002;
} // namespace OpError

// The text shown and logged for an error code: the system's own text for errno values.
QString errorText(int code);

// Called after every copied chunk with the file's size and the bytes written so far (bytes).
using CopyProgress = std::function<void(std::int64_t total, std::int64_t done)>;

// Every path the walks act on is derived from a pair's root. An empty or relative one (a pair
// without a root, a row built by hand) would be resolved against the working directory, which is
// nobody's data to change: such a call is refused (PlaceUnknown) before it reaches the system.
inline bool placeKnown(const QString &path)
{
    return path.startsWith(u'/');
}

// Every file-system change the synchronization makes goes through this interface, so that tests
// can inject faults and a dry run can record instead of act. Paths are full paths without a
// trailing separator; the real implementation refuses an empty or relative one (PlaceUnknown).
class FileOps
{
public:
    virtual ~FileOps() = default;

    virtual bool directoryExists(const QString &path) = 0;

    // Creates one directory level with the permission bits of `templateDir` (the owner keeps
    // write and search permission, so that the copy can fill it).
    virtual OpResult makeDirectory(const QString &path, const QString &templateDir) = 0;

    // Adds owner write permission and keeps every other permission bit.
    virtual OpResult clearReadOnly(const QString &path) = 0;

    virtual OpResult removeFile(const QString &path) = 0;
    virtual OpResult removeDirectory(const QString &path) = 0; // only an empty one

    // Copies a regular file or a symbolic link over `to`, carrying the modification time and the
    // permission bits. The data goes into a hidden temporary file beside `to` that is renamed over
    // it at the end; a failed or cancelled copy (`cancel` read between chunks, result ECANCELED)
    // removes the temporary file and leaves an existing `to` untouched.
    virtual OpResult copyFile(const QString &from, const QString &to, const CopyProgress &progress,
                              const std::atomic<bool> &cancel) = 0;

    // Files up to this many bytes may be copied on several threads at once (copyFile is then
    // called concurrently); 0 keeps every copy on the caller's thread, one after the other.
    virtual std::int64_t parallelCopyLimit() const { return 0; }
};

} // namespace duomir

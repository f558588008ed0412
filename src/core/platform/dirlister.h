#pragma once

#include <QByteArray>
#include <QString>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "core/platform/anchor.h"

struct stat;

namespace duomir {

// One item of a directory listing, already mapped to the engine's attribute bits.
struct ListedItem
{
    std::uint32_t nameBegin = 0; // the raw name, in the listing's `names`
    std::uint32_t nameLength = 0;
    std::uint32_t attributes = 0;
    std::uint32_t mtimeNs = 0;
    std::int64_t mtime = 0; // seconds since the epoch, UTC
    std::int64_t size = 0;  // bytes; for a symbolic link the length of its target text
};

// A whole listing: its items and their raw names, each followed by a NUL, in one buffer, so a
// listing costs no allocation per item and can be made on one thread and read on another.
struct Listing
{
    std::vector<ListedItem> items;
    std::vector<char> names;

    const char *name(const ListedItem &item) const { return names.data() + item.nameBegin; }
    void clear()
    {
        items.clear();
        names.clear();
    }
};

// The attribute bits for a file-system object as lstat() describes it: directory only for a
// real directory, hidden for a dot name, system for sockets, FIFOs and devices, 0x400 for a
// symbolic link, read-only when the owner may not write.
std::uint32_t attributesFromStat(const struct stat &st, bool dotName);

// The attributes of `nativePath` itself, following a link (a root given as a link to a directory
// is that directory); Attr::Invalid when it does not exist or cannot be examined.
std::uint32_t pathAttributes(const QByteArray &nativePath);

// Opens the directory `name` inside the open directory `parent` for listing, never through a
// symbolic link: a folder swapped for a link is not listed. -1 and errno on failure.
int openDirectoryAt(int parent, const char *name);

// Lists the open directory `fd` (left open) without "." and "..": every name as the directory
// gives it, examined with fstatat(AT_SYMLINK_NOFOLLOW), so no link is ever followed. An item that
// vanishes between the listing and the examination is left out. The temporary files of copies
// (temporaryname.h) are never items; their names go to `temporaries` when it is given. Returns
// false when the directory cannot be read; `listing` is then empty.
bool listDirectory(int fd, Listing &listing, std::vector<QByteArray> *temporaries = nullptr);

// How many folders are worth listing at once below the open directory `fd`: on a network file
// system (FUSE, NFS, SMB, 9P, Ceph) every call waits for a round trip, and calls in flight hide
// the waits; on a local disk listing is kernel work that more threads only share out (0).
int listingThreadsFor(int fd);

// Lists folders on worker threads ahead of a walk that wants them one by one, in its own order.
// A walk hands in each folder it will enter (the open parent and the name) and later takes the
// outcome, waiting only if it is not there yet. The newest requests go first: a depth-first walk
// wants the folders it asked for last soonest.
class ListingAhead
{
public:
    struct Outcome
    {
        Fd fd; // the folder, opened without following a link
        bool listed = false;
        Listing listing;
        std::vector<QByteArray> temporaries;
    };
    class Request;

    explicit ListingAhead(int threads);
    ~ListingAhead();
    ListingAhead(const ListingAhead &) = delete;
    ListingAhead &operator=(const ListingAhead &) = delete;

    // `parent` must stay open and `name` unchanged until the request is taken.
    std::shared_ptr<Request> ask(int parent, const char *name);
    Outcome take(Request &request);

private:
    void work();

    std::mutex m_mutex;
    std::condition_variable m_asked;
    std::condition_variable m_done;
    std::vector<std::shared_ptr<Request>> m_stack;
    std::vector<std::thread> m_threads;
    bool m_stopping = false;
};

} // namespace duomir

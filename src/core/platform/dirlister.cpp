#include "core/platform/dirlister.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <system_error>
#include <unistd.h>

#include "core/fileentry.h"
#include "core/platform/temporaryname.h"

namespace duomir {

std::uint32_t attributesFromStat(const struct stat &st, bool dotName)
{
    std::uint32_t attributes = 0;
    if (S_ISDIR(st.st_mode))
        attributes |= Attr::Directory;
    else if (S_ISLNK(st.st_mode))
        attributes |= Attr::Reparse;
    else if (!S_ISREG(st.st_mode))
        attributes |= Attr::System;
    if (dotName)
        attributes |= Attr::Hidden;
    if (!S_ISLNK(st.st_mode) && (st.st_mode & S_IWUSR) == 0)
        attributes |= Attr::ReadOnly;
    return attributes;
}

std::uint32_t pathAttributes(const QByteArray &nativePath)
{
    struct stat st;
    if (nativePath.isEmpty() || ::stat(nativePath.constData(), &st) != 0)
        return Attr::Invalid;
    const qsizetype slash = nativePath.lastIndexOf('/', nativePath.size() - 2);
    const bool dot = nativePath.size() > slash + 1 && nativePath.at(slash + 1) == '.';
    return attributesFromStat(st, dot);
}

int openDirectoryAt(int parent, const char *name)
{
    return ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

bool listDirectory(int fd, Listing &listing, std::vector<QByteArray> *temporaries)
{
    listing.clear();
    // The listing reads through a descriptor of its own: `fd` stays open for the subfolders.
    const int own = ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (own < 0)
        return false;
    DIR *dir = ::fdopendir(own);
    if (!dir) {
        ::close(own);
        return false;
    }
    // A listing that is not whole must not count as one: an item missing from it looks deleted,
    // and a mirroring run would delete its copy on the other side. Only an item that went away
    // since the listing is left out; a directory that can be read but not entered (every fstatat
    // refused) or a read that breaks off fails the whole listing.
    const auto fail = [&] {
        ::closedir(dir); // closes `own` too
        listing.clear();
        return false;
    };
    for (;;) {
        errno = 0;
        const dirent *d = ::readdir(dir);
        if (!d) {
            if (errno != 0)
                return fail();
            break;
        }
        const char *name = d->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        const std::size_t length = std::strlen(name);
        if (isTemporaryName(name, length)) {
            if (temporaries)
                temporaries->emplace_back(name, qsizetype(length));
            continue;
        }
        struct stat st;
        if (::fstatat(own, name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno == ENOENT)
                continue; // gone since the listing
            return fail();
        }
        ListedItem &item = listing.items.emplace_back();
        item.nameBegin = static_cast<std::uint32_t>(listing.names.size());
        item.nameLength = static_cast<std::uint32_t>(length);
        listing.names.insert(listing.names.end(), name, name + length + 1);
        item.attributes = attributesFromStat(st, name[0] == '.');
        item.mtime = st.st_mtim.tv_sec;
        item.mtimeNs = std::uint32_t(st.st_mtim.tv_nsec);
        item.size = st.st_size;
    }
    ::closedir(dir); // closes `own` too
    return true;
}

int listingThreadsFor(int fd)
{
    constexpr long Fuse = 0x65735546;
    constexpr long Nfs = 0x6969;
    constexpr long Smb = 0x517B;
    constexpr long Cifs = 0xFF534D42;
    constexpr long Smb2 = 0xFE534D42;
    constexpr long NineP = 0x01021997;
    constexpr long Ceph = 0x00C36400;
    struct statfs fs;
    if (::fstatfs(fd, &fs) != 0)
        return 0;
    switch (long(fs.f_type)) {
    case Fuse:
        // One daemon answers every call: past a few at once they only queue there. Measured on
        // the loopback: sshfs gains up to about twelve, rclone mount loses past four.
        return 6;
    case Nfs:
    case Smb:
    case Cifs:
    case Smb2:
    case NineP:
    case Ceph:
        // The kernel's own clients keep many calls in flight.
        return 16;
    default:
        return 0;
    }
}

class ListingAhead::Request
{
public:
    Request(int parent, const char *name) : m_parent(parent), m_name(name) {}

    int m_parent;
    const char *m_name;
    bool m_done = false;
    Outcome m_outcome;
};

ListingAhead::ListingAhead(int threads)
{
    try {
        for (int i = 0; i < threads; ++i)
            m_threads.emplace_back(&ListingAhead::work, this);
    } catch (const std::system_error &) {
        // Fewer threads, or none: take() lists what no thread has.
    }
}

ListingAhead::~ListingAhead()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_asked.notify_all();
    for (std::thread &t : m_threads)
        t.join();
}

std::shared_ptr<ListingAhead::Request> ListingAhead::ask(int parent, const char *name)
{
    auto request = std::make_shared<Request>(parent, name);
    if (m_threads.empty())
        return request;
    {
        const std::lock_guard lock(m_mutex);
        m_stack.push_back(request);
    }
    m_asked.notify_one();
    return request;
}

namespace {
void list(int parent, const char *name, ListingAhead::Outcome &outcome)
{
    outcome.fd = Fd(openDirectoryAt(parent, name));
    outcome.listed = outcome.fd.valid() &&
                     listDirectory(outcome.fd.get(), outcome.listing, &outcome.temporaries);
}
} // namespace

ListingAhead::Outcome ListingAhead::take(Request &request)
{
    std::unique_lock lock(m_mutex);
    const auto queued = std::find_if(m_stack.begin(), m_stack.end(),
                                     [&](const auto &r) { return r.get() == &request; });
    // No thread has it yet (or there are none): listed here rather than waited for.
    if (queued != m_stack.end() || m_threads.empty()) {
        if (queued != m_stack.end())
            m_stack.erase(queued);
        lock.unlock();
        list(request.m_parent, request.m_name, request.m_outcome);
        return std::move(request.m_outcome);
    }
    m_done.wait(lock, [&] { return request.m_done; });
    return std::move(request.m_outcome);
}

void ListingAhead::work()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_asked.wait(lock, [this] { return m_stopping || !m_stack.empty(); });
        if (m_stopping)
            return;
        const std::shared_ptr<Request> request = std::move(m_stack.back());
        m_stack.pop_back();
        lock.unlock();
        Outcome outcome;
        list(request->m_parent, request->m_name, outcome);
        lock.lock();
        request->m_outcome = std::move(outcome);
        request->m_done = true;
        m_done.notify_all();
    }
}

} // namespace duomir

#include "core/platform/dirlister.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
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

} // namespace duomir

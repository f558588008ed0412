#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <vector>

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

} // namespace duomir

#pragma once

#include <QAnyStringView>
#include <QString>
#include <QStringView>
#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include <QLatin1StringView>
#include <QUtf8StringView>

#include "base/date.h"
#include "core/platform/freememory.h"
#include "core/side.h"
#include "core/textstore.h"

namespace duomir {

// Attribute bits as the engine tests them (the platform layer maps the file system's facts to
// them).
namespace Attr {
inline constexpr std::uint32_t ReadOnly = 0x01;  // the owner has no write permission
inline constexpr std::uint32_t Hidden = 0x02;    // the name begins with "."
inline constexpr std::uint32_t System = 0x04;    // socket, FIFO, device node
inline constexpr std::uint32_t Directory = 0x10; // a real directory, not a link to one
inline constexpr std::uint32_t Reparse = 0x400;  // a symbolic link, kept as an entry of its own
inline constexpr std::uint32_t Unlisted =
    0x40000000;                                      // a directory whose contents could not be read
inline constexpr std::uint32_t Invalid = 0xFFFFFFFF; // the root does not exist
} // namespace Attr

enum CompareState : std::int16_t {
    Identical = 0,
    ModifiedInSource = -1,
    ModifiedInDestination = 1,
};

// The empty path of an entry that has none.
inline const QString NoPath;

// A name as a TextStore keeps it: its units and whether they are two bytes each (UTF-16) or one
// (Latin-1), the flag in the top bit of the length.
template <class Length> struct StoredName
{
    static constexpr Length Wide = Length(1) << (sizeof(Length) * 8 - 1);

    static QAnyStringView view(const void *units, Length length)
    {
        const auto size = static_cast<qsizetype>(length & ~Wide);
        if (length & Wide)
            return QStringView(static_cast<const char16_t *>(units), size);
        return QLatin1StringView(static_cast<const char *>(units), size);
    }
    // A name made by TextStore::add (Latin-1 or UTF-16).
    static void keep(QAnyStringView name, const void *&units, Length &length)
    {
        name.visit([&](auto text) {
            if constexpr (std::is_same_v<decltype(text), QStringView>) {
                units = text.utf16();
                length = static_cast<Length>(text.size()) | Wide;
            } else {
                static_assert(std::is_same_v<decltype(text), QLatin1StringView> ||
                              std::is_same_v<decltype(text), QUtf8StringView>);
                // A TextStore makes no UTF-8 views; ASCII reads the same either way.
                units = text.data();
                length = static_cast<Length>(text.size());
            }
        });
    }
};

// One scanned file or directory. Names are carried losslessly: bytes that are not valid UTF-8 are
// kept as escape code units (see platform/nativename.h), so a copy reaches the other side
// unchanged. The texts live in the TextStore of the scan; the entry only points there, so a
// million entries carry no string object each.
class FileEntry
{
public:
    // A file: its directory with a trailing separator, one string shared by every file of that
    // directory; a directory: itself, no separator; element 0: the root without its separator.
    const QString &path() const { return m_path ? *m_path : NoPath; }
    // Empty for the root.
    QAnyStringView name() const { return StoredName<std::uint32_t>::view(m_name, m_nameLength); }
    NameUnits nameUnits() const
    {
        constexpr auto wide = StoredName<std::uint32_t>::Wide;
        return {m_name, qsizetype(m_nameLength & ~wide), (m_nameLength & wide) != 0};
    }
    // `path` and `name` must outlive the entry (a TextStore that its owner holds).
    void setPath(const QString *path) { m_path = path; }
    void setName(QAnyStringView name)
    {
        StoredName<std::uint32_t>::keep(name, m_name, m_nameLength);
    }

    Date Modified = 0;
    std::int64_t FullSize = 0; // the real size, for copying and progress
    std::uint32_t Attributes = 0;
    // The nanoseconds of the modification time: not compared, but a file is replaced or deleted
    // only while its time is still exactly the one seen, also within the second.
    std::uint32_t ModifiedNs = 0;
    // The sort key is not stored: core/sortkeys.h reads it from the path and the name.

    // The low 32 bits of the size: what the comparison looks at.
    std::int32_t size() const
    {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(FullSize));
    }
    bool isDirectory() const { return (Attributes & Attr::Directory) != 0; }

private:
    const QString *m_path = nullptr;
    const void *m_name = nullptr;
    std::uint32_t m_nameLength = 0;
};

// One row of the comparison result; side 0 is the source, 1 the destination. Its texts live in
// TextStores that the comparison holds as long as its rows.
class CompareEntry
{
public:
    // The directory of the entry on `side` with its trailing separator for a file, the
    // directory itself for a directory row; on a side that lacks the entry, where it would be.
    const QString &path(Side side) const
    {
        const QString *p = m_path[static_cast<std::size_t>(side)];
        return p ? *p : NoPath;
    }
    // Empty on a side that lacks the entry (and on both sides of a pair's root row).
    QAnyStringView nameView(Side side) const
    {
        const auto s = static_cast<std::size_t>(side);
        return StoredName<std::uint16_t>::view(m_name[s], m_nameLength[s]);
    }
    QString name(Side side) const { return nameView(side).toString(); }
    bool lacks(Side side) const
    {
        return (m_nameLength[static_cast<std::size_t>(side)] & ~StoredName<std::uint16_t>::Wide) ==
               0;
    }
    // Both must outlive the row; a name holds at most 32,767 units (a Linux name 255 bytes).
    void setPath(Side side, const QString *path) { m_path[static_cast<std::size_t>(side)] = path; }
    void setName(Side side, QAnyStringView name)
    {
        const auto s = static_cast<std::size_t>(side);
        StoredName<std::uint16_t>::keep(name, m_name[s], m_nameLength[s]);
    }

    std::array<Date, 2> Modified{};
    std::array<std::int64_t, 2> FullSize{};
    std::array<std::uint32_t, 2> Attributes{};
    std::array<std::uint32_t, 2> ModifiedNs{};
    std::int16_t State = Identical;
    bool Marked = false;

    // The low 32 bits of the size: what the comparison looks at.
    std::int32_t size(Side side) const
    {
        return static_cast<std::int32_t>(
            static_cast<std::uint32_t>(FullSize[static_cast<std::size_t>(side)]));
    }
    bool isDirectory() const { return (Attributes[Side::Source] & Attr::Directory) != 0; }

private:
    std::array<const QString *, 2> m_path{};
    std::array<const void *, 2> m_name{};
    std::array<std::uint16_t, 2> m_nameLength{};
};

// Element 0 of every array has a fixed role (the scanned root; no row); real entries start at 1.
using FileArray = std::vector<FileEntry, LargeAllocator<FileEntry>>;
using CompareArray = std::vector<CompareEntry>;
// Indices into a CompareArray; element 0 has no meaning.
using RowIndexArray = std::vector<std::int32_t>;

} // namespace duomir

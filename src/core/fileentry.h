#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <vector>

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

// A date: days since 1899-12-30 00:00, the time of day as the fraction, local time to the second.
using Date = double;

enum CompareState : std::int16_t {
    Identical = 0,
    ModifiedInSource = -1,
    ModifiedInDestination = 1,
};

// One scanned file or directory. Names are carried losslessly: bytes that are not valid UTF-8 are
// kept as escape code units (see platform/nativename.h), so a copy reaches the other side
// unchanged.
struct FileEntry
{
    // A file: its directory with a trailing separator, one string shared by every file of that
    // directory; a directory: itself, no separator; element 0: the root without its separator.
    QString Path;
    QString Name; // empty for element 0 (the root)
    Date Modified = 0;
    std::int64_t FullSize = 0; // the real size, for copying and progress
    std::uint32_t Attributes = 0;
    std::int32_t Size = 0; // low 32 bits of the size: what the comparison looks at
    // The nanoseconds of the modification time: not compared, but a file is replaced or deleted
    // only while its time is still exactly the one seen, also within the second.
    std::uint32_t ModifiedNs = 0;
    // The sort key is not stored: core/sortkeys.h reads it from Path and Name when it compares.

    bool isDirectory() const { return (Attributes & Attr::Directory) != 0; }
};

// One row of the comparison result; index 0 is the source side, 1 the destination side.
struct CompareEntry
{
    std::int16_t State = Identical;
    bool Marked = false;
    std::array<QString, 2> Path;
    std::array<QString, 2> Name; // empty on a side that lacks the entry
    std::array<std::uint32_t, 2> Attributes{};
    std::array<Date, 2> Modified{};
    std::array<std::int32_t, 2> Size{};
    std::array<std::int64_t, 2> FullSize{};
    std::array<std::uint32_t, 2> ModifiedNs{};

    bool isDirectory() const { return (Attributes[0] & Attr::Directory) != 0; }
};

// Element 0 of every array has a fixed role (the scanned root; no row); real entries start at 1.
using FileArray = std::vector<FileEntry>;
using CompareArray = std::vector<CompareEntry>;
// Indices into a CompareArray; element 0 has no meaning.
using RowIndexArray = std::vector<std::int32_t>;

} // namespace duomir

#pragma once

#include <QtGlobal>
#include <cstdint>
#include <vector>

#include "core/fileentry.h"

namespace duomir {

// The sort keys (sortkeys.h) of a run of entries, built once for the length of one sort. A key is
// kept as a head, the part that comes from Path (stored once for all files of one directory), and
// a tail, U+0002 and the upper-cased name (empty for a directory). Units are stored big-endian,
// one byte each when every unit of the run fits in one, so that memcmp orders them as 16-bit
// code units.
class KeyTable
{
public:
    // The keys of entries[first .. first + count - 1]; `offset` as SortKeys::offset().
    KeyTable(const FileArray &entries, std::size_t first, std::size_t count, qsizetype offset);

    // False when the keys do not fit 32-bit offsets (billions of units): sort without the table.
    bool usable() const { return m_usable; }

    // -1, 0 or 1 as key a sorts before, with or after key b (a and b count from `first`).
    int compare(std::uint32_t a, std::uint32_t b) const;

private:
    struct Span
    {
        std::uint32_t begin = 0; // bytes in m_bytes
        std::uint32_t length = 0;
    };
    struct Key
    {
        std::uint32_t head = 0; // index into m_heads
        Span tail;
    };

    std::vector<unsigned char> m_bytes;
    std::vector<Span> m_heads;
    std::vector<Key> m_keys;
    bool m_usable = false;
};

} // namespace duomir

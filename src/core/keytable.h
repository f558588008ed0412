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

    // The place of key k's head among the distinct heads in key order. Keys whose heads have
    // different ranks and are not one the start of the other are ordered by rank alone.
    std::uint32_t rank(std::uint32_t k) const { return m_headRank[m_keys[k].head]; }

    // -1, 0 or 1 as key a sorts before, with or after key b (a and b count from `first`); ra and
    // rb are their ranks, which settle most comparisons without reading the keys.
    int compare(std::uint32_t a, std::uint32_t ra, std::uint32_t b, std::uint32_t rb) const
    {
        if (ra < rb && rb > m_rankPrefixEnd[ra])
            return -1;
        if (rb < ra && ra > m_rankPrefixEnd[rb])
            return 1;
        return compareKeys(a, b);
    }
    int compare(std::uint32_t a, std::uint32_t b) const { return compare(a, rank(a), b, rank(b)); }

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

    int compareKeys(std::uint32_t a, std::uint32_t b) const;
    int compareSpans(Span a, Span b) const;
    void rankHeads();

    std::vector<unsigned char> m_bytes;
    std::vector<Span> m_heads;
    std::vector<std::uint32_t> m_headRank; // per head
    // Per rank: the last rank whose head starts with this rank's head (the heads that do follow
    // it directly in key order).
    std::vector<std::uint32_t> m_rankPrefixEnd;
    std::vector<Key> m_keys;
    bool m_usable = false;
};

} // namespace duomir

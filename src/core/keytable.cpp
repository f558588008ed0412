#include "core/keytable.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <unordered_map>

#include "core/sortkeys.h"

namespace duomir {

namespace {

// The head's units: Path from `offset` on, separators as U+0001, upper-cased; a directory adds
// U+0001.
template <class Put> void forHead(const FileEntry &e, qsizetype offset, Put put)
{
    const char16_t *p = units(e.path());
    const qsizetype n = e.path().size();
    for (qsizetype i = std::min(offset, n); i < n; ++i)
        put(keyPathUnit(p[i]));
    if (e.isDirectory())
        put(KeyDirectoryMark);
}

// The tail's units: nothing for a directory; U+0002 and the upper-cased name for a file.
template <class Put> void forTail(const FileEntry &e, Put put)
{
    if (e.isDirectory())
        return;
    put(KeyFileMark);
    const NameUnits name = e.nameUnits();
    for (qsizetype i = 0; i < name.size; ++i)
        put(keyNameUnit(name[i]));
}

// memcmp for the short runs keys are made of: eight bytes at a time, read big-endian so that the
// first differing byte decides, as memcmp's does.
int compareBytes(const unsigned char *a, const unsigned char *b, std::uint32_t n)
{
    while (n >= 8) {
        std::uint64_t x;
        std::uint64_t y;
        std::memcpy(&x, a, 8);
        std::memcpy(&y, b, 8);
        if (x != y) {
            if constexpr (std::endian::native == std::endian::little) {
                x = __builtin_bswap64(x);
                y = __builtin_bswap64(y);
            }
            return x < y ? -1 : 1;
        }
        a += 8;
        b += 8;
        n -= 8;
    }
    for (; n > 0; --n, ++a, ++b) {
        if (*a != *b)
            return *a < *b ? -1 : 1;
    }
    return 0;
}

} // namespace

KeyTable::KeyTable(const FileArray &entries, std::size_t first, std::size_t count, qsizetype offset)
    : m_keys(count)
{
    // Files of one directory share their Path string; its head is made once.
    std::unordered_map<const QChar *, std::uint32_t> shared;
    std::vector<const FileEntry *> headOwners;
    std::size_t total = 0;
    bool narrow = true;
    auto measure = [&](char16_t u) {
        narrow = narrow && u < 0x100;
        ++total;
    };
    for (std::size_t k = 0; k < count; ++k) {
        const FileEntry &e = entries[first + k];
        const auto next = static_cast<std::uint32_t>(headOwners.size());
        std::uint32_t head = next;
        if (!e.isDirectory()) {
            const auto [it, inserted] = shared.try_emplace(e.path().constData(), next);
            if (!inserted && headOwners[it->second]->path().size() == e.path().size())
                head = it->second;
        }
        if (head == next) {
            headOwners.push_back(&e);
            forHead(e, offset, measure);
        }
        m_keys[k].head = head;
        forTail(e, measure);
    }

    const std::size_t bytes = narrow ? total : total * 2;
    if (bytes > std::numeric_limits<std::uint32_t>::max())
        return;
    m_bytes.resize(bytes);
    unsigned char *const base = m_bytes.data();
    unsigned char *out = base;
    auto put = [&](char16_t u) {
        if (!narrow)
            *out++ = static_cast<unsigned char>(u >> 8);
        *out++ = static_cast<unsigned char>(u);
    };
    auto spanFrom = [&](unsigned char *begin) {
        return Span{static_cast<std::uint32_t>(begin - base),
                    static_cast<std::uint32_t>(out - begin)};
    };
    m_heads.resize(headOwners.size());
    for (std::size_t h = 0; h < headOwners.size(); ++h) {
        unsigned char *const begin = out;
        forHead(*headOwners[h], offset, put);
        m_heads[h] = spanFrom(begin);
    }
    for (std::size_t k = 0; k < count; ++k) {
        unsigned char *const begin = out;
        forTail(entries[first + k], put);
        m_keys[k].tail = spanFrom(begin);
    }
    rankHeads();
    m_usable = true;
}

int KeyTable::compareSpans(Span a, Span b) const
{
    const int c = compareBytes(m_bytes.data() + a.begin, m_bytes.data() + b.begin,
                               std::min(a.length, b.length));
    if (c != 0)
        return c;
    return a.length == b.length ? 0 : (a.length < b.length ? -1 : 1);
}

void KeyTable::rankHeads()
{
    std::vector<std::uint32_t> sorted(m_heads.size());
    for (std::uint32_t h = 0; h < sorted.size(); ++h)
        sorted[h] = h;
    std::sort(sorted.begin(), sorted.end(), [this](std::uint32_t a, std::uint32_t b) {
        return compareSpans(m_heads[a], m_heads[b]) < 0;
    });
    // Equal heads (a directory and the files inside it) share a rank.
    m_headRank.resize(m_heads.size());
    std::vector<Span> byRank;
    for (std::uint32_t h : sorted) {
        if (byRank.empty() || compareSpans(byRank.back(), m_heads[h]) != 0)
            byRank.push_back(m_heads[h]);
        m_headRank[h] = static_cast<std::uint32_t>(byRank.size() - 1);
    }
    // The heads that start with a given head follow it as one run; a stack of the heads that
    // start the current one finds where each run ends.
    auto startsWith = [this](Span text, Span prefix) {
        return prefix.length <= text.length &&
               compareBytes(m_bytes.data() + text.begin, m_bytes.data() + prefix.begin,
                            prefix.length) == 0;
    };
    const auto ranks = static_cast<std::uint32_t>(byRank.size());
    m_rankPrefixEnd.assign(ranks, ranks - 1);
    std::vector<std::uint32_t> open;
    for (std::uint32_t r = 0; r < ranks; ++r) {
        while (!open.empty() && !startsWith(byRank[r], byRank[open.back()])) {
            m_rankPrefixEnd[open.back()] = r - 1;
            open.pop_back();
        }
        open.push_back(r);
    }
}

int KeyTable::compareKeys(std::uint32_t a, std::uint32_t b) const
{
    const Key &x = m_keys[a];
    const Key &y = m_keys[b];
    // Each key is its head followed by its tail; walk both joins a common run at a time.
    const Span left[2] = {x.head == y.head ? Span{} : m_heads[x.head], x.tail};
    const Span right[2] = {x.head == y.head ? Span{} : m_heads[y.head], y.tail};
    int i = 0;
    int j = 0;
    std::uint32_t at = 0; // bytes used of left[i]
    std::uint32_t bt = 0; // bytes used of right[j]
    while (true) {
        while (i < 2 && at == left[i].length) {
            ++i;
            at = 0;
        }
        while (j < 2 && bt == right[j].length) {
            ++j;
            bt = 0;
        }
        if (i == 2 || j == 2)
            return (i == 2) == (j == 2) ? 0 : (i == 2 ? -1 : 1);
        const std::uint32_t n = std::min(left[i].length - at, right[j].length - bt);
        const int c = compareBytes(m_bytes.data() + left[i].begin + at,
                                   m_bytes.data() + right[j].begin + bt, n);
        if (c != 0)
            return c;
        at += n;
        bt += n;
    }
}

} // namespace duomir

#include "core/sortkeys.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <future>
#include <system_error>
#include <vector>

#include "core/keytable.h"

namespace duomir {

namespace {

// Below this a second thread costs more than it saves.
constexpr std::size_t ParallelSortMinimum = 50'000;

// Walks the code units of one key without building it.
class KeyCursor
{
public:
    KeyCursor(const FileEntry &e, qsizetype offset) : m_entry(e)
    {
        const qsizetype size = e.path().size();
        const char16_t *path = units(e.path());
        m_p = path + std::min(offset, size);
        m_end = path + size;
        m_directory = e.isDirectory();
    }

    // The next unit, or -1 at the end of the key.
    int next()
    {
        switch (m_phase) {
        case 0:
            if (m_p != m_end)
                return keyPathUnit(*m_p++);
            m_phase = 1;
            return m_directory ? KeyDirectoryMark : KeyFileMark;
        case 1:
            if (m_directory)
                break;
            m_name = m_entry.nameUnits();
            m_at = 0;
            m_phase = 2;
            [[fallthrough]];
        case 2:
            if (m_at != m_name.size)
                return keyNameUnit(m_name[m_at++]);
            break;
        default:
            break;
        }
        m_phase = 3;
        return -1;
    }

private:
    const FileEntry &m_entry;
    const char16_t *m_p;
    const char16_t *m_end;
    NameUnits m_name;
    qsizetype m_at = 0;
    bool m_directory;
    int m_phase = 0;
};

// Moves entries[first + k] to the place that `order` gives it: position k receives the entry
// that was at first + the low 32 bits of order[k]. Follows each cycle once, so no second array of
// entries is needed; `order` is used up.
void permute(FileArray &entries, std::size_t first, std::vector<std::uint64_t> &order)
{
    constexpr std::uint64_t done = static_cast<std::uint64_t>(-1);
    auto source = [&order](std::size_t k) { return static_cast<std::uint32_t>(order[k]); };
    for (std::size_t start = 0; start < order.size(); ++start) {
        if (order[start] == done || source(start) == start) {
            order[start] = done;
            continue;
        }
        FileEntry held = std::move(entries[first + start]);
        std::size_t k = start;
        while (true) {
            const std::size_t from = source(k);
            order[k] = done;
            if (from == start) {
                entries[first + k] = std::move(held);
                break;
            }
            entries[first + k] = std::move(entries[first + from]);
            k = from;
        }
    }
}

int sign(int v)
{
    return (v > 0) - (v < 0);
}

} // namespace

int compareNameKeys(NameUnits a, NameUnits b)
{
    const qsizetype n = std::min(a.size, b.size);
    // Names of one folder often share a long start ("IMG_2024..."): equal units have equal keys,
    // so the common run is skipped without upper-casing it.
    qsizetype i = 0;
    if (!a.wide && !b.wide) {
        const auto *p = static_cast<const unsigned char *>(a.data);
        i = std::mismatch(p, p + n, static_cast<const unsigned char *>(b.data)).first - p;
    } else if (a.wide && b.wide) {
        const auto *p = static_cast<const char16_t *>(a.data);
        i = std::mismatch(p, p + n, static_cast<const char16_t *>(b.data)).first - p;
    }
    for (; i < n; ++i) {
        const char16_t x = keyNameUnit(a[i]);
        const char16_t y = keyNameUnit(b[i]);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return a.size == b.size ? 0 : (a.size < b.size ? -1 : 1);
}

int compareNamesExactly(NameUnits a, NameUnits b)
{
    if (a.wide && b.wide) {
        const QStringView x(static_cast<const char16_t *>(a.data), a.size);
        const QStringView y(static_cast<const char16_t *>(b.data), b.size);
        return sign(x.compare(y, Qt::CaseSensitive));
    }
    // A Latin-1 unit is below every unit that needs two bytes: unit order is the order.
    const qsizetype n = std::min(a.size, b.size);
    for (qsizetype i = 0; i < n; ++i) {
        if (a[i] != b[i])
            return a[i] < b[i] ? -1 : 1;
    }
    return a.size == b.size ? 0 : (a.size < b.size ? -1 : 1);
}

QString SortKeys::text(const FileEntry &entry) const
{
    QString out;
    KeyCursor c(entry, m_offset);
    for (int u = c.next(); u >= 0; u = c.next())
        out.append(QChar(static_cast<char16_t>(u)));
    return out;
}

int SortKeys::compare(const FileEntry &a, const SortKeys &other, const FileEntry &b) const
{
    // Two files in the same directory below their roots (one side's files share their Path; the
    // merge meets the same directory on both sides): only the names differ.
    if (!a.isDirectory() && !b.isDirectory()) {
        const QStringView ra = QStringView(a.path()).mid(std::min(m_offset, a.path().size()));
        const QStringView rb = QStringView(b.path()).mid(std::min(other.m_offset, b.path().size()));
        if (ra.size() == rb.size() &&
            (ra.data() == rb.data() ||
             std::memcmp(ra.data(), rb.data(), static_cast<std::size_t>(ra.size()) * 2) == 0))
            return compareNameKeys(a.nameUnits(), b.nameUnits());
    }
    KeyCursor x(a, m_offset);
    KeyCursor y(b, other.m_offset);
    while (true) {
        const int u = x.next();
        const int v = y.next();
        if (u != v)
            return u < v ? -1 : 1;
        if (u < 0)
            return 0;
    }
}

int SortKeys::compareExact(const FileEntry &a, const SortKeys &other, const FileEntry &b) const
{
    const QStringView pa = QStringView(a.path()).mid(std::min(m_offset, a.path().size()));
    const QStringView pb = QStringView(b.path()).mid(std::min(other.m_offset, b.path().size()));
    const int c = sign(pa.compare(pb, Qt::CaseSensitive));
    if (c != 0)
        return c;
    return compareNamesExactly(a.nameUnits(), b.nameUnits());
}

bool SortKeys::less(const FileEntry &a, const FileEntry &b) const
{
    const int c = compare(a, *this, b);
    if (c != 0)
        return c < 0;
    return compareExact(a, *this, b) < 0;
}

void SortEntries(FileArray &entries, qsizetype low, qsizetype high, const SortKeys &keys)
{
    if (low < 0 || high >= static_cast<qsizetype>(entries.size()) || low >= high)
        return;
    const std::size_t first = static_cast<std::size_t>(low);
    const std::size_t count = static_cast<std::size_t>(high - low) + 1;
    // A scan comes out in key order (scanner.h): one pass tells, and nothing moves.
    bool sorted = true;
    for (std::size_t k = first + 1; sorted && k < first + count; ++k)
        sorted = keys.less(entries[k - 1], entries[k]);
    if (sorted)
        return;

    // Deriving keys inside the comparison costs a walk over Path and Name per comparison; one
    // flat table of keys, freed again before this returns, turns every comparison into a memcmp.
    const KeyTable table(entries, first, count, keys.offset());
    if (!table.usable()) {
        std::sort(entries.begin() + low, entries.begin() + high + 1,
                  [&keys](const FileEntry &a, const FileEntry &b) { return keys.less(a, b); });
        return;
    }
    // Each element carries its head's rank beside its index, so that most comparisons read
    // neither the table nor the entries.
    std::vector<std::uint64_t> ranked(count);
    for (std::uint32_t k = 0; k < count; ++k)
        ranked[k] = (std::uint64_t{table.rank(k)} << 32) | k;
    const auto less = [&](std::uint64_t x, std::uint64_t y) {
        const auto a = static_cast<std::uint32_t>(x);
        const auto b = static_cast<std::uint32_t>(y);
        const int c = table.compare(a, static_cast<std::uint32_t>(x >> 32), b,
                                    static_cast<std::uint32_t>(y >> 32));
        if (c != 0)
            return c < 0;
        return keys.compareExact(entries[first + a], keys, entries[first + b]) < 0;
    };
    // Two halves at once, then one merge: the table and the entries are only read.
    const auto middle = ranked.begin() + std::ptrdiff_t(count / 2);
    std::future<void> lower;
    if (count >= ParallelSortMinimum) {
        try {
            lower =
                std::async(std::launch::async, [&] { std::sort(ranked.begin(), middle, less); });
        } catch (const std::system_error &) {
            // No thread to be had: one sort below.
        }
    }
    if (lower.valid()) {
        std::sort(middle, ranked.end(), less);
        lower.get();
        std::inplace_merge(ranked.begin(), middle, ranked.end(), less);
    } else {
        std::sort(ranked.begin(), ranked.end(), less);
    }
    permute(entries, first, ranked);
}

} // namespace duomir

#include "core/merge.h"

#include <QHash>
#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "core/platform/freememory.h"

namespace duomir {

namespace {

// Entries consumed between two hand-backs of the memory they held.
constexpr qsizetype ReleaseEvery = 1 << 15;

// Whether a default FileEntry is all zero bytes (null pointers, zero numbers), which lets the
// memory of spent entries go back to the system without changing what the array holds.
bool defaultEntryIsZero()
{
    alignas(FileEntry) unsigned char bytes[sizeof(FileEntry)];
    std::memset(bytes, 0xFF, sizeof bytes);
    const FileEntry *e = new (bytes) FileEntry();
    bool zero = true;
    for (unsigned char b : bytes)
        zero = zero && b == 0;
    e->~FileEntry();
    return zero;
}

// Entries [from, to) of a scan have been merged: their pages, now all zero, are handed back, so
// the scans shrink as the rows grow. `from` moves on to `to`.
void releaseSpent(FileArray &entries, qsizetype &from, qsizetype to)
{
    static const bool zero = defaultEntryIsZero();
    for (qsizetype k = from; k < to; ++k)
        entries[static_cast<std::size_t>(k)] = FileEntry();
    if (zero && to > 0) {
        // The pages before were handed back by earlier calls; only the one that straddled their
        // end (at most 64 KiB back, the largest page size in use) is still held.
        constexpr qsizetype largestPage = 64 * 1024 / qsizetype(sizeof(FileEntry)) + 1;
        const qsizetype begin = std::max<qsizetype>(0, from - largestPage);
        releaseZeroPages(entries.data() + begin, entries.data() + to);
    }
    from = to;
}

class Merger
{
public:
    Merger(const MergeInput &in, CompareArray &results) : m_in(in), m_out(results) {}

    void run();

private:
    // How many entries from `i` on share the key of element i.
    qsizetype twinCount(const FileArray &a, const SortKeys &keys, qsizetype i) const
    {
        qsizetype n = 1;
        while (i + n < static_cast<qsizetype>(a.size()) && keys.compare(a[i], keys, a[i + n]) == 0)
            ++n;
        return n;
    }

    void matched(const FileEntry &s, const FileEntry &d);
    void oneSided(const FileEntry &e, Side side);
    // The path of `present` on the other side: below the other side's spelling of the folder it
    // lies in.
    const QString *derivedPath(const FileEntry &present, Side presentSide);
    // Two spellings of one folder, source and destination, for the rows below it.
    void remember(const QString *sourceFolder, const QString *destinationFolder);

    const MergeInput &m_in;
    CompareArray &m_out;
    // Files of one directory share their derived path as they share their own.
    const QString *m_lastPresent = nullptr;
    int m_lastSide = -1;
    const QString *m_lastDerived = nullptr;
    // Per side: each folder's path there, and the other side's path of the same folder.
    std::array<QHash<QString, const QString *>, 2> m_otherSpelling;
};

const QString *Merger::derivedPath(const FileEntry &present, Side presentSide)
{
    if (&present.path() == m_lastPresent && presentSide == m_lastSide)
        return m_lastDerived;
    const QString &otherRoot = m_in.roots[otherSide(presentSide)];
    const QString &path = present.path();
    // A side without a root (an empty pair text) has no place for anything: deriving from it
    // would give a relative path, which a copy would resolve against the working directory.
    if (otherRoot.isEmpty()) {
        m_lastDerived = nullptr;
    } else {
        // Below the folder it lies in, as the other side spells that folder: a folder paired
        // across case (Sub with SUB) receives the file where a case-blind look-up would put it,
        // and a walk over that folder meets it.
        const qsizetype cut = present.isDirectory() ? path.lastIndexOf(u'/') : path.size() - 1;
        const QStringView parent = QStringView(path).left(std::max<qsizetype>(cut, 0));
        const auto &spellings = m_otherSpelling[static_cast<size_t>(presentSide)];
        const auto found = spellings.constFind(parent.toString());
        QString derived;
        if (found != spellings.cend()) {
            derived = **found + QStringView(path).mid(parent.size());
        } else {
            const QString &ownRoot = m_in.roots[static_cast<size_t>(presentSide)];
            derived = otherRoot + QStringView(path).mid(std::min(ownRoot.size(), path.size()));
        }
        m_lastDerived = m_in.rowTexts.addPath(std::move(derived));
    }
    m_lastPresent = &path;
    m_lastSide = presentSide;
    return m_lastDerived;
}

void Merger::remember(const QString *sourceFolder, const QString *destinationFolder)
{
    m_otherSpelling[0].insert(*sourceFolder, destinationFolder);
    m_otherSpelling[1].insert(*destinationFolder, sourceFolder);
}

void Merger::matched(const FileEntry &s, const FileEntry &d)
{
    CompareEntry &row = m_out.emplace_back();
    row.setPath(Side::Source, &s.path());
    row.setPath(Side::Destination, &d.path());
    // Most matched names are equal on both sides: the source's units then serve both.
    row.setName(Side::Source, s.name());
    row.setName(Side::Destination, d.name() == s.name() ? s.name() : d.name());
    if (s.isDirectory() && d.isDirectory())
        remember(&s.path(), &d.path());
    row.Attributes = {s.Attributes, d.Attributes};
    row.Modified = {s.Modified, d.Modified};
    row.ModifiedNs = {s.ModifiedNs, d.ModifiedNs};
    row.FullSize = {s.FullSize, d.FullSize};

    // Dates are whole seconds; a microsecond of slack keeps the floating-point day fractions from
    // turning a difference exactly equal to the lag into "newer".
    constexpr double slack = 1e-6 / 86400.0;
    if (s.Modified == d.Modified) {
        if (s.size() != d.size())
            row.State = ModifiedInSource; // equal times, different sizes: always source's way
    } else if (s.Modified - d.Modified > m_in.timeLag + slack) {
        row.State = ModifiedInSource;
    } else if (d.Modified - s.Modified > m_in.timeLag + slack) {
        row.State = ModifiedInDestination;
    }
    if (row.State != Identical || row.isDirectory())
        row.Marked = m_in.markAll;
}

// An entry that only `side` has; the other side's path is derived from it.
void Merger::oneSided(const FileEntry &e, Side side)
{
    CompareEntry &row = m_out.emplace_back();
    const QString *other = derivedPath(e, side);
    row.setPath(side, &e.path());
    row.setPath(otherSide(side), other);
    if (e.isDirectory() && other && !other->isEmpty())
        remember(side == Side::Source ? &e.path() : other,
                 side == Side::Source ? other : &e.path());
    row.setName(side, e.name());
    row.Attributes = {e.Attributes, e.Attributes};
    row.Modified[size_t(side)] = e.Modified;
    row.ModifiedNs[size_t(side)] = e.ModifiedNs;
    row.FullSize[size_t(side)] = e.FullSize;
    row.State = side == Side::Source ? ModifiedInSource : ModifiedInDestination;
    row.Marked = m_in.markAll;
}

void Merger::run()
{
    FileArray &src = m_in.source;
    FileArray &dst = m_in.destination;
    const qsizetype ns = static_cast<qsizetype>(src.size());
    const qsizetype nd = static_cast<qsizetype>(dst.size());
    // Address space only: untouched capacity costs no memory, and the rows never move again.
    const std::size_t needed = m_out.size() + static_cast<std::size_t>(ns + nd);
    if (needed > m_out.capacity())
        m_out.reserve(std::max(needed, m_out.capacity() * 2));

    qsizetype i = 0;
    qsizetype j = 0;
    qsizetype releasedI = 0;
    qsizetype releasedJ = 0;
    while (i < ns || j < nd) {
        if (i - releasedI + j - releasedJ >= ReleaseEvery) {
            releaseSpent(src, releasedI, i);
            releaseSpent(dst, releasedJ, j);
        }
        int c;
        if (i >= ns)
            c = 1;
        else if (j >= nd)
            c = -1;
        else
            c = m_in.sourceKeys.compare(src[i], m_in.destinationKeys, dst[j]);

        if (c < 0) {
            oneSided(src[i++], Side::Source);
        } else if (c > 0) {
            oneSided(dst[j++], Side::Destination);
        } else {
            const qsizetype ti = twinCount(src, m_in.sourceKeys, i);
            const qsizetype tj = twinCount(dst, m_in.destinationKeys, j);
            if (ti == 1 && tj == 1) {
                // Names holding the key's own separator characters (legal on Linux) can give a
                // file and a directory one key; they are still never one entry. The roots always
                // pair, whatever they are.
                if (i > 0 && j > 0 && src[i].isDirectory() != dst[j].isDirectory()) {
                    oneSided(src[i++], Side::Source);
                    oneSided(dst[j++], Side::Destination);
                    continue;
                }
                matched(src[i++], dst[j++]);
                continue;
            }
            // Case twins: pair by exact name, in exact order; leftovers are one-sided.
            const qsizetype ei = i + ti;
            const qsizetype ej = j + tj;
            while (i < ei || j < ej) {
                int e;
                if (i >= ei)
                    e = 1;
                else if (j >= ej)
                    e = -1;
                else
                    e = m_in.sourceKeys.compareExact(src[i], m_in.destinationKeys, dst[j]);
                if (e < 0)
                    oneSided(src[i++], Side::Source);
                else if (e > 0)
                    oneSided(dst[j++], Side::Destination);
                else
                    matched(src[i++], dst[j++]);
            }
        }
    }
}

} // namespace

void MergeAndClassify(const MergeInput &in, CompareArray &results)
{
    Merger(in, results).run();
}

std::array<int, 3> countStates(const CompareArray &results)
{
    std::array<int, 3> counts{};
    for (std::size_t r = 1; r < results.size(); ++r)
        ++counts[static_cast<std::size_t>(results[r].State + 1)];
    return counts;
}

} // namespace duomir

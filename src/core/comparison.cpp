#include "core/comparison.h"

#include "core/filters.h"
#include "core/merge.h"
#include "core/scanner.h"
#include "core/syncpaths.h"

namespace duomir {

Comparison::Comparison() : m_texts{std::make_shared<TextStore>()} {}

Seen Comparison::seen(const CompareEntry &e, Side side) const
{
    return {e.FullSize[size_t(side)], DateToFileTime(e.Modified[size_t(side)], m_utcOffset),
            e.ModifiedNs[size_t(side)]};
}

bool Comparison::isInUnlistedPair(int row) const
{
    for (const RowRange &r : m_unlisted) {
        if (row >= r.first && row <= r.last)
            return true;
    }
    return false;
}

bool Comparison::isInUnseenSource(int row) const
{
    for (const RowRange &r : m_unlisted) {
        if (row >= r.first && row <= r.last) {
            const std::uint32_t root = m_rows[size_t(r.first)].Attributes[Side::Source];
            return root != Attr::Invalid && (root & Attr::Directory) != 0;
        }
    }
    return false;
}

bool Comparison::isBelowUnlisted(int row, Side side) const
{
    const QString &path = m_rows[size_t(row)].path(side);
    for (int i = row - 1; i >= 1; --i) {
        const CompareEntry &x = m_rows[size_t(i)];
        if (x.isDirectory() && !x.lacks(side) && (x.Attributes[size_t(side)] & Attr::Unlisted) &&
            liesInside(path, insidePrefix(x.path(side))))
            return true;
    }
    return false;
}

void Comparison::clear()
{
    const RowsChange change(*this);
    CompareArray(1).swap(m_rows);
    RowIndexArray(1, 0).swap(m_visible);
    m_texts.assign(1, std::make_shared<TextStore>());
    m_unlisted.clear();
    m_leftovers.clear();
    m_rootIdentities.clear();
    m_counters = {};
}

void Comparison::addListing(int firstRow, PairListing &&listing, int utcOffset)
{
    m_utcOffset = utcOffset;
    m_texts.insert(m_texts.end(), listing.texts.begin(), listing.texts.end());
    if (listing.sourceUnlisted)
        m_unlisted.push_back({firstRow, lastRow()});
    for (Side side : Sides) {
        for (QString &path : listing.leftovers[side])
            m_leftovers.push_back({firstRow, side, std::move(path)});
    }
    m_rootIdentities[firstRow] = listing.roots;
}

void Comparison::countStates()
{
    m_counters = duomir::countStates(m_rows);
}

void Comparison::rebuildVisibleRows()
{
    const RowsChange change(*this);
    m_visible = filterRows(m_rows, m_filter);
    m_visibleCounts = countRows(m_rows, m_visible);
}

void Comparison::showRows(RowIndexArray rows)
{
    const RowsChange change(*this);
    m_visible = std::move(rows);
    m_visibleCounts = countRows(m_rows, m_visible);
}

Comparison::RowsChange::RowsChange(Comparison &comparison) : m_comparison(comparison)
{
    if (m_comparison.m_changing++ == 0) {
        for (RowsObserver *o : m_comparison.m_observers)
            o->rowsAboutToChange();
    }
}

Comparison::RowsChange::~RowsChange()
{
    if (--m_comparison.m_changing == 0) {
        for (RowsObserver *o : m_comparison.m_observers)
            o->rowsChanged();
    }
}

} // namespace duomir

#pragma once

#include <QHash>
#include <QString>
#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

#include "core/fileentry.h"
#include "core/platform/fileops.h"
#include "core/textstore.h"

namespace duomir {

// Which rows the file list shows by their state (the second filter toolbar). The values are the
// toolbar's keys and the profile's F1.
enum class FileView : int {
    All = 0,
    Modified = 1,              // and every directory row
    ModifiedInSource = 2,      // and directory rows not modified in the destination
    ModifiedInDestination = 3, // the same the other way
    Identical = 4,             // and row 1; the side filter does not apply
};

// Which file rows the file list shows by their names (the third toolbar; the profile's F2).
enum class SideView : int {
    All = 0,
    SameNames = 1,      // "in both directories"
    DifferentNames = 2, // "in one directory only": the names differ, case included
};

// The file-list filter selection (the three filter toolbars).
struct FilterState
{
    FileView FileFilter = FileView::All;
    SideView SideFilter = SideView::All;
    bool ShowEmptyDirs = false;
};

// Counts shown under the file list after each rebuild of the visible rows.
struct RowCounts
{
    int files = 0;
    int directories = 0;
};

// Told before and after the rows a view shows change shape: the comparison's rows or the visible
// ones. Between the two calls the rows must not be read; after the second they may have any count.
class RowsObserver
{
public:
    virtual void rowsAboutToChange() = 0;
    virtual void rowsChanged() = 0;

protected:
    ~RowsObserver() = default;
};

// What the listing of one pair found besides its entries.
struct PairListing
{
    // The source root could not be listed: the pair was compared against an empty source.
    bool sourceUnlisted = false;
    // Temporary files that copies of killed runs left behind, per side, full paths.
    std::array<std::vector<QString>, 2> leftovers;
    // The directories listed as the two roots.
    std::array<RootIdentity, 2> roots;
    // The stores the scans' names live in; the rows point into them.
    std::array<SharedTexts, 2> texts;
};

// The result of the last Compare and the rows the file list shows of it. Row 0 of the rows and of
// the visible rows has no meaning; each pair's rows open with its root row. The visible rows are
// indices into the rows, so a check mark set in the list is the one synchronization reads.
class Comparison
{
public:
    Comparison();
    Comparison(const Comparison &) = delete;
    Comparison &operator=(const Comparison &) = delete;

    const CompareArray &rows() const { return m_rows; }
    const CompareEntry &row(int r) const { return m_rows[size_t(r)]; }
    // The last row's index; 0 when nothing was compared.
    int lastRow() const { return int(m_rows.size()) - 1; }
    void setMarked(int r, bool marked) { m_rows[size_t(r)].Marked = marked; }
    // A store that lives as long as the rows, for texts of rows made here.
    TextStore &texts() const { return *m_texts.front(); }

    // What the file operations turn a row's date back into, to check that a file is still as it
    // was seen: the time-zone offset of the comparison is the one its dates were made with.
    Seen seen(const CompareEntry &e, Side side) const;

    // Temporary files of killed copies: the root row of their pair, the side and the full path.
    // The next copy into that side removes those no copy holds any more.
    struct Leftover
    {
        int rootRow;
        Side side;
        QString path;
    };
    const std::vector<Leftover> &leftovers() const { return m_leftovers; }
    // The directories the comparison listed as the roots of the pair opening at `rootRow`.
    std::array<RootIdentity, 2> rootIdentities(int rootRow) const
    {
        return m_rootIdentities.value(rootRow);
    }

    // Entries the last comparison would send: [0] source to destination, [1] identical rows,
    // [2] destination to source.
    const std::array<int, 3> &counters() const { return m_counters; }

    // A pair whose source root could not be listed is compared against an empty source, so
    // every destination file looks missing in the source: deleting on the destination what the
    // source lacks would wipe it, so deletion leaves its rows alone. Copies towards a missing
    // source are tried and fail, reported; into a source folder that exists but could not be
    // read nothing is copied, as it may hold newer files that nobody has seen.
    bool isInUnlistedPair(int row) const;
    bool isInUnseenSource(int row) const;
    // Whether a folder above `row` exists on `side` but could not be listed there: whatever the
    // row lacks on that side may be there unseen. A walk that starts below such a folder never
    // meets its row, so it asks here.
    bool isBelowUnlisted(int row, Side side) const;

    // The time-zone offset the comparison turned file times into dates with.
    int utcOffset() const { return m_utcOffset; }

    // Rows built or changed by hand, as the tests and the window's own checks do, not by a
    // Compare: after the change, countStates() and a rebuild or showRows() bring the counters and
    // the visible rows up to date.
    CompareArray &editRows() { return m_rows; }
    // Marks rows `first`..`last` as a pair whose source root could not be listed.
    void markSourceUnlisted(int first, int last) { m_unlisted.push_back({first, last}); }
    // Shows exactly `rows` (indices into the rows, element 0 without meaning), whatever the
    // filter says.
    void showRows(RowIndexArray rows);

    // Whether new rows come marked (the file list's header check box).
    bool markAll() const { return m_markAll; }
    void setMarkAll(bool on) { m_markAll = on; }

    // Entries listed so far per side by the running comparison, read by a progress display while
    // the destination is listed on another thread.
    std::atomic<std::int64_t> &listed(Side side) { return m_listed[size_t(side)]; }
    std::int64_t listedSoFar(Side side) const { return m_listed[size_t(side)]; }

    // The compare command's side: empty the rows, add each pair's, then count them.
    void clear();
    // Adds one pair's rows (`merge` appends them to the array it is given) and what its listing
    // found; `utcOffset` is the one its dates were made with. The visible rows stay as they are
    // until they are rebuilt.
    template <typename Merge> void addPair(Merge &&merge, PairListing &&listing, int utcOffset)
    {
        const int firstRow = int(m_rows.size());
        merge(m_rows);
        addListing(firstRow, std::move(listing), utcOffset);
    }
    void countStates();

    // The filter selection and the rows it admits.
    const FilterState &filter() const { return m_filter; }
    void setFilter(const FilterState &filter) { m_filter = filter; }
    // Rebuilds the visible rows from the rows with the current selection and counts them.
    void rebuildVisibleRows();
    const RowIndexArray &visibleRows() const { return m_visible; }
    int visibleCount() const { return int(m_visible.size()) - 1; }
    const CompareEntry &visibleRow(int r) const { return m_rows[size_t(m_visible[size_t(r)])]; }
    const RowCounts &visibleCounts() const { return m_visibleCounts; }

    // Observers hear of every change of the rows' shape; one that goes away says so first.
    void addRowsObserver(RowsObserver *observer) { m_observers.push_back(observer); }
    void removeRowsObserver(RowsObserver *observer) { std::erase(m_observers, observer); }

    // While one lives, the rows may change shape; the observers hear of it before and after.
    // Nested changes tell them once.
    class RowsChange
    {
    public:
        explicit RowsChange(Comparison &comparison);
        ~RowsChange();
        RowsChange(const RowsChange &) = delete;
        RowsChange &operator=(const RowsChange &) = delete;

    private:
        Comparison &m_comparison;
    };

private:
    void addListing(int firstRow, PairListing &&listing, int utcOffset);

    struct RowRange
    {
        int first;
        int last;
    };

    // The rows and the stores their paths and names live in: one for the texts the comparison
    // makes, then the scans'. They go together.
    CompareArray m_rows{1};
    std::vector<SharedTexts> m_texts;
    int m_utcOffset = 0;
    std::vector<Leftover> m_leftovers;
    QHash<int, std::array<RootIdentity, 2>> m_rootIdentities;
    // Rows of the pairs whose source root could not be listed, first and last; the first is the
    // pair's root row.
    std::vector<RowRange> m_unlisted;
    std::array<int, 3> m_counters{};
    bool m_markAll = true;
    std::array<std::atomic<std::int64_t>, 2> m_listed{};

    FilterState m_filter;
    RowIndexArray m_visible = RowIndexArray(1, 0);
    RowCounts m_visibleCounts;

    std::vector<RowsObserver *> m_observers;
    int m_changing = 0;
};

} // namespace duomir

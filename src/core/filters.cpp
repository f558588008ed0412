#include "core/filters.h"

#include "base/interaction.h"
#include "core/comparison.h"
#include "localization/language.h"

namespace duomir {

namespace {

bool passesFileFilter(const CompareEntry &row, FileView view, std::size_t index)
{
    const bool directory = row.isDirectory();
    switch (view) {
    case FileView::Modified:
        return row.State != Identical || directory;
    case FileView::ModifiedInSource:
        return row.State == ModifiedInSource || (directory && row.State != ModifiedInDestination);
    case FileView::ModifiedInDestination:
        return row.State == ModifiedInDestination || (directory && row.State != ModifiedInSource);
    case FileView::Identical:
        return index == 1 || row.State == Identical;
    case FileView::All:
        break;
    }
    return true;
}

bool passesSideFilter(const CompareEntry &row, SideView view)
{
    if (row.isDirectory())
        return true;
    switch (view) {
    case SideView::SameNames:
        return row.nameView(Side::Source) == row.nameView(Side::Destination);
    case SideView::DifferentNames:
        return row.nameView(Side::Source) != row.nameView(Side::Destination);
    case SideView::All:
        break;
    }
    return true;
}

} // namespace

RowIndexArray filterRows(const CompareArray &results, const FilterState &filter)
{
    RowIndexArray kept;
    kept.reserve(results.size());
    kept.push_back(0);
    const bool sideFilter =
        filter.FileFilter != FileView::Identical && filter.SideFilter != SideView::All;
    for (std::size_t r = 1; r < results.size(); ++r) {
        const CompareEntry &row = results[r];
        if (passesFileFilter(row, filter.FileFilter, r) &&
            (!sideFilter || passesSideFilter(row, filter.SideFilter)))
            kept.push_back(static_cast<std::int32_t>(r));
    }
    if (filter.ShowEmptyDirs)
        return kept;

    // Drop identical directories with nothing of theirs shown beneath them, deciding on the
    // rows as they were before this step.
    std::size_t out = 1;
    for (std::size_t r = 1; r < kept.size(); ++r) {
        const CompareEntry &row = results[kept[r]];
        const bool emptyDirectory = row.isDirectory() && row.State == Identical &&
                                    (r + 1 == kept.size() || results[kept[r + 1]].isDirectory());
        if (emptyDirectory)
            continue;
        kept[out++] = kept[r];
    }
    kept.resize(out);
    return kept;
}

RowCounts countRows(const CompareArray &results, const RowIndexArray &rows)
{
    RowCounts counts;
    for (std::size_t r = 1; r < rows.size(); ++r) {
        const CompareEntry &row = results[rows[r]];
        if (!row.isDirectory())
            ++counts.files;
        else if (!row.lacks(Side::Source) || !row.lacks(Side::Destination))
            ++counts.directories;
    }
    return counts;
}

QString countText(const Language &language, int count, int singularKey, int pluralKey)
{
    return language.FormatMsg(QString::number(count == 1 ? singularKey : pluralKey),
                              {QString::number(count)});
}

void BuildVisibleRows(Comparison &comparison, const Language &language, Interaction &ui)
{
    comparison.rebuildVisibleRows();
    const RowCounts &counts = comparison.visibleCounts();
    ui.setStatusLabel(0, countText(language, counts.files, 702, 703));
    ui.setStatusLabel(1, QString());
    ui.setStatusLabel(2, countText(language, counts.directories, 712, 713));
}

} // namespace duomir

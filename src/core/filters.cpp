#include "core/filters.h"

#include "base/interaction.h"
#include "core/engine.h"

namespace duomir {

namespace {

bool passesFileFilter(const CompareEntry &row, int fileFilter, std::size_t index)
{
    const bool directory = row.isDirectory();
    switch (fileFilter) {
    case 1:
        return row.State != Identical || directory;
    case 2:
        return row.State == ModifiedInSource || (directory && row.State != ModifiedInDestination);
    case 3:
        return row.State == ModifiedInDestination || (directory && row.State != ModifiedInSource);
    case 4:
        return index == 1 || row.State == Identical;
    default:
        return true;
    }
}

bool passesSideFilter(const CompareEntry &row, int sideFilter)
{
    if (row.isDirectory())
        return true;
    switch (sideFilter) {
    case 1:
        return row.nameView(0) == row.nameView(1);
    case 2:
        return row.nameView(0) != row.nameView(1);
    default:
        return true;
    }
}

} // namespace

RowIndexArray filterRows(const CompareArray &results, const FilterState &filter)
{
    RowIndexArray kept;
    kept.reserve(results.size());
    kept.push_back(0);
    const bool sideFilter = filter.FileFilter != 4 && filter.SideFilter != 0;
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
        else if (!row.lacks(0) || !row.lacks(1))
            ++counts.directories;
    }
    return counts;
}

QString countText(const Engine &engine, int count, int singularKey, int pluralKey)
{
    return engine.FormatMsg(count == 1 ? singularKey : pluralKey, {QString::number(count)});
}

void BuildVisibleRows(Engine &engine, int fileFilter)
{
    engine.filter.FileFilter = fileFilter;
    {
        const Engine::RowsChange change(engine);
        engine.VisibleRows = filterRows(engine.CompareResults, engine.filter);
        engine.visibleCounts = countRows(engine.CompareResults, engine.VisibleRows);
    }
    Interaction &ui = engine.ui();
    ui.setStatusLabel(0, countText(engine, engine.visibleCounts.files, 702, 703));
    ui.setStatusLabel(1, QString());
    ui.setStatusLabel(2, countText(engine, engine.visibleCounts.directories, 712, 713));
}

} // namespace duomir

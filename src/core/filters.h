#pragma once

#include <QString>

#include "core/fileentry.h"

namespace duomir {

class Engine;
struct FilterState;
struct RowCounts;

// Which rows of `results` the selection admits, in order, packed from index 1 (element 0 of the
// returned array has no meaning):
//   FileFilter 0 all rows; 1 modified rows and every directory row; 2 rows modified in the source
//   and directory rows that are identical or modified in the source; 3 the same towards the
//   destination; 4 row 1 and every identical row.
//   SideFilter (skipped under FileFilter 4) 1 rows whose two names are equal, 2 rows whose names
//   differ (exactly, case included), plus directory rows either way; 0 all.
//   Without ShowEmptyDirs an identical directory row directly followed by another directory row,
//   or closing the list, is dropped: nothing of it is shown beneath it.
CompareArray filterRows(const CompareArray &results, const FilterState &filter);

// Files and directories among `rows` (from index 1; root rows, which name nothing, not counted).
RowCounts countRows(const CompareArray &rows);

// The text of a count label: `singularKey` when the count is exactly 1, otherwise `pluralKey`
// (0 included, as "0 files" reads), with the count as %1.
QString countText(const Engine &engine, int count, int singularKey, int pluralKey);

// Stores `fileFilter` in engine.filter, rebuilds engine.VisibleRows from engine.CompareResults
// with the current selection, counts its rows into engine.visibleCounts and shows the counts in
// status labels 0 (files: 702 for one, 703 otherwise) and 2 (directories: 712/713); label 1 is
// cleared.
void BuildVisibleRows(Engine &engine, int fileFilter);

} // namespace duomir

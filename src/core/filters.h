#pragma once

#include <QString>

#include "core/fileentry.h"

namespace duomir {

class Comparison;
class Interaction;
class Language;
struct FilterState;
struct RowCounts;

// The indices of the rows of `results` that the selection admits, in order, packed from index 1
// (element 0 of the returned array has no meaning):
//   FileFilter 0 all rows; 1 modified rows and every directory row; 2 rows modified in the source
//   and directory rows that are identical or modified in the source; 3 the same towards the
//   destination; 4 row 1 and every identical row.
//   SideFilter (skipped under FileFilter 4) 1 rows whose two names are equal, 2 rows whose names
//   differ (exactly, case included), plus directory rows either way; 0 all.
//   Without ShowEmptyDirs an identical directory row directly followed by another directory row,
//   or closing the list, is dropped: nothing of it is shown beneath it.
RowIndexArray filterRows(const CompareArray &results, const FilterState &filter);

// Files and directories among the rows of `results` that `rows` names (from index 1; root rows,
// which name nothing, not counted).
RowCounts countRows(const CompareArray &results, const RowIndexArray &rows);

// The text of a count label: `singularKey` when the count is exactly 1, otherwise `pluralKey`
// (0 included, as "0 files" reads), with the count as %1.
QString countText(const Language &language, int count, int singularKey, int pluralKey);

// Rebuilds the comparison's visible rows with its filter selection and shows their counts in
// status labels 0 (files: 702 for one, 703 otherwise) and 2 (directories: 712/713); label 1 is
// cleared.
void BuildVisibleRows(Comparison &comparison, const Language &language, Interaction &ui);

} // namespace duomir

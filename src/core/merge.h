#pragma once

#include <QString>
#include <array>

#include "core/fileentry.h"
#include "core/sortkeys.h"
#include "core/textstore.h"

namespace duomir {

// What one merge needs besides the two sorted scans. The rows point at the texts of the scans
// (a destination name equal to its source name is shared with the source's), so the scans' text
// stores must live as long as the rows; the entries themselves are spent afterwards.
struct MergeInput
{
    FileArray &source;
    FileArray &destination;
    SortKeys sourceKeys;
    SortKeys destinationKeys;
    std::array<QString, 2> roots; // CompareRoots: each side's root with its final separator
    bool markAll = true;
    Date timeLag = 0;    // days
    TextStore &rowTexts; // where paths derived for the side that lacks an entry go
};

// Walks both sorted scans in step and appends one row per key to `results`:
// matched entries are classified (equal times: sizes decide, source wins; otherwise the newer side
// when it is newer by more than the lag, a difference equal to the lag being identical), entries
// on one side only are modified on that side with the missing side's path derived from its root.
// Case twins (several names with one key on one side) pair only by their exact name; the rest come
// out one-sided. Rows with a state other than Identical, and directory rows, take `markAll` as
// their check mark. The root pair (elements 0) always matches and opens the pair's rows.
void MergeAndClassify(const MergeInput &in, CompareArray &results);

// Counts rows by state into [0] ModifiedInSource, [1] Identical, [2] ModifiedInDestination.
std::array<int, 3> countStates(const CompareArray &results);

} // namespace duomir

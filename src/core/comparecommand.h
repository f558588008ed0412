#pragma once

#include <QString>

namespace duomir {

class Engine;

// The root of one side as the comparison uses it: the pair's text with the separator appended
// when it lacks one. An empty text stays empty (it names no directory, and never "/").
QString compareRoot(const QString &pairText);

// The Compare command over every pair of engine.pairs, in list order. Rebuilds
// the comparison's rows (element 0 plus each pair's rows, each group opening with its root row),
// its counters and, on success, the visible rows and their counts.
// Messages: 802 for an empty pair list (nothing changes); 806 when a source root cannot be listed
// (the pair is compared against an empty source); 807 when a destination root cannot be listed
// (all results are dropped and no later pair is scanned). Status label 1 shows 850 while a pair is
// scanned and 851 while it is sorted and merged.
// Returns true when every pair was compared (806 included), false after 802 or 807.
// `unlistedRoots`, when given, receives the number of roots that could not be listed (806, 807).
bool Compare(Engine &engine, int *unlistedRoots = nullptr);

} // namespace duomir

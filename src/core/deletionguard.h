#pragma once

#include <QString>
#include <vector>

#include "core/side.h"

namespace duomir {

class Comparison;
class Engine;

// A pair whose deletion on one side the guard holds back: its root row, the files that would go,
// the files that side holds, and that side's root.
struct OversizedDeletion
{
    int rootRow;
    int deletions;
    int files;
    QString root;
};

// Per pair, a deletion on `side` of the files the other side lacks that would remove more than
// `limit` per cent of that side's files, or that finds the other side holding nothing at all (an
// unplugged drive leaves an empty mount point). `start` as for DeleteEntries.
std::vector<OversizedDeletion> FindOversizedDeletions(const Comparison &comparison, int limit,
                                                      Side side, int start);

// Before the deletion step of a synchronization: each pair FindOversizedDeletions names is asked
// about (warning, the counts, No the default); unattended its deletion does not run and is
// reported. The refused pairs' root rows go to the run's refusedRoots(), which DeleteEntries
// leaves alone; the copies of the run are not affected. `mirror`: the deletion is the mirror's,
// on the receiving side, of what the sending side lacks.
void GuardDeletions(Engine &engine, Side side, int start, bool mirror = false);

} // namespace duomir

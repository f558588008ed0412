#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <vector>

namespace duomir {

class Comparison;
class Engine;
class SyncRun;
struct SyncStats;

// What Synchronize will do to one row under the current directions, Delete, Mirror and marks.
enum class PlannedAction : std::uint8_t {
    None,
    CopyToDestination,
    CopyToSource,
    DeleteInSource,
    DeleteInDestination,
};

// The rows' actions as the walks decide them. The facts that come from the comparison alone
// (which rows lie below a folder that could not be listed) are gathered once, in one pass; an
// action then reads the options and the row's mark as they are at that moment, so a toggled
// direction or mark shows at once.
class SyncPlanner
{
public:
    SyncPlanner(const Comparison &comparison, const SyncRun &run);
    PlannedAction action(int row) const;

private:
    const Comparison &m_comparison;
    const SyncRun &m_run;
    // Per row, bit `side`: below a folder of that side that exists but could not be listed.
    std::vector<std::uint8_t> m_belowUnlisted;
};

// The whole run in numbers, per direction (index 0: source to destination, 1: back): files and
// bytes to copy, how many of them replace a file, and files to delete on each side (index = side);
// and the pairs whose deletion the guard would hold back.
struct SyncPlan
{
    std::array<int, 2> copies{};
    std::array<std::int64_t, 2> bytes{};
    std::array<int, 2> replaces{};
    std::array<int, 2> deletions{};
    std::array<int, 2> folderRemovals{};
    QStringList heldBack; // one line per pair, already worded
};

// A Synchronize of the whole list.
SyncPlan PlanSynchronize(const Engine &engine);

// The plan in the person's words: refusals first, then one line per direction and per side that
// loses files, then where deleted and replaced files go.
QString DescribePlan(const Engine &engine, const SyncPlan &plan);

// The counts alone, for the log's End line and the command line's summaries: what a plan would
// do or, from a run's SyncStats, what it did, in the same shape either way.
QString PlanNumbers(const SyncPlan &plan);
SyncPlan DoneAsPlan(const SyncStats &done);

} // namespace duomir

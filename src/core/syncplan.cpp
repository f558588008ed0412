#include "core/syncplan.h"

#include <QLocale>
#include <algorithm>
#include <optional>

#include "base/interaction.h"
#include "core/deletionguard.h"
#include "core/engine.h"
#include "core/syncpaths.h"
#include "core/versioning.h"

namespace duomir {

namespace {

// A row names its file or folder on each side that holds it (a one-sided row's other path is
// only derived).
bool onSide(const CompareEntry &e, Side side)
{
    return !e.lacks(side);
}

// The sending side of a run with one direction, none with both or neither.
std::optional<Side> singleDirection(const SyncOptions &o)
{
    if (o.Src == o.Dest || o.Reverse)
        return std::nullopt;
    return o.Src ? Side::Source : Side::Destination;
}

} // namespace

SyncPlanner::SyncPlanner(const Comparison &comparison, const SyncRun &run)
    : m_comparison(comparison), m_run(run)
{
    // As the walks find them: a folder that could not be listed hides what lies below it, until
    // the first row outside it.
    const CompareArray &rows = comparison.rows();
    m_belowUnlisted.assign(rows.size(), 0);
    std::array<QString, 2> unseenBelow;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const CompareEntry &x = rows[i];
        for (Side side : Sides) {
            QString &below = unseenBelow[size_t(side)];
            if (isPairRootRow(x) || (!below.isEmpty() && !x.path(side).startsWith(below)))
                below.clear();
            if (!below.isEmpty())
                m_belowUnlisted[i] |= std::uint8_t(1 << side);
            if (below.isEmpty() && onSide(x, side) &&
                (x.Attributes[size_t(side)] & Attr::Directory) &&
                (x.Attributes[size_t(side)] & Attr::Unlisted))
                below = x.path(side) + u'/';
        }
    }
}

PlannedAction SyncPlanner::action(int row) const
{
    const CompareArray &rows = m_comparison.rows();
    if (row <= 0 || std::size_t(row) >= rows.size())
        return PlannedAction::None;
    const CompareEntry &x = rows[size_t(row)];
    if (isPairRootRow(x) || !x.Marked)
        return PlannedAction::None;
    const SyncOptions &o = m_run.options();
    const std::uint32_t both = x.Attributes[Side::Source] | x.Attributes[Side::Destination];
    const bool directory = (both & Attr::Directory) != 0;
    // Rows added since the pass (a list being rebuilt) lie below nothing known.
    const auto below = [&](Side side) {
        return size_t(row) < m_belowUnlisted.size() && ((m_belowUnlisted[size_t(row)] >> side) & 1);
    };
    const auto deleteOn = [](Side side) {
        return side == Side::Source ? PlannedAction::DeleteInSource
                                    : PlannedAction::DeleteInDestination;
    };
    const std::optional<Side> one = singleDirection(o);

    // Deletion first, as the run does it: Delete takes from the sending side what the receiving
    // side lacks, Mirror from the receiving side what the sending side lacks.
    if (one && (o.Delete || o.Mirror)) {
        const Side side = o.Delete ? *one : otherSide(*one);
        const Side other = otherSide(side);
        const bool deletable = onSide(x, side) && !onSide(x, other) &&
                               !m_comparison.isInUnlistedPair(row) && !below(other);
        if (deletable && (!directory || o.Mirror))
            return deleteOn(side);
    }
    if (directory)
        return PlannedAction::None;
    for (Side d : Sides) {
        if (!(d == Side::Source ? o.Src : o.Dest))
            continue;
        const Side r = otherSide(d);
        const std::int16_t sending = d == Side::Source ? ModifiedInSource : ModifiedInDestination;
        if (x.State != sending || x.lacks(d))
            continue;
        // With Delete only files both sides hold are copied: the rest was deleted above.
        if (o.Delete && one && x.lacks(r))
            continue;
        if (below(r) || (r == Side::Source && m_comparison.isInUnseenSource(row)))
            continue;
        return d == Side::Source ? PlannedAction::CopyToDestination : PlannedAction::CopyToSource;
    }
    return PlannedAction::None;
}

SyncPlan PlanSynchronize(const Engine &engine)
{
    SyncPlan plan;
    const SyncPlanner planner(engine.comparison(), engine.run());
    const CompareArray &rows = engine.comparison().rows();
    const SyncOptions &o = engine.run().options();
    const std::optional<Side> one = singleDirection(o);
    std::vector<int> held;
    const bool unattended = engine.DontAsk || !engine.ui().personPresent();
    if (one && (o.Delete || o.Mirror)) {
        const Side side = o.Delete ? *one : otherSide(*one);
        const QString limit = QString::number(engine.settings.MaxDeletePercent);
        for (const OversizedDeletion &d : FindOversizedDeletions(
                 engine.comparison(), engine.settings.MaxDeletePercent, side, 0)) {
            held.push_back(d.rootRow);
            plan.heldBack << engine.FormatMsg(
                830, {QString::number(d.deletions), QString::number(d.files), d.root, limit});
        }
    }
    int root = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const CompareEntry &x = rows[i];
        if (isPairRootRow(x))
            root = int(i);
        const PlannedAction a = planner.action(int(i));
        switch (a) {
        case PlannedAction::CopyToDestination:
        case PlannedAction::CopyToSource: {
            const Side d = a == PlannedAction::CopyToDestination ? Side::Source : Side::Destination;
            ++plan.copies[size_t(d)];
            plan.bytes[size_t(d)] += x.FullSize[size_t(d)];
            if (!x.lacks(otherSide(d)))
                ++plan.replaces[size_t(d)];
            break;
        }
        case PlannedAction::DeleteInSource:
        case PlannedAction::DeleteInDestination: {
            // Unattended, the guard holds these back; a person is asked and may let them go.
            if (unattended && std::find(held.begin(), held.end(), root) != held.end())
                break;
            const Side side = a == PlannedAction::DeleteInSource ? Side::Source : Side::Destination;
            const bool directory = ((x.Attributes[Side::Source] | x.Attributes[Side::Destination]) &
                                    Attr::Directory) != 0;
            ++(directory ? plan.folderRemovals : plan.deletions)[size_t(side)];
            break;
        }
        case PlannedAction::None:
            break;
        }
    }
    return plan;
}

QString DescribePlan(const Engine &engine, const SyncPlan &plan)
{
    const QLocale locale;
    QStringList lines = plan.heldBack;
    const std::array<int, 2> copyKeys{831, 832};
    for (Side d : Sides) {
        if (plan.copies[size_t(d)] == 0)
            continue;
        lines << engine.FormatMsg(copyKeys[size_t(d)],
                                  {QString::number(plan.copies[size_t(d)]),
                                   locale.formattedDataSize(plan.bytes[size_t(d)]),
                                   QString::number(plan.replaces[size_t(d)])});
    }
    const std::array<int, 2> deleteKeys{833, 834};
    for (Side side : Sides) {
        if (plan.deletions[size_t(side)] + plan.folderRemovals[size_t(side)] == 0)
            continue;
        lines << engine.FormatMsg(deleteKeys[size_t(side)],
                                  {QString::number(plan.deletions[size_t(side)]),
                                   QString::number(plan.folderRemovals[size_t(side)])});
    }
    if (lines.size() == plan.heldBack.size())
        lines << engine.FormatMsg(835);
    const bool losesFiles =
        plan.replaces[0] + plan.replaces[1] + plan.deletions[0] + plan.deletions[1] > 0;
    if (losesFiles)
        lines << keptWhere(engine);
    return lines.join(u"\r\n");
}

QString PlanNumbers(const SyncPlan &p)
{
    return QStringLiteral("to destination %1 files (%2 bytes, %3 replacing); to source %4 files "
                          "(%5 bytes, %6 replacing); deleted in source %7 files and %8 folders, "
                          "in destination %9 files and %10 folders")
        .arg(p.copies[0])
        .arg(p.bytes[0])
        .arg(p.replaces[0])
        .arg(p.copies[1])
        .arg(p.bytes[1])
        .arg(p.replaces[1])
        .arg(p.deletions[0])
        .arg(p.folderRemovals[0])
        .arg(p.deletions[1])
        .arg(p.folderRemovals[1]);
}

SyncPlan DoneAsPlan(const SyncStats &s)
{
    SyncPlan done;
    done.copies = s.copies;
    done.bytes = s.bytes;
    done.replaces = s.replaces;
    done.deletions = s.deletions;
    done.folderRemovals = s.folderRemovals;
    return done;
}

} // namespace duomir

#include "core/deleteentries.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "core/comparison.h"
#include "core/errorlog.h"
#include "core/platform/fileops.h"
#include "core/syncpaths.h"
#include "core/syncrun.h"
#include "core/walkplaces.h"

namespace duomir {

namespace {

// Deletes files of one side, each below its pair's root and only while it is as the comparison
// saw it. A folder that is no longer the one seen (a link now, or gone) is reported once and
// nothing below it is touched.
class DeleteWalk
{
public:
    DeleteWalk(const Comparison &comparison, SyncRun &run, Reporter &reporter, Side side)
        : m_comparison(comparison), m_run(run), m_reporter(reporter), m_side(side)
    {}
    ~DeleteWalk() { m_run.fileOps().walkEnded(); }
    DeleteWalk(const DeleteWalk &) = delete;
    DeleteWalk &operator=(const DeleteWalk &) = delete;

    void enterPair(int rootRow)
    {
        m_places.enter(m_comparison, rootRow);
        m_folders.reset();
        const std::vector<int> &held = m_run.refusedRoots();
        m_held = std::find(held.begin(), held.end(), rootRow) != held.end();
    }
    TreePath place(const QString &full) const { return m_places.place(m_side, full); }
    void deleteFile(int index);
    bool held() const { return m_held; }

private:
    const Comparison &m_comparison;
    SyncRun &m_run;
    Reporter &m_reporter;
    Side m_side;
    PairPlaces m_places;
    bool m_held = false; // the deletion guard held this pair back
    FolderGate m_folders;
};

void DeleteWalk::deleteFile(int index)
{
    const CompareEntry &x = m_comparison.row(index);
    if (m_held || m_folders.isBlocked(x.path(m_side)))
        return;
    const QString folder = withoutTrailingSeparator(x.path(m_side));
    if (const OpResult there = m_folders.check(m_run.fileOps(), folder, place(folder));
        !there.ok()) {
        m_reporter.report(there, What::RemoveDirectory, m_side, index);
        return;
    }
    const TreePath file = place(x.path(m_side) + x.name(m_side));
    if (x.Attributes[m_side] & Attr::ReadOnly)
        m_reporter.report(m_run.fileOps().clearReadOnly(file), What::ClearReadOnlyForDelete, m_side,
                          index);
    const OpResult result = m_run.fileOps().removeFile(file, m_comparison.seen(x, m_side));
    if (result.ok()) {
        ++m_run.stats().filesDeleted;
        ++m_run.stats().deletions[size_t(m_side)];
        m_reporter.logAction(QStringLiteral("delete"), What::DeleteFile, m_side, index);
    }
    m_reporter.report(result, What::DeleteFile, m_side, index);
}

} // namespace

void DeleteEntries(const Comparison &comparison, SyncRun &run, Reporter &reporter, Side side,
                   int start, DeleteModes mode)
{
    const CompareArray &rows = comparison.rows();
    if (rows.size() < 2)
        return;
    const int first = std::max(start, 1);
    const CompareEntry &e = rows[size_t(first)];
    // Against an unlisted source every destination file looks missing there: a pair in that
    // state deletes nothing, whichever side was asked for.
    if (start > 0 && comparison.isInUnlistedPair(first))
        return;
    // Below a folder of the other side that could not be read, nothing is known to be missing.
    if (start > 0 && mode.testFlag(DeleteMode::OnlyMissingOnOtherSide) &&
        comparison.isBelowUnlisted(first, otherSide(side)))
        return;
    DeleteWalk walk(comparison, run, reporter, side);
    walk.enterPair(pairRootRow(rows, first));
    if (start > 0 && !e.isDirectory()) {
        // Synchronizing one file with Delete must not delete it when the other side has it: the
        // copy that follows would then have nothing to send, and the newer file would be gone.
        const bool onOtherSide = !e.lacks(otherSide(side));
        if (!e.lacks(side) && !(mode.testFlag(DeleteMode::OnlyMissingOnOtherSide) && onOtherSide))
            walk.deleteFile(first);
        return;
    }

    const qsizetype depth = separatorCount(e.path(side));
    // Only an already empty directory goes; "not empty" stays silent. A whole-list run (start 0)
    // never removes the pair's root itself: an empty root is still the place the pair names.
    if (start > 0 && !walk.held())
        reporter.report(run.fileOps().removeDirectory(walk.place(e.path(side))),
                        What::RemoveDirectory, side, first);

    const int last = int(rows.size()) - 1;
    const Side other = otherSide(side);
    // Below a directory whose other side could not be read, "missing on the other side" only
    // means "not seen": such files are kept.
    QString unseenBelow;
    // The depth alone would not stop at the next pair's root when that lies deeper.
    const QString inside = start > 0 ? insidePrefix(e.path(side)) : QString();
    const QString folder = withoutTrailingSeparator(e.path(side));
    std::vector<int> emptied; // folders the other side lacks, to go when empty
    for (int i = std::max(start + 1, 2); i <= last; ++i) {
        const CompareEntry &x = rows[size_t(i)];
        const InFolder where = inFolder(x.path(side), folder, inside);
        if (where == InFolder::Past)
            break;
        if (where == InFolder::Twin)
            continue;
        if (isPairRootRow(x))
            walk.enterPair(i);
        if (x.Attributes[side] & Attr::Directory) {
            if (start >= 1 && separatorCount(x.path(side)) <= depth)
                break;
            if (!unseenBelow.isEmpty() && !x.path(side).startsWith(unseenBelow))
                unseenBelow.clear();
            if (unseenBelow.isEmpty() && mode.testFlag(DeleteMode::OnlyMissingOnOtherSide) &&
                (x.Attributes[other] & Attr::Unlisted))
                unseenBelow = x.path(side) + u'/';
            const bool unseen = !unseenBelow.isEmpty() && x.path(side).startsWith(unseenBelow);
            if (mode.testFlag(DeleteMode::EmptiedFolders) && !unseen && x.Marked && !walk.held() &&
                !x.lacks(side) && x.lacks(other) && !comparison.isInUnlistedPair(i))
                emptied.push_back(i);
            continue;
        }
        if (!unseenBelow.isEmpty() && x.path(side).startsWith(unseenBelow))
            continue;
        if (x.lacks(side) || !x.Marked || comparison.isInUnlistedPair(i))
            continue;
        if (mode.testFlag(DeleteMode::OnlyMissingOnOtherSide) && !x.lacks(other))
            continue;
        walk.deleteFile(i);
    }
    // Deepest first: a folder's subfolders come after it in the list.
    for (auto it = emptied.rbegin(); it != emptied.rend(); ++it) {
        const CompareEntry &x = rows[size_t(*it)];
        walk.enterPair(pairRootRow(rows, *it));
        const OpResult r = run.fileOps().removeDirectory(walk.place(x.path(side)));
        if (r.error == ENOTEMPTY || r.error == EEXIST)
            continue;
        if (r.ok()) {
            ++run.stats().folderRemovals[size_t(side)];
            reporter.logAction(QStringLiteral("remove-folder"), What::RemoveDirectory, side, *it);
        }
        reporter.report(r, What::RemoveDirectory, side, *it);
    }
}

} // namespace duomir

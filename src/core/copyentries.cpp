#include "core/copyentries.h"

#include <array>
#include <cerrno>

#include "base/interaction.h"
#include "core/comparison.h"
#include "core/copypipeline.h"
#include "core/errorlog.h"
#include "core/platform/fileops.h"
#include "core/syncpaths.h"
#include "core/syncrun.h"
#include "core/walkplaces.h"

namespace duomir {

namespace {

class CopyWalk
{
public:
    CopyWalk(const Comparison &comparison, SyncRun &run, Reporter &reporter, Side d, CopyModes mode)
        : m_comparison(comparison), m_run(run), m_reporter(reporter), m_ops(run.fileOps()), m_d(d),
          m_r(otherSide(d)), m_mode(mode), m_counting(mode.testFlag(CopyMode::CountOnly)),
          m_pipeline(m_ops, run.cancelFlag(), hooks(), reporter.asks())
    {}

    void singleFile(int index);
    // Nothing goes into a source folder whose files could not be seen.
    bool receivingUnseen(int index) const
    {
        return m_r == Side::Source && m_comparison.isInUnseenSource(index);
    }
    void tree(int start);
    void finish() { m_pipeline.finish(); }
    // Temporary files of killed runs on the receiving side go before new ones are made.
    void removeLeftovers();

private:
    std::int16_t sendingState() const
    {
        return m_d == Side::Source ? ModifiedInSource : ModifiedInDestination;
    }
    // A directly selected file with IgnoreState is copied even when unmarked; in a subtree only
    // the marked files are.
    bool qualifies(const CompareEntry &x, bool selected) const
    {
        if (!x.Marked && !(selected && m_mode.testFlag(CopyMode::IgnoreState)))
            return false;
        if (x.State != sendingState() && !m_mode.testFlag(CopyMode::IgnoreState))
            return false;
        if (x.lacks(m_r) && m_mode.testFlag(CopyMode::ReceivingDecides))
            return false;
        return !x.lacks(m_d);
    }
    const CompareEntry &entry(int index) const { return m_comparison.row(index); }
    void enterPair(int rootRow) { m_places.enter(m_comparison, rootRow); }
    TreePath place(Side side, const QString &full) const { return m_places.place(side, full); }
    bool makeReceivingDirectory(int index, const QString &receiving, const QString &sending);
    // Whether the receiving folder of row `index` may be written to; a folder that is no longer
    // the one the comparison saw is reported once and its subtree left alone.
    bool receivingFolderUsable(int index);
    void countOrCopy(int index);
    CopyPipeline::Hooks hooks();
    void report(const CopyStep &step);

    const Comparison &m_comparison;
    SyncRun &m_run;
    Reporter &m_reporter;
    FileOps &m_ops;
    Side m_d;
    Side m_r;
    CopyModes m_mode;
    bool m_counting;
    PairPlaces m_places;
    // Below a receiving folder that could not be made or reached, nothing is copied.
    FolderGate m_receiving;
    CopyPipeline m_pipeline;
};

void CopyWalk::singleFile(int index)
{
    const CompareEntry &e = entry(index);
    // A file under the mouse goes only the way the tree walk would send it (or either way for a
    // selected copy): synchronizing one file both ways must not put the older side over the newer.
    if (!qualifies(e, true) || receivingUnseen(index) || m_comparison.isBelowUnlisted(index, m_r))
        return;
    enterPair(pairRootRow(m_comparison.rows(), index));
    if (!m_counting) {
        const OpResult there = m_ops.checkDirectory(place(m_r, e.path(m_r)));
        if (there.error == ENOENT) {
            if (!makeReceivingDirectory(index, e.path(m_r), e.path(m_d)))
                return;
        } else if (!there.ok()) {
            m_pipeline.add(What::MakeDirectory, index, there);
            return;
        }
        m_receiving.passed(withoutTrailingSeparator(e.path(m_r)));
    }
    countOrCopy(index);
}

void CopyWalk::tree(int start)
{
    const int first = std::max(start, 1);
    if (start > 0 && m_comparison.isBelowUnlisted(first, m_r))
        return;
    const qsizetype depth = separatorCount(entry(first).path(m_d));
    // The depth alone would not stop at the next pair's root when that lies deeper.
    const QString inside = start > 0 ? insidePrefix(entry(first).path(m_d)) : QString();
    const QString folder = withoutTrailingSeparator(entry(first).path(m_d));
    const int last = m_comparison.lastRow();
    enterPair(pairRootRow(m_comparison.rows(), first));
    if (start == 0 && !m_counting)
        removeLeftovers();

    // Below a receiving directory that could not be listed, a file that looks absent may be
    // there after all (and newer): nothing is copied into such a directory.
    QString unseenBelow;
    for (int i = first; i <= last; ++i) {
        if (m_run.cancelled())
            return;
        const CompareEntry &x = entry(i);
        if (i > start) {
            const InFolder where = inFolder(x.path(m_d), folder, inside);
            if (where == InFolder::Past)
                return;
            if (where == InFolder::Twin)
                continue;
        }
        if (isPairRootRow(x)) {
            enterPair(i);
            m_receiving.reset();
        }
        if (receivingUnseen(i) || m_receiving.isBlocked(x.path(m_r)))
            continue;
        if (!unseenBelow.isEmpty() && !x.path(m_r).startsWith(unseenBelow))
            unseenBelow.clear();
        if (x.Attributes[m_d] & Attr::Directory) {
            if (start > 0 && i > start && separatorCount(x.path(m_d)) <= depth)
                return;
            if (unseenBelow.isEmpty() && !x.lacks(m_r) && (x.Attributes[m_r] & Attr::Unlisted))
                unseenBelow = x.path(m_r) + u'/';
            // Nothing is made inside a receiving folder that could not be listed either.
            const bool unseen = !unseenBelow.isEmpty() && x.path(m_r).startsWith(unseenBelow);
            if (!m_mode.testFlag(CopyMode::ReceivingDecides) && x.State == sendingState() &&
                x.Marked && !m_counting && !unseen)
                makeReceivingDirectory(i, x.path(m_r), x.path(m_d));
            continue;
        }
        if (!unseenBelow.isEmpty() || !qualifies(x, false))
            continue;
        if (!m_counting && !receivingFolderUsable(i))
            continue;
        countOrCopy(i);
    }
}

void CopyWalk::removeLeftovers()
{
    for (const Comparison::Leftover &l : m_comparison.leftovers()) {
        if (l.side != m_r)
            continue;
        PairPlaces places;
        places.enter(m_comparison, l.rootRow);
        const TreePath leftover = places.place(m_r, l.path);
        // Every file removed without a row of its own is named in the log.
        if (m_ops.removeLeftover(leftover).ok())
            m_reporter.writeLine(
                {QStringLiteral("remove-leftover"), QString(), QString(), leftover.full()});
    }
}

bool CopyWalk::makeReceivingDirectory(int index, const QString &receiving, const QString &sending)
{
    const OpResult made = m_ops.makeDirectory(place(m_r, receiving), place(m_d, sending));
    m_pipeline.add(What::MakeDirectory, index, made);
    if (!made.ok())
        m_receiving.block(receiving);
    return made.ok();
}

bool CopyWalk::receivingFolderUsable(int index)
{
    const QString folder = withoutTrailingSeparator(entry(index).path(m_r));
    const OpResult there = m_receiving.check(m_ops, folder, place(m_r, folder));
    if (!there.ok())
        m_pipeline.add(What::MakeDirectory, index, there);
    return there.ok();
}

void CopyWalk::countOrCopy(int index)
{
    if (m_counting) {
        m_run.addBytes(entry(index).FullSize[m_d]);
        return;
    }
    const CompareEntry &e = entry(index);
    // A file present on both sides is replaced under its own receiving name (a.txt paired with
    // A.TXT replaces A.TXT, as a case-blind file system would); a new file takes the sending name.
    const bool replaces = !e.lacks(m_r);
    const QString &receivingName = replaces ? e.name(m_r) : e.name(m_d);
    CopyStep step;
    step.what = What::Copy;
    step.index = index;
    step.from = place(m_d, e.path(m_d) + e.name(m_d));
    step.to = place(m_r, e.path(m_r) + receivingName);
    step.fromSeen = m_comparison.seen(e, m_d);
    if (replaces)
        step.toSeen = m_comparison.seen(e, m_r);
    step.size = e.FullSize[m_d];
    step.clearWhat =
        replaces && (e.Attributes[m_r] & Attr::ReadOnly) ? What::ClearReadOnlyForCopy : 0;
    m_pipeline.copy(std::move(step));
}

CopyPipeline::Hooks CopyWalk::hooks()
{
    ProgressModel &progress = m_run.progress();
    Interaction &ui = m_reporter.ui();
    return {
        .started =
            [this, &progress, &ui](const CopyStep &step) {
                if (!progress.isVisible())
                    return;
                const CompareEntry &e = entry(step.index);
                progress.ShowFile(e.path(m_d), e.path(m_r), e.name(m_d));
                ui.yieldEvents();
            },
        .progress =
            [&progress, &ui](std::int64_t total, std::int64_t done) {
                if (progress.isVisible())
                    progress.Update(total, done);
                ui.yieldEvents(); // lets Cancel be pressed
            },
        .yield = [&ui] { ui.yieldEvents(); },
        .finished = [this](const CopyStep &step) { report(step); },
    };
}

void CopyWalk::report(const CopyStep &step)
{
    if (step.what == What::MakeDirectory && step.result.ok()) {
        ++m_run.stats().directoriesCreated;
        m_reporter.logAction(QStringLiteral("mkdir"), What::MakeDirectory, m_d, step.index);
    }
    if (step.what == What::Copy && step.result.ok()) {
        SyncStats &stats = m_run.stats();
        ++stats.filesCopied;
        stats.bytesCopied += step.size;
        ++stats.copies[size_t(m_d)];
        stats.bytes[size_t(m_d)] += step.size;
        stats.replaces[size_t(m_d)] += step.toSeen ? 1 : 0;
        m_reporter.logAction(step.toSeen ? QStringLiteral("replace") : QStringLiteral("copy"),
                             What::Copy, m_d, step.index);
    }
    m_reporter.report(step.result, step.what, m_d, step.index);
    if (step.what == What::Copy && m_run.progress().isVisible())
        m_run.progress().FileDone(step.size);
}

} // namespace

void CopyEntries(const Comparison &comparison, SyncRun &run, Reporter &reporter, Side d, int start,
                 CopyModes mode)
{
    if (comparison.lastRow() < 1)
        return;
    const int first = std::max(start, 1);
    // Start 0 is always the whole list, even when the first pair's root is not a directory.
    const bool single = start > 0 && !comparison.row(first).isDirectory();
    CopyWalk walk(comparison, run, reporter, d, mode);
    if (single)
        walk.singleFile(first);
    else
        walk.tree(start);
    walk.finish();
    run.fileOps().walkEnded();
}

} // namespace duomir

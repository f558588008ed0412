#include "core/copyentries.h"

#include "core/copypipeline.h"
#include "core/engine.h"
#include "core/errorlog.h"
#include "core/interaction.h"
#include "core/platform/fileops.h"
#include "core/syncpaths.h"

namespace duomir {

namespace {

class CopyWalk
{
public:
    CopyWalk(Engine &engine, int d, int mode)
        : m_engine(engine), m_ops(*engine.fileOps), m_d(d), m_r(d ^ 1), m_mode(mode),
          m_counting((mode & CopyMode::CountOnly) != 0),
          m_pipeline(m_ops, engine.CancelFlag, hooks(), !engine.DontAsk)
    {}

    void singleFile(int index);
    // Nothing goes into a source folder whose files could not be seen.
    bool receivingUnseen(int index) const { return m_r == 0 && m_engine.isInUnseenSource(index); }
    void tree(int start);
    void finish() { m_pipeline.finish(); }

private:
    std::int16_t sendingState() const
    {
        return m_d == 0 ? ModifiedInSource : ModifiedInDestination;
    }
    // A directly selected file with IgnoreState is copied even when unmarked; in a subtree only
    // the marked files are.
    bool qualifies(const CompareEntry &x, bool selected) const
    {
        if (!x.Marked && !(selected && (m_mode & CopyMode::IgnoreState)))
            return false;
        if (x.State != sendingState() && !(m_mode & CopyMode::IgnoreState))
            return false;
        if (x.Name[m_r].isEmpty() && (m_mode & CopyMode::ReceivingDecides))
            return false;
        return !x.Name[m_d].isEmpty();
    }
    const CompareEntry &entry(int index) const { return m_engine.CompareResults[size_t(index)]; }
    void makeReceivingDirectory(int index, const QString &receiving, const QString &sending);
    void countOrCopy(int index);
    CopyPipeline::Hooks hooks();
    void report(const CopyStep &step);

    Engine &m_engine;
    FileOps &m_ops;
    int m_d;
    int m_r;
    int m_mode;
    bool m_counting;
    CopyPipeline m_pipeline;
};

void CopyWalk::singleFile(int index)
{
    const CompareEntry &e = entry(index);
    // A file under the mouse goes only the way the tree walk would send it (or either way for a
    // selected copy): synchronizing one file both ways must not put the older side over the newer.
    if (!qualifies(e, true) || receivingUnseen(index) || m_engine.isBelowUnlisted(index, m_r))
        return;
    if (!m_counting && !m_ops.directoryExists(withoutTrailingSeparator(e.Path[m_r])))
        makeReceivingDirectory(index, e.Path[m_r], e.Path[m_d]);
    countOrCopy(index);
}

void CopyWalk::tree(int start)
{
    const int first = std::max(start, 1);
    if (start > 0 && m_engine.isBelowUnlisted(first, m_r))
        return;
    const qsizetype depth = separatorCount(entry(first).Path[m_d]);
    // The depth alone would not stop at the next pair's root when that lies deeper.
    const QString inside = start > 0 ? insidePrefix(entry(first).Path[m_d]) : QString();
    const int last = int(m_engine.CompareResults.size()) - 1;

    // Below a receiving directory that could not be listed, a file that looks absent may be
    // there after all (and newer): nothing is copied into such a directory.
    QString unseenBelow;
    for (int i = first; i <= last; ++i) {
        if (m_engine.CancelFlag)
            return;
        const CompareEntry &x = entry(i);
        if (i > start && !liesInside(x.Path[m_d], inside))
            return;
        if (receivingUnseen(i))
            continue;
        if (!unseenBelow.isEmpty() && !x.Path[m_r].startsWith(unseenBelow))
            unseenBelow.clear();
        if (x.Attributes[m_d] & Attr::Directory) {
            if (start > 0 && i > start && separatorCount(x.Path[m_d]) <= depth)
                return;
            if (unseenBelow.isEmpty() && !x.Name[m_r].isEmpty() &&
                (x.Attributes[m_r] & Attr::Unlisted))
                unseenBelow = x.Path[m_r] + u'/';
            if (!(m_mode & CopyMode::ReceivingDecides) && x.State == sendingState() && x.Marked &&
                !m_counting)
                makeReceivingDirectory(i, x.Path[m_r], x.Path[m_d]);
            continue;
        }
        if (!unseenBelow.isEmpty() || !qualifies(x, false))
            continue;
        countOrCopy(i);
    }
}

void CopyWalk::makeReceivingDirectory(int index, const QString &receiving, const QString &sending)
{
    m_pipeline.add(What::MakeDirectory, index,
                   m_ops.makeDirectory(withoutTrailingSeparator(receiving),
                                       withoutTrailingSeparator(sending)));
}

void CopyWalk::countOrCopy(int index)
{
    if (m_counting) {
        m_engine.ByteTotal += entry(index).FullSize[m_d];
        return;
    }
    const CompareEntry &e = entry(index);
    // A file present on both sides is replaced under its own receiving name (a.txt paired with
    // A.TXT replaces A.TXT, as a case-blind file system would); a new file takes the sending name.
    const bool replaces = !e.Name[m_r].isEmpty();
    const QString &receivingName = replaces ? e.Name[m_r] : e.Name[m_d];
    const int clearWhat =
        replaces && (e.Attributes[m_r] & Attr::ReadOnly) ? What::ClearReadOnlyForCopy : 0;
    m_pipeline.copy(What::Copy, index, e.Path[m_d] + e.Name[m_d], e.Path[m_r] + receivingName,
                    e.FullSize[m_d], clearWhat);
}

CopyPipeline::Hooks CopyWalk::hooks()
{
    ProgressModel &progress = m_engine.progress;
    Interaction &ui = m_engine.ui();
    return {
        .started =
            [this, &progress, &ui](const CopyStep &step) {
                if (!progress.isVisible())
                    return;
                const CompareEntry &e = entry(step.index);
                progress.ShowFile(e.Path[m_d], e.Path[m_r], e.Name[m_d]);
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
    if (step.what == What::MakeDirectory && step.result.ok())
        ++m_engine.syncStats.directoriesCreated;
    if (step.what == What::Copy && step.result.ok()) {
        ++m_engine.syncStats.filesCopied;
        m_engine.syncStats.bytesCopied += step.size;
    }
    ReportResult(m_engine, step.result, step.what, m_d, step.index);
    if (step.what == What::Copy && !m_engine.DontAsk)
        m_engine.progress.FileDone(step.size);
}

} // namespace

void CopyEntries(Engine &engine, int d, int start, int mode)
{
    if (engine.CompareResults.size() < 2)
        return;
    const int first = std::max(start, 1);
    // Start 0 is always the whole list, even when the first pair's root is not a directory.
    const bool single = start > 0 && !engine.CompareResults[size_t(first)].isDirectory();
    CopyWalk walk(engine, d, mode);
    if (single)
        walk.singleFile(first);
    else
        walk.tree(start);
    walk.finish();
}

} // namespace duomir

#include "core/deleteentries.h"

#include "core/engine.h"
#include "core/errorlog.h"
#include "core/platform/fileops.h"
#include "core/syncpaths.h"

namespace duomir {

namespace {

void deleteFile(Engine &engine, int side, int index)
{
    const CompareEntry &x = engine.CompareResults[size_t(index)];
    const QString file = x.Path[side] + x.Name[side];
    if (x.Attributes[side] & Attr::ReadOnly)
        ReportResult(engine, engine.fileOps->clearReadOnly(file), What::ClearReadOnlyForDelete,
                     side, index);
    const OpResult result = engine.fileOps->removeFile(file);
    if (result.ok())
        ++engine.syncStats.filesDeleted;
    ReportResult(engine, result, What::DeleteFile, side, index);
}

} // namespace

void DeleteEntries(Engine &engine, int side, int start, int mode)
{
    const CompareArray &rows = engine.CompareResults;
    if (rows.size() < 2)
        return;
    const int first = std::max(start, 1);
    const CompareEntry &e = rows[size_t(first)];
    // Against an unlisted source every destination file looks missing there: a pair in that
    // state deletes nothing, whichever side was asked for.
    if (start > 0 && engine.isInUnlistedPair(first))
        return;
    // Below a folder of the other side that could not be read, nothing is known to be missing.
    if (start > 0 && (mode & DeleteMode::OnlyMissingOnOtherSide) &&
        engine.isBelowUnlisted(first, side ^ 1))
        return;
    if (start > 0 && !e.isDirectory()) {
        // Synchronizing one file with Delete must not delete it when the other side has it: the
        // copy that follows would then have nothing to send, and the newer file would be gone.
        const bool onOtherSide = !e.Name[side ^ 1].isEmpty();
        if (!e.Name[side].isEmpty() &&
            !((mode & DeleteMode::OnlyMissingOnOtherSide) && onOtherSide))
            deleteFile(engine, side, first);
        return;
    }

    const qsizetype depth = separatorCount(e.Path[side]);
    // Only an already empty directory goes; "not empty" stays silent. A whole-list run (start 0)
    // never removes the pair's root itself: an empty root is still the place the pair names.
    if (start > 0)
        ReportResult(engine,
                     engine.fileOps->removeDirectory(withoutTrailingSeparator(e.Path[side])),
                     What::RemoveDirectory, side, first);

    const int last = int(rows.size()) - 1;
    const int other = side ^ 1;
    // Below a directory whose other side could not be read, "missing on the other side" only
    // means "not seen": such files are kept.
    QString unseenBelow;
    // The depth alone would not stop at the next pair's root when that lies deeper.
    const QString inside = start > 0 ? insidePrefix(e.Path[side]) : QString();
    for (int i = std::max(start + 1, 2); i <= last; ++i) {
        const CompareEntry &x = rows[size_t(i)];
        if (!liesInside(x.Path[side], inside))
            return;
        if (x.Attributes[side] & Attr::Directory) {
            if (start >= 1 && separatorCount(x.Path[side]) <= depth)
                return;
            if (!unseenBelow.isEmpty() && !x.Path[side].startsWith(unseenBelow))
                unseenBelow.clear();
            if (unseenBelow.isEmpty() && (mode & DeleteMode::OnlyMissingOnOtherSide) &&
                (x.Attributes[other] & Attr::Unlisted))
                unseenBelow = x.Path[side] + u'/';
            continue;
        }
        if (!unseenBelow.isEmpty() && x.Path[side].startsWith(unseenBelow))
            continue;
        if (x.Name[side].isEmpty() || !x.Marked || engine.isInUnlistedPair(i))
            continue;
        if ((mode & DeleteMode::OnlyMissingOnOtherSide) && !x.Name[other].isEmpty())
            continue;
        deleteFile(engine, side, i);
    }
}

} // namespace duomir

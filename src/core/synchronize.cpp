#include "core/synchronize.h"

#include "base/interaction.h"
#include "core/copyentries.h"
#include "core/deleteentries.h"
#include "core/deletionguard.h"
#include "core/engine.h"
#include "core/errorlog.h"
#include "core/exitstatus.h"
#include "core/syncplan.h"
#include "core/versioning.h"

namespace duomir {

namespace {

bool refuse(Engine &engine, int key)
{
    if (!engine.DontAsk)
        engine.ui().message(Interaction::Icon::Information, Interaction::Buttons::Ok,
                            engine.FormatMsg(key, {engine.ProfilePath}));
    return false;
}

void writeRunLine(Engine &engine, const QString &what, int startEntry)
{
    const CompareArray &rows = engine.comparison().rows();
    // Element 0 holds no paths; a whole-list run names the first pair's directories instead.
    std::size_t index = std::size_t(startEntry) < rows.size() ? std::size_t(startEntry) : 0;
    if (index == 0 && rows[0].path(Side::Source).isEmpty() && rows.size() > 1)
        index = 1;
    const CompareEntry &e = rows[index];
    QVariantList fields{what, engine.ProfilePath, e.path(Side::Source), e.path(Side::Destination)};
    // With every change logged, the end of a run says what it came to.
    if (engine.settings.LogActions && what == u"End") {
        const SyncStats &s = engine.run().stats();
        fields << QStringLiteral("copied %1 files (%2 bytes), created %3 folders, deleted %4 "
                                 "files, %5 failures")
                      .arg(s.filesCopied)
                      .arg(s.bytesCopied)
                      .arg(s.directoriesCreated)
                      .arg(s.filesDeleted)
                      .arg(s.failures)
               << PlanNumbers(DoneAsPlan(engine.run().stats()));
    }
    engine.reporter().writeLine(fields);
}

// The walks over the engine's comparison, with its run and its reporter.
void copyWalk(Engine &engine, Side d, int startEntry, CopyModes mode)
{
    CopyEntries(engine.comparison(), engine.run(), engine.reporter(), d, startEntry, mode);
}

void deleteWalk(Engine &engine, Side side, int startEntry, DeleteModes mode)
{
    DeleteEntries(engine.comparison(), engine.run(), engine.reporter(), side, startEntry, mode);
}

void endRun(Engine &engine)
{
    engine.ui().setInputEnabled(true);
    engine.run().progress().Hide();
}

} // namespace

bool Synchronize(Engine &engine, int startEntry)
{
    const SyncOptions &o = engine.run().options();
    const auto &counter = engine.comparison().counters();
    if (!o.Src && !o.Dest)
        return refuse(engine, 808);
    if (counter[0] == 0 && counter[2] == 0)
        return refuse(engine, 809);
    // A mirror has work where the receiving side holds more, even with nothing to send.
    const bool mirrorWork = o.Mirror && o.Src != o.Dest && counter[o.Src ? 2 : 0] > 0;
    if (((!o.Src && counter[2] == 0) || (!o.Dest && counter[0] == 0)) && !mirrorWork)
        return refuse(engine, 810);

    writeRunLine(engine, QStringLiteral("Start"), startEntry);
    engine.run().begin();
    engine.ui().setInputEnabled(false);
    BeginKeeping(engine, startEntry);

    const bool oneWay = o.Src != o.Dest && !o.Reverse;
    if (oneWay && o.Delete) {
        const Side sending = o.Src ? Side::Source : Side::Destination;
        GuardDeletions(engine, sending, startEntry);
        deleteWalk(engine, sending, startEntry, DeleteMode::OnlyMissingOnOtherSide);
        engine.run().refusedRoots().clear(); // the list's own Delete command is not guarded
    } else if (oneWay && o.Mirror) {
        // The receiving side loses what the sending side lacks, then takes every copy: it ends
        // as the sending side is.
        const Side receiving = o.Src ? Side::Destination : Side::Source;
        GuardDeletions(engine, receiving, startEntry, true);
        deleteWalk(engine, receiving, startEntry,
                   DeleteMode::OnlyMissingOnOtherSide | DeleteMode::EmptiedFolders);
        engine.run().refusedRoots().clear();
    }

    const CopyModes receivingDecides =
        oneWay && o.Delete ? CopyModes(CopyMode::ReceivingDecides) : CopyModes();
    if (o.Src)
        copyWalk(engine, Side::Source, startEntry, CopyMode::CountOnly | receivingDecides);
    if (o.Dest)
        copyWalk(engine, Side::Destination, startEntry, CopyMode::CountOnly | receivingDecides);
    if (!engine.DontAsk || engine.ProgressWhenUnattended)
        engine.run().progress().Init(engine.run().byteTotal());
    if (o.Src)
        copyWalk(engine, Side::Source, startEntry, receivingDecides);
    if (o.Dest)
        copyWalk(engine, Side::Destination, startEntry, receivingDecides);

    endRun(engine);
    writeRunLine(engine, QStringLiteral("End"), startEntry);
    return true;
}

void CopySelected(Engine &engine, Side d, int startEntry)
{
    engine.run().begin();
    BeginKeeping(engine, startEntry);
    copyWalk(engine, d, startEntry, CopyMode::CountOnly | CopyMode::IgnoreState);
    engine.ui().setInputEnabled(false);
    if (!engine.DontAsk || engine.ProgressWhenUnattended)
        engine.run().progress().Init(engine.run().byteTotal());
    copyWalk(engine, d, startEntry, CopyMode::IgnoreState);
    endRun(engine);
}

ExitStatus RunExitStatus(const Engine &engine)
{
    if (engine.UnlistedRootsSeen > 0)
        return ExitNoRoot;
    if (engine.ProfileUnreadable)
        return ExitUsage;
    if (engine.DeletionsRefused > 0)
        return ExitDeletionRefused;
    if (engine.run().stats().failures > 0 || engine.run().cancelled())
        return ExitFailures;
    return ExitOk;
}

} // namespace duomir

#include <QDir>
#include <QFileInfo>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <unistd.h>

#include "base/cancelsignals.h"
#include "base/nativename.h"
#include "cli/cliinteraction.h"
#include "cli/clisetup.h"
#include "cli/commands.h"
#include "cli/dryrunfileops.h"
#include "cli/pairoptions.h"
#include "cli/progressline.h"
#include "core/comparecommand.h"
#include "core/engine.h"
#include "core/platform/posixfileops.h"
#include "core/profilefile.h"
#include "core/synchronize.h"
#include "core/syncplan.h"

namespace duomir::cli {

namespace {

const char *const syncUsage =
    R"(Usage: duomir-cli sync PROFILE | --source DIR --destination DIR [pair options] [options]

Compares, copies the newer files (and, with --delete, deletes on the sending side what the
receiving side lacks), compares again and prints a summary. Never asks: failures go to standard
error and, when logging is on, to the day's log; the run always goes on.

Options:
  --direction both|to-destination|to-source   which way files go (default: the profile's
                directions, both for --source/--destination)
  --delete      with exactly one direction: delete on the sending side the files that the
                receiving side lacks, and copy only files present on both sides (a profile's
                Delete does the same; --no-delete turns it off for this run)
  --mirror      with exactly one direction: delete on the receiving side the files and emptied
                folders that the sending side lacks, then copy, so that the receiving side ends
                as a copy of the sending side (a profile's Mirror does the same)
  --no-delete   neither delete nor mirror, whatever the profile says
  --create-destination, --mkdir  create a missing destination directory whose parent exists
                (without it a missing root ends the run before anything is compared)
  --max-delete PERCENT  hold a pair's deletion back when it would remove more than PERCENT of
                its files, or when the receiving side is empty (default: the setting
                MaxDeletePercent, 50; 100 turns the guard off)
  --versioning none|trash|folder[=DIR]  where deleted and replaced files go in this run:
                nowhere (gone for good), the Trash of their drive, or a versions folder (DIR,
                default "Duomir Versions"; relative to the root of the side that loses the
                file); default: the setting Versioning, the Trash
  --log         write the day's log even when logging is off in the settings
  --log-actions besides failures, log one line per file copied, replaced or deleted and per
                folder created (as the setting "Log every change into file")
  -n, --dry-run print what would be deleted, created and copied; change nothing
  -v, --verbose print each change once it is made, in the dry run's lines
  --progress    show a live line of files, bytes, rate and time left on standard error even when
                it is no terminal; -q, --quiet never (default: on a terminal only)
  --allow-nested  run a pair whose one root lies inside the other (refused otherwise)
  (pair options and --time-lag as for compare)

Exit status: 0 success or nothing to do, 1 some operation failed, a folder could not be
listed, the run was interrupted or no direction was chosen, 2 usage error, unreadable profile or nested pair, 3 a root directory
could not be listed, 4 the deletion guard held a deletion back (the copies still ran).
)";

struct SyncArgs
{
    QString direction; // empty: the profile's, or both
    bool del = false;
    bool mirror = false;
    bool createDestination = false;
    bool verbose = false;
    int progress = -1; // -1: on a terminal only
    bool noDelete = false;
    int maxDelete = -1;  // -1: the setting
    int versioning = -1; // -1: the setting
    QString versionsFolder;
    bool log = false;
    bool logActions = false;
    bool dryRun = false;
    bool help = false;
};

int usageError(const QString &text)
{
    std::fprintf(stderr, "duomir-cli sync: %s\n(see duomir-cli sync --help)\n",
                 toNative(text).constData());
    return ExitUsage;
}

QString parseSyncArgs(const QStringList &rest, SyncArgs &out)
{
    for (qsizetype i = 0; i < rest.size(); ++i) {
        const QString &a = rest[i];
        if (a == u"--direction") {
            out.direction = rest.value(++i);
            if (out.direction != u"both" && out.direction != u"to-destination" &&
                out.direction != u"to-source")
                return u"--direction takes both, to-destination or to-source, not '" +
                       out.direction + u"'";
        } else if (a == u"--delete") {
            out.del = true;
        } else if (a == u"--create-destination" || a == u"--mkdir") {
            out.createDestination = true;
        } else if (a == u"--mirror") {
            out.mirror = true;
        } else if (a == u"--no-delete") {
            out.noDelete = true;
        } else if (a == u"--max-delete") {
            bool ok = false;
            out.maxDelete = rest.value(++i).toInt(&ok);
            if (!ok || out.maxDelete < 0 || out.maxDelete > 100)
                return u"--max-delete takes a per cent from 0 to 100, not '" + rest.value(i) + u"'";
        } else if (a == u"--versioning") {
            const QString how = rest.value(++i);
            if (how == u"none") {
                out.versioning = Settings::ForGood;
            } else if (how == u"trash") {
                out.versioning = Settings::ToTrash;
            } else if (how == u"folder" || how.startsWith(u"folder=")) {
                out.versioning = Settings::ToVersionsFolder;
                out.versionsFolder = how.mid(7);
                if (how.size() > 6 && out.versionsFolder.isEmpty())
                    return u"--versioning folder= needs a folder name"_qs;
            } else {
                return u"--versioning takes none, trash or folder[=DIR], not '" + how + u"'";
            }
        } else if (a == u"--log") {
            out.log = true;
        } else if (a == u"--log-actions") {
            out.log = out.logActions = true;
        } else if (a == u"--progress") {
            out.progress = 1;
        } else if (a == u"--quiet" || a == u"-q") {
            out.progress = 0;
        } else if (a == u"--verbose" || a == u"-v") {
            out.verbose = true;
        } else if (a == u"--dry-run" || a == u"-n") {
            out.dryRun = true;
        } else if (a == u"--help" || a == u"-h") {
            out.help = true;
        } else {
            return u"unknown option '" + a + u"'";
        }
    }
    return {};
}

void printSummary(const Engine &engine, bool ran, bool dryRun, int stillDiffering)
{
    const SyncStats &s = engine.run().stats();
    if (!ran) {
        std::printf("Nothing to synchronize.\n");
        return;
    }
    const QByteArray numbers = PlanNumbers(DoneAsPlan(engine.run().stats())).toUtf8();
    if (dryRun) {
        std::printf("Would copy %d files (%lld bytes), create %d directories, delete %d files: "
                    "%s.\n",
                    s.filesCopied, static_cast<long long>(s.bytesCopied), s.directoriesCreated,
                    s.filesDeleted, numbers.constData());
        return;
    }
    std::printf("Copied %d files (%lld bytes), created %d directories, deleted %d files; "
                "%d failures%s; %d entries still differ: %s.\n",
                s.filesCopied, static_cast<long long>(s.bytesCopied), s.directoriesCreated,
                s.filesDeleted, s.failures, CancelSignals::received() != 0 ? "; interrupted" : "",
                stillDiffering, numbers.constData());
}

} // namespace

int runSync(const QStringList &args)
{
    PairOptions pairOptions;
    SyncArgs sync;
    QString error = parsePairOptions(
        args, {u"--direction"_qs, u"--max-delete"_qs, u"--versioning"_qs}, pairOptions);
    if (args.contains(u"--help"_qs) || args.contains(u"-h"_qs)) {
        std::fputs(syncUsage, stdout);
        return ExitOk;
    }
    // An option nobody knows explains the rest of the line: in "--dest backup" the second word
    // is no profile but the typo's value.
    if (const QString optionError = parseSyncArgs(pairOptions.rest, sync);
        !optionError.isEmpty() && (error.isEmpty() || optionError.startsWith(u"unknown option")))
        error = optionError;
    if (error.isEmpty() && sync.del && sync.direction == u"both")
        error = u"--delete needs exactly one direction (to-destination or to-source)"_qs;
    if (error.isEmpty() && sync.del && sync.noDelete)
        error = u"--delete and --no-delete exclude each other"_qs;
    if (error.isEmpty() && sync.mirror && (sync.del || sync.noDelete))
        error = u"--mirror excludes --delete and --no-delete"_qs;
    if (error.isEmpty() && sync.mirror && sync.direction == u"both")
        error = u"--mirror needs exactly one direction (to-destination or to-source)"_qs;
    if (!error.isEmpty())
        return usageError(error);

    CliInteraction ui;
    Engine engine(ui);
    prepareEngine(engine, ui);
    engine.DontAsk = true;
    error = applyPairOptions(pairOptions, engine);
    if (!error.isEmpty())
        return usageError(error);

    if (!pairOptions.adHoc()) {
        engine.ProfilePath = QFileInfo(pairOptions.profile).absoluteFilePath();
        if (!ReadProfile(engine)) {
            std::fprintf(stderr, "duomir-cli sync: cannot read the profile %s\n",
                         nameForLine(engine.ProfilePath).constData());
            return ExitUsage;
        }
    }
    SyncOptions o = engine.run().options();
    if (!sync.direction.isEmpty()) {
        o.Src = sync.direction != u"to-source";
        o.Dest = sync.direction != u"to-destination";
    } else if (pairOptions.adHoc()) {
        o.Src = o.Dest = true;
    }
    o.Reverse = false;
    // The profile's Delete applies as in the window's automatic run, guarded like every deletion;
    // the command line overrides it for this run.
    const bool profileDeletes = !pairOptions.adHoc() && o.Delete && !sync.del;
    const bool profileMirrors = !pairOptions.adHoc() && o.Mirror && !sync.del;
    o.Delete = !sync.mirror && (sync.del || (profileDeletes && !sync.noDelete));
    o.Mirror = sync.mirror || (profileMirrors && !sync.noDelete && !o.Delete);
    if (o.Mirror && !sync.mirror && o.Src == o.Dest) {
        std::fprintf(stderr, "duomir-cli sync: note: the profile's Mirror needs exactly one "
                             "direction; nothing is deleted in this run\n");
        o.Mirror = false;
    }
    if (o.Delete && !sync.del && o.Src == o.Dest) {
        std::fprintf(stderr, "duomir-cli sync: note: the profile's Delete needs exactly one "
                             "direction; nothing is deleted in this run\n");
        o.Delete = false;
    }
    if (!pairOptions.adHoc())
        std::fprintf(stderr, "duomir-cli sync: directions from %s%s\n",
                     sync.direction.isEmpty() ? "the profile" : "--direction",
                     o.Delete && !sync.del      ? ", Delete from the profile"
                     : o.Mirror && !sync.mirror ? ", Mirror from the profile"
                                                : "");
    engine.run().setOptions(o);
    if (sync.maxDelete >= 0)
        engine.settings.MaxDeletePercent = sync.maxDelete;
    if (sync.versioning >= 0)
        engine.settings.Versioning = sync.versioning;
    if (!sync.versionsFolder.isEmpty())
        engine.settings.VersionsFolder = sync.versionsFolder;
    // A profile without its view section (or with both directions off) sends nothing; a
    // scheduled run must not report success for that.
    if (!o.Src && !o.Dest) {
        std::fprintf(stderr, "duomir-cli sync: no direction chosen: the profile turns both "
                             "directions off (or has no section \"0\"); give --direction\n");
        return ExitFailures;
    }
    if (const int refused = refuseNestedPairs(engine, pairOptions, "sync"); refused != 0)
        return refused;
    if ((sync.del || sync.mirror) && o.Src == o.Dest)
        return usageError((sync.del ? u"--delete"_qs : u"--mirror"_qs) +
                          u" needs exactly one direction; the profile has "_qs +
                          (o.Src ? u"both"_qs : u"none"_qs));

    if (sync.dryRun) {
        engine.settings.LogToFile = false; // a dry run leaves no trace, not even in the log
    } else if (sync.log) {
        engine.settings.LogToFile = true;
        engine.settings.LogActions = engine.settings.LogActions || sync.logActions;
        QDir().mkpath(engine.DataFolder);
    }

    warnEmptyIncludes(engine, "sync");
    // A dry run creates nothing, not even the destination it was asked to create.
    if (checkRoots(engine, "sync", sync.createDestination && !sync.dryRun) > 0)
        return ExitNoRoot;
    // A live line only where somebody watches it (or when asked), never between -v's lines.
    ProgressLine line(stderr, engine.run());
    const bool showProgress =
        sync.progress == 1 || (sync.progress < 0 && ::isatty(STDERR_FILENO) && !sync.verbose);
    if (showProgress)
        ui.onYield = [&] {
            line.listing(engine.comparison().listedSoFar(Side::Source),
                         engine.comparison().listedSoFar(Side::Destination));
        };
    int unlisted = 0;
    const bool compared = Compare(engine, &unlisted);
    ui.onYield = nullptr;
    line.endListing();
    if (!compared && unlisted == 0)
        return ExitUsage; // an empty pair list; Compare has said so
    if (!compared) {
        std::fprintf(stderr, "duomir-cli sync: a destination directory could not be listed: the "
                             "whole run is dropped, nothing is copied or deleted\n");
        return ExitNoRoot;
    }
    const int unlistedFolders = warnUnlistedFolders(engine, "sync");
    if (unlisted > 0)
        std::fprintf(stderr, "duomir-cli sync: a source directory could not be listed: nothing is "
                             "deleted for its pair and nothing is copied into a source folder that "
                             "could not be read; copies towards a missing source are tried and "
                             "fail\n");

    DryRunFileOps dry(PosixFileOps::instance());
    ItemizedFileOps itemized(PosixFileOps::instance());
    if (sync.verbose && !sync.dryRun)
        engine.run().setFileOps(itemized);
    if (sync.dryRun) {
        engine.run().setFileOps(dry);
        // What the run would come to, in the words of the window's confirmation.
        const QByteArray plan = DescribePlan(engine, PlanSynchronize(engine)).toUtf8();
        std::printf("%s\n", QByteArray(plan).replace("\r\n", "\n").constData());
    }

    if (showProgress) {
        engine.ProgressWhenUnattended = !sync.dryRun;
        engine.run().progress().setSink(&line);
    }
    bool ran = false;
    {
        // Ctrl-C and SIGTERM during the copies end the run in order; a second one ends it at once.
        const CancelSignals guard(engine.run().cancelFlag(), {SIGINT, SIGTERM}, {.once = true});
        ran = Synchronize(engine, 0);
    }

    int stillDiffering = 0;
    if (ran && !sync.dryRun) {
        int unlistedAfter = 0;
        Compare(engine, &unlistedAfter);
        stillDiffering = engine.comparison().counters()[0] + engine.comparison().counters()[2];
    }
    printSummary(engine, ran, sync.dryRun, stillDiffering);

    // As the window's automatic run ends (an interruption sets the cancel flag); a folder that
    // could not be listed counts as a failure here.
    const ExitStatus status = RunExitStatus(engine);
    return status == ExitOk && unlistedFolders > 0 ? ExitFailures : status;
}

} // namespace duomir::cli

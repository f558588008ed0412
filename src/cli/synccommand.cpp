#include <QDir>
#include <QStandardPaths>
#include <QTextStream>
#include <csignal>

#include "cli/commands.h"
#include "cli/dryrunfileops.h"
#include "cli/interimcompare.h"
#include "core/engine.h"
#include "core/interaction.h"
#include "core/platform/posixfileops.h"
#include "core/synchronize.h"

namespace duomir::cli {

namespace {

const char *const syncUsage =
    R"(Usage: duomir-cli sync --source DIR --destination DIR [OPTIONS]

Compares the two directories, copies what is newer (and, with --delete, deletes on the sending
side what the receiving side lacks), compares again and prints a summary. Never asks.

Options:
  --direction both|to-destination|to-source   which way files go (default: both)
  --delete      with exactly one direction: delete on the sending side the files that the
                receiving side lacks, and copy only files present on both sides
  --log         write the day's log even when logging is off in the settings
  --dry-run     print what would be deleted, created and copied; change nothing

Exit status: 0 success or nothing to do, 1 some operation failed, 2 usage error,
3 a root directory could not be listed.
)";

bool *g_cancel = nullptr;

extern "C" void onSignal(int)
{
    if (g_cancel)
        *g_cancel = true;
}

// Never asks: questions are answered No, failures go to standard error as they happen.
class TerminalInteraction : public Interaction
{
public:
    Answer message(Icon, Buttons buttons, const QString &text, const QString &) override
    {
        if (!text.isEmpty())
            m_err << text << u'\n';
        m_err.flush();
        return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }
    void failureReported(const QString &error, const QString &source,
                         const QString &destination) override
    {
        m_err << "duomir-cli: " << error;
        if (!source.isEmpty())
            m_err << ": " << source;
        if (!destination.isEmpty())
            m_err << " -> " << destination;
        m_err << '\n';
        m_err.flush();
    }

private:
    QTextStream m_err{stderr};
};

int usageError(const QString &text)
{
    QTextStream(stderr) << "duomir-cli sync: " << text << "\n(see duomir-cli sync --help)\n";
    return ExitUsage;
}

QString rootText(const QString &path)
{
    QString p = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    return p;
}

} // namespace

int runSync(const QStringList &args)
{
    QString source, destination, direction = QStringLiteral("both");
    bool del = false, log = false, dryRun = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        const auto value = [&](QString &into) {
            if (i + 1 >= args.size())
                return false;
            into = args[++i];
            return true;
        };
        if (a == u"--help" || a == u"-h") {
            QTextStream(stdout) << syncUsage;
            return ExitOk;
        }
        if (a == u"--source" || a == u"--destination" || a == u"--direction") {
            QString &into = a == u"--source"        ? source
                            : a == u"--destination" ? destination
                                                    : direction;
            if (!value(into))
                return usageError(a + u" needs a value");
        } else if (a == u"--delete") {
            del = true;
        } else if (a == u"--log") {
            log = true;
        } else if (a == u"--dry-run") {
            dryRun = true;
        } else if (a.startsWith(u'-')) {
            return usageError(u"unknown option " + a);
        } else {
            return usageError(QStringLiteral("profiles are not supported by this build yet; use "
                                             "--source and --destination"));
        }
    }
    if (source.isEmpty() || destination.isEmpty())
        return usageError(QStringLiteral("--source and --destination are required"));
    if (direction != u"both" && direction != u"to-destination" && direction != u"to-source")
        return usageError(u"unknown direction " + direction);
    if (del && direction == u"both")
        return usageError(QStringLiteral("--delete needs exactly one direction"));

    TerminalInteraction ui;
    Engine engine(ui);
    engine.DontAsk = true;
    engine.sync.Src = direction != u"to-source";
    engine.sync.Dest = direction != u"to-destination";
    engine.sync.Delete = del;
    if (log) {
        engine.settings.LogToFile = true;
        engine.DataFolder =
            QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/Duomir/";
        QDir().mkpath(engine.DataFolder);
    }
    DryRunFileOps dry(PosixFileOps::instance());
    if (dryRun)
        engine.fileOps = &dry;

    source = rootText(source);
    destination = rootText(destination);
    QString unreadable;
    if (!compareTrees(engine, source, destination, unreadable)) {
        QTextStream(stderr) << "duomir-cli sync: cannot list " << unreadable << '\n';
        return ExitNoRoot;
    }

    g_cancel = &engine.CancelFlag;
    struct sigaction sa = {};
    sa.sa_handler = onSignal;
    ::sigaction(SIGINT, &sa, nullptr);
    ::sigaction(SIGTERM, &sa, nullptr);
    const bool ran = Synchronize(engine, 0);
    const bool cancelled = engine.CancelFlag;
    g_cancel = nullptr;

    int remaining = 0;
    if (ran && !dryRun && compareTrees(engine, source, destination, unreadable))
        remaining = engine.compareCounters[0] + engine.compareCounters[2];

    const SyncStats &s = engine.syncStats;
    QTextStream out(stdout);
    if (!ran)
        out << "Nothing to synchronize.\n";
    else
        out << (dryRun ? "Would copy " : "Copied ") << s.filesCopied << " files (" << s.bytesCopied
            << " bytes), " << (dryRun ? "create " : "created ") << s.directoriesCreated
            << " directories, " << (dryRun ? "delete " : "deleted ") << s.filesDeleted << " files; "
            << s.failures << " failures" << (cancelled ? "; cancelled" : "") << (dryRun ? "" : "; ")
            << (dryRun ? QString() : QString::number(remaining) + u" entries still differ")
            << ".\n";
    return s.failures > 0 || cancelled ? ExitFailures : ExitOk;
}

} // namespace duomir::cli

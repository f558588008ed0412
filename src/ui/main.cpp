#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "core/engine.h"
#include "core/errorlog.h"
#include "core/exitstatus.h"
#include "settings/settingsfile.h"
#include "ui/frmmain.h"
#include "ui/guiinteraction.h"
#include "ui/helppage.h"
#include "ui/mainhooks.h"
#include "ui/notification.h"
#include "ui/optionsmenu.h"
#include "ui/startup.h"
#include "ui/terminationguard.h"

namespace {

const char *const Usage =
    R"(Usage: duomir [PROFILE] [-auto] [-dontask] [-hide]

Keeps pairs of directories in step (the window). Without a profile it starts with an empty list.

  PROFILE    a profile (.dyp) to load; loading compares its pairs
  -auto      synchronize after loading, then close
  -dontask   ask nothing: no confirmations, no message boxes (messages go to standard error and,
             when logging is on, to the day's log)
  -hide      start minimized

Switches count only as whole arguments, in any letter case. Without a display the window runs
offscreen and never waits for a click.

Exit status after -auto: 0 done or nothing to do, 1 some operation failed, 2 the profile could not
be read, 3 a root directory could not be listed, 4 the deletion guard held a deletion back.

  -h, --help     show this help and exit
  -V, --version  show the version and exit
For runs without a window: duomir-cli --help.
)";

// --help and --version answer before any window or display is looked for.
bool answeredAtOnce(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            std::fputs(Usage, stdout);
            return true;
        }
        if (std::strcmp(argv[i], "--version") == 0 || std::strcmp(argv[i], "-V") == 0) {
            std::printf("duomir %s\n", DUOMIR_VERSION);
            return true;
        }
    }
    return false;
}

// An automatic run started by cron or a timer has no display to show a window on. Without one,
// and without a platform chosen by the caller, the program runs offscreen instead of aborting;
// the answer says so, since then nobody can click anything.
bool fallBackToOffscreen(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsEmpty("DISPLAY") ||
        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
        !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return false;
    for (int i = 1; i < argc; ++i) {
        if (qstrcmp(argv[i], "-platform") == 0 || qstrcmp(argv[i], "--platform") == 0)
            return false;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return true;
}

// cron and plain timers start programs without XDG_RUNTIME_DIR; Qt then warns on every start, and
// cron mails that warning. A private folder of our own (owned by us, mode 0700, as Qt wants one)
// takes its place.
void provideRuntimeDirectory()
{
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        return;
    const QByteArray dir =
        QFile::encodeName(QDir::tempPath()) + "/duomir-runtime-" + QByteArray::number(::getuid());
    ::mkdir(dir.constData(), 0700);
    struct stat st;
    if (::lstat(dir.constData(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::getuid() &&
        (st.st_mode & 0777) == 0700)
        qputenv("XDG_RUNTIME_DIR", dir);
}

} // namespace

int main(int argc, char *argv[])
{
    if (answeredAtOnce(argc, argv))
        return 0;
    const bool noDisplay = fallBackToOffscreen(argc, argv);
    provideRuntimeDirectory();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Duomir"));
    QApplication::setApplicationVersion(QStringLiteral(DUOMIR_VERSION));

    duomir::GuiInteraction gui;
    duomir::Engine engine(gui);
    gui.setUnattended([&engine, noDisplay] { return noDisplay || engine.DontAsk; },
                      [&engine](const QString &text) {
                          engine.reporter().writeLine({QStringLiteral("Message"), text});
                      });
    const duomir::TerminationGuard termination(engine.run().cancelFlag());
    duomir::frmMain window(engine);
    gui.setWindow(&window);

    duomir::HelpKey helpKey(engine);
    app.installEventFilter(&helpKey);

    duomir::ShellHooks hooks = duomir::mainWindowHooks(window, engine);
    duomir::OptionsMenu options(engine, &window, hooks);
    duomir::Startup startup(engine, &window, hooks);

    if (!startup.run(duomir::SettingsEnvironment::current(), QApplication::arguments().mid(1))) {
        if (termination.requestedExitCode() != 0)
            return termination.requestedExitCode();
        const int status = startup.exitStatus();
        // A person hears of a run nobody watched that did not go well.
        if (status != duomir::ExitOk && gui.unattended()) {
            const QString profile = QFileInfo(engine.ProfilePath).fileName();
            duomir::notifyDesktop(
                engine.FormatMsg(870, {profile}),
                engine.FormatMsg(871, {QString::number(engine.run().stats().failures),
                                       engine.reporter().logFilePath(engine.now())}));
        }
        return status;
    }
    // A signal during an automatic run at start-up came before the event loop could end.
    if (termination.requestedExitCode() != 0)
        return termination.requestedExitCode();
    return QApplication::exec();
}

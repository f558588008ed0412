#include <QApplication>

#include "core/engine.h"
#include "settings/settingsfile.h"
#include "ui/frmmain.h"
#include "ui/guiinteraction.h"
#include "ui/helppage.h"
#include "ui/mainhooks.h"
#include "ui/optionsmenu.h"
#include "ui/startup.h"
#include "ui/terminationguard.h"

namespace {

// An automatic run started by cron or a timer has no display to show a window on. Without one,
// and without a platform chosen by the caller, the program runs offscreen instead of aborting.
void fallBackToOffscreen(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsEmpty("DISPLAY") ||
        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
        !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return;
    for (int i = 1; i < argc; ++i) {
        if (qstrcmp(argv[i], "-platform") == 0 || qstrcmp(argv[i], "--platform") == 0)
            return;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
}

} // namespace

int main(int argc, char *argv[])
{
    fallBackToOffscreen(argc, argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Duomir"));
    QApplication::setApplicationVersion(QStringLiteral(DUOMIR_VERSION));

    duomir::GuiInteraction gui;
    duomir::Engine engine(gui);
    const duomir::TerminationGuard termination(engine.CancelFlag);
    duomir::frmMain window(engine);
    gui.setWindow(&window);

    duomir::HelpKey helpKey(engine);
    app.installEventFilter(&helpKey);

    duomir::ShellHooks hooks = duomir::mainWindowHooks(window, engine);
    duomir::OptionsMenu options(engine, &window, hooks);
    duomir::Startup startup(engine, &window, hooks);

    if (!startup.run(duomir::SettingsEnvironment::current(), QApplication::arguments().mid(1)))
        return termination.requestedExitCode();
    // A signal during an automatic run at start-up came before the event loop could end.
    if (termination.requestedExitCode() != 0)
        return termination.requestedExitCode();
    return QApplication::exec();
}

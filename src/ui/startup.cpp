#include "ui/startup.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMainWindow>
#include <QProcess>
#include <cmath>

#include "base/inifile.h"
#include "base/interaction.h"
#include "core/engine.h"
#include "core/exitstatus.h"
#include "settings/commandline.h"
#include "ui/dlghint.h"
#include "ui/dlglanguage.h"
#include "ui/localizecontrols.h"
#include "ui/modal.h"
#include "ui/mousepointer.h"

namespace duomir {

namespace {

// 1440 twips per inch on a 96 dpi desktop.
constexpr float TwipsPerPixel = 15.0f;

} // namespace

Startup::Startup(Engine &engine, QMainWindow *window, ShellHooks &hooks)
    : QObject(window), m_engine(engine), m_window(window), m_hooks(hooks)
{
    m_window->installEventFilter(this);
}

Placement Startup::placementOf(const QWidget *window)
{
    const QRect frame = window->frameGeometry();
    const QSize size = window->size();
    return {frame.x() * TwipsPerPixel, frame.y() * TwipsPerPixel, size.width() * TwipsPerPixel,
            size.height() * TwipsPerPixel};
}

void Startup::applyPlacement(QWidget *window, const Placement &p)
{
    auto px = [](float twips) { return static_cast<int>(std::lround(twips / TwipsPerPixel)); };
    window->move(px(p[0]), px(p[1]));
    // A width or height of 0 (a short or broken entry) gives way to the window's own minimum.
    const QSize least = window->minimumSizeHint().expandedTo(window->minimumSize());
    window->resize(QSize(px(p[2]), px(p[3])).expandedTo(least));
}

bool Startup::run(const SettingsEnvironment &env, const QStringList &arguments)
{
    MousePointer busy;
    InitSettings(m_engine, env);

    // An unattended run (-dontask, often hidden, from cron or a launcher, or no display at all) on
    // an account that never chose a language must not wait for a dialog nobody sees: it runs in
    // English.
    const CommandLine cmd = parseArguments(arguments);
    m_autoRequested = cmd.AutoRequested;
    if (cmd.DontAsk)
        m_engine.DontAsk = true;
    const bool personPresent = m_engine.ui().personPresent() && !cmd.DontAsk;
    if (m_engine.settings.Language.isEmpty() && personPresent) {
        // The dialog waits for the user: the normal pointer, and a beep to call them.
        busy.release();
        beep();
        dlgLanguage dlg(m_engine);
        execModal(dlg);
        busy.hold();
    }
    if (m_engine.settings.Language.isEmpty())
        m_engine.settings.Language = QStringLiteral("English"); // for this run only, not stored

    m_engine.language = Language::load(
        Language::filePath(m_engine.ShareFolder, m_engine.settings.Language), &m_engine.ui());
    if (m_hooks.localize)
        m_hooks.localize();
    else
        LocalizeControls(m_window, m_engine.language);

    // From here on a failing step is skipped and the next one runs.
    if (!m_engine.settings.FormPos.isEmpty())
        applyPlacement(m_window, parsePlacement(m_engine.settings.FormPos));

    if (cmd.Hide) {
        m_window->setWindowState(Qt::WindowMinimized);
    } else {
        m_window->setWindowState(m_engine.settings.FormState == 2 ? Qt::WindowMaximized
                                                                  : Qt::WindowNoState);
        // Visible during a long automatic run.
        m_window->show();
    }

    if (cmd.hasProfile()) {
        if (isEmptyProfileFile(cmd.ProfilePath)) {
            m_engine.ProfilePath.clear();
        } else {
            const bool loaded = m_hooks.loadProfile && m_hooks.loadProfile(cmd.ProfilePath);
            if (loaded && cmd.AutoRequested) {
                m_engine.Auto = true;
                if (m_hooks.synchronize)
                    m_hooks.synchronize();
            }
        }
    }
    // An automatic run that nobody watches always ends, also when its profile could not be read
    // or was empty: a process left waiting would be one more every night.
    if (cmd.AutoRequested && !m_closed && !personPresent)
        m_window->close();
    if (m_closed)
        return false;

    startInfoScript();
    if (cmd.Hide)
        m_window->showMinimized();
    busy.release();

    if (!m_engine.settings.DontShowHint) {
        if (personPresent) {
            dlgHint hint(m_engine, m_window);
            execModal(hint);
        } else {
            m_engine.ui().message(Interaction::Icon::Information, Interaction::Buttons::Ok,
                                  dlgHint::hintText(m_engine));
        }
    }
    return !m_closed;
}

int Startup::exitStatus() const
{
    return m_autoRequested ? RunExitStatus(m_engine) : ExitOk;
}

void Startup::startInfoScript()
{
    const QString script = QDir(m_engine.ProgramFolder).filePath(QStringLiteral("DMInfo.sh"));
    if (QFileInfo(script).isFile())
        QProcess::startDetached(QStringLiteral("/bin/sh"), {script}, m_engine.ProgramFolder);
}

bool Startup::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window || event->type() != QEvent::Close || m_inClose)
        return QObject::eventFilter(watched, event);
    // The window asks about a changed profile first and may refuse; only a close that goes
    // through stores the placement, while the window still has it.
    m_inClose = true;
    event->accept();
    QCoreApplication::sendEvent(m_window, event);
    m_inClose = false;
    if (event->isAccepted())
        shutDown();
    return true;
}

void Startup::shutDown()
{
    m_closed = true;
    const Qt::WindowStates states = m_window->windowState();
    const WindowState state = states & Qt::WindowMinimized   ? WindowState::Minimized
                              : states & Qt::WindowMaximized ? WindowState::Maximized
                                                             : WindowState::Normal;
    IniFile file(m_engine.SettingsFile);
    WritePlacementOnClose(file, m_engine.settings, state, placementOf(m_window));
}

} // namespace duomir

#pragma once

#include <QObject>
#include <QStringList>

#include "settings/settingsfile.h"
#include "ui/shellhooks.h"

class QMainWindow;

namespace duomir {

class Engine;

// Start-up and shut-down of the main window: settings, first-start language choice, localization,
// placement, command line, automatic run, DMInfo.sh and the hint; and, once the window has agreed
// to close, the placement writes.
class Startup : public QObject
{
    Q_OBJECT

public:
    Startup(Engine &engine, QMainWindow *window, ShellHooks &hooks);

    // Runs the whole start-up. `arguments` are the program's arguments without the program name.
    // Returns false when the window was closed during it (an automatic run ended the program).
    bool run(const SettingsEnvironment &env, const QStringList &arguments);

    // The program's exit status once the window has closed: that of the automatic run for
    // "-auto" (core/exitstatus.h), else 0.
    int exitStatus() const;

    // The window's placement in the units of the settings file (twips).
    static Placement placementOf(const QWidget *window);
    static void applyPlacement(QWidget *window, const Placement &placement);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void startInfoScript();
    void shutDown();

    Engine &m_engine;
    QMainWindow *m_window;
    ShellHooks &m_hooks;
    bool m_closed = false;
    bool m_autoRequested = false;
    bool m_inClose = false;
};

} // namespace duomir

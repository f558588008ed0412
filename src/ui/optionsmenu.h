#pragma once

#include <QObject>

#include "ui/shellhooks.h"

class QMainWindow;
class QMenu;

namespace duomir {

class Engine;

// The main window's options popup (mnuPop4): opened by a plain right click on the window
// background and leading to the options, launcher, language and about dialogs. The options button
// cmdOptions, when the window has one, opens the options dialog directly.
class OptionsMenu : public QObject
{
    Q_OBJECT

public:
    OptionsMenu(Engine &engine, QMainWindow *window, ShellHooks &hooks);

    QMenu *menu() const { return m_menu; }

    // Pops the menu up at the mouse position.
    void ShowOptionsMenu();

    void showOptions();
    void showMakeShortcut();
    void showLanguage();
    void showAbout();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void relocalize();

    Engine &m_engine;
    QMainWindow *m_window;
    ShellHooks &m_hooks;
    QMenu *m_menu;
    Qt::MouseButton m_pressButton = Qt::NoButton;
    Qt::KeyboardModifiers m_pressModifiers;
};

} // namespace duomir

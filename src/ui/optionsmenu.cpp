#include "ui/optionsmenu.h"

#include <QAbstractButton>
#include <QCursor>
#include <QMainWindow>
#include <QMenu>
#include <QMouseEvent>

#include "core/engine.h"
#include "ui/dlgabout.h"
#include "ui/dlglanguage.h"
#include "ui/dlgmakelink.h"
#include "ui/dlgoptions.h"
#include "ui/localizecontrols.h"
#include "ui/modal.h"

namespace duomir {

namespace {

QAction *addEntry(QMenu *menu, const char *name, const QString &text, int id)
{
    return named(menu->addAction(text), name, id);
}

} // namespace

OptionsMenu::OptionsMenu(Engine &engine, QMainWindow *window, ShellHooks &hooks)
    : QObject(window), m_engine(engine), m_window(window), m_hooks(hooks), m_menu(new QMenu(window))
{
    m_menu->setObjectName(QStringLiteral("mnuPop4"));
    connect(addEntry(m_menu, "mnuPop4_Options", QStringLiteral("&Options"), 1901),
            &QAction::triggered, this, &OptionsMenu::showOptions);
    connect(addEntry(m_menu, "mnuPop4_MakeShortcut", QStringLiteral("Create &shortcut"), 1902),
            &QAction::triggered, this, &OptionsMenu::showMakeShortcut);
    m_menu->addSeparator();
    connect(addEntry(m_menu, "mnuPop4_Language", QStringLiteral("Select &language"), 1903),
            &QAction::triggered, this, &OptionsMenu::showLanguage);
    m_menu->addSeparator();
    connect(addEntry(m_menu, "mnuPop4_About", QStringLiteral("&About Duomir"), 1904),
            &QAction::triggered, this, &OptionsMenu::showAbout);

    // The background: the window itself and its central widget, not the controls on them.
    m_window->installEventFilter(this);
    if (QWidget *central = m_window->centralWidget())
        central->installEventFilter(this);
    if (auto *cmdOptions = m_window->findChild<QAbstractButton *>(QStringLiteral("cmdOptions")))
        connect(cmdOptions, &QAbstractButton::clicked, this, &OptionsMenu::showOptions);
}

bool OptionsMenu::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        m_pressButton = mouse->button();
        m_pressModifiers = mouse->modifiers();
    } else if (event->type() == QEvent::MouseButtonRelease) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        const bool plainRight =
            m_pressButton == Qt::RightButton && mouse->button() == Qt::RightButton &&
            (m_pressModifiers & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier)) == 0;
        m_pressButton = Qt::NoButton;
        if (plainRight) {
            ShowOptionsMenu();
            return true;
        }
    } else if (event->type() == QEvent::ContextMenu && watched == m_window) {
        // The release above decides; the window's own context menu must not appear as well.
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void OptionsMenu::ShowOptionsMenu()
{
    m_menu->popup(QCursor::pos());
}

void OptionsMenu::relocalize()
{
    if (m_hooks.localize)
        m_hooks.localize();
    else
        LocalizeControls(m_window, m_engine.language);
    LocalizeControls(m_menu, m_engine.language);
    if (m_hooks.layoutButtonBars)
        m_hooks.layoutButtonBars();
}

void OptionsMenu::showOptions()
{
    dlgOptions dlg(m_engine, m_window);
    connect(&dlg, &dlgOptions::optionsApplied, this, [this] {
        if (m_hooks.layoutButtonBars)
            m_hooks.layoutButtonBars();
    });
    connect(&dlg, &dlgOptions::languageChanged, this, &OptionsMenu::relocalize);
    execModal(dlg);
}

void OptionsMenu::showMakeShortcut()
{
    dlgMakeLink dlg(m_engine, m_window);
    execModal(dlg);
}

void OptionsMenu::showLanguage()
{
    dlgLanguage dlg(m_engine, m_window);
    execModal(dlg);
    relocalize();
}

void OptionsMenu::showAbout()
{
    dlgAbout dlg(m_engine, m_window);
    execModal(dlg);
}

} // namespace duomir

#include "ui/helppage.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QKeyEvent>
#include <QUrl>
#include <QWidget>

#include "core/engine.h"

namespace duomir {

void setHelpPage(QWidget *window, const QString &page)
{
    window->setProperty(HelpPageProperty, page);
}

QString helpPagePath(const Engine &engine, const QString &page)
{
    return QDir(engine.ShareFolder).filePath(u"Help/" + engine.settings.Language + u'/' + page);
}

void openHelpFor(const Engine &engine, QWidget *window)
{
    // Close menus and drop-downs first, the way an Escape would.
    while (QWidget *popup = QApplication::activePopupWidget()) {
        if (!window)
            window = popup->parentWidget() ? popup->parentWidget()->window() : nullptr;
        popup->close();
    }
    QString page;
    for (QWidget *w = window; w && page.isEmpty(); w = w->parentWidget())
        page = w->window()->property(HelpPageProperty).toString();
    if (page.isEmpty())
        page = QStringLiteral("Main.htm");
    QDesktopServices::openUrl(QUrl::fromLocalFile(helpPagePath(engine, page)));
}

HelpKey::HelpKey(const Engine &engine, QObject *parent) : QObject(parent), m_engine(engine) {}

bool HelpKey::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    if (key->key() != Qt::Key_F1 || key->modifiers() != Qt::NoModifier)
        return false;
    if (event->type() == QEvent::ShortcutOverride) {
        // Claim the key so that no shortcut takes it; the key press follows.
        event->accept();
        return true;
    }
    auto *widget = qobject_cast<QWidget *>(watched);
    if (!widget)
        return false;
    QWidget *target = QApplication::activePopupWidget() ? nullptr : widget->window();
    openHelpFor(m_engine, target);
    return true;
}

} // namespace duomir

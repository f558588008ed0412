#include "ui/guiinteraction.h"

#include <QApplication>
#include <QMessageBox>

#include "ui/frmmain.h"

namespace duomir {

namespace {

// Processing events costs far more than listing one directory item; doing it at most this often
// keeps the window live without slowing a large scan down.
constexpr qint64 YieldIntervalMs = 15;

QMessageBox::Icon boxIcon(Interaction::Icon icon)
{
    switch (icon) {
    case Interaction::Icon::Information:
        return QMessageBox::Information;
    case Interaction::Icon::Exclamation:
        return QMessageBox::Warning;
    case Interaction::Icon::Question:
        return QMessageBox::Question;
    case Interaction::Icon::Critical:
        break;
    }
    return QMessageBox::Critical;
}

} // namespace

GuiInteraction::GuiInteraction() : m_defaultTitle(QStringLiteral("Duomir"))
{
    m_sinceYield.start();
}

void GuiInteraction::setWindow(frmMain *window)
{
    m_window = window;
}

Interaction::Answer GuiInteraction::message(Icon icon, Buttons buttons, const QString &text,
                                            const QString &title)
{
    QWidget *parent = m_window;
    if (parent && (!parent->isVisible() || parent->isMinimized()))
        parent = nullptr;
    QMessageBox box(boxIcon(icon), title.isEmpty() ? m_defaultTitle : title, text,
                    QMessageBox::NoButton, parent);
    switch (buttons) {
    case Buttons::Ok:
        box.setStandardButtons(QMessageBox::Ok);
        box.setDefaultButton(QMessageBox::Ok);
        break;
    case Buttons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(QMessageBox::No);
        break;
    case Buttons::YesNoCancel:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::Cancel);
        break;
    }
    // A message box must stay usable while the main window is disabled for a long run.
    QApplication::setOverrideCursor(QCursor(Qt::ArrowCursor));
    const int result = box.exec();
    QApplication::restoreOverrideCursor();
    switch (result) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    case QMessageBox::Cancel:
        return Answer::Cancel;
    default:
        break;
    }
    return buttons == Buttons::Ok ? Answer::Ok : Answer::Cancel;
}

void GuiInteraction::yieldEvents()
{
    if (m_sinceYield.elapsed() < YieldIntervalMs)
        return;
    QApplication::processEvents();
    m_sinceYield.restart();
}

void GuiInteraction::setStatusLabel(int index, const QString &text)
{
    if (m_window)
        m_window->setStatusLabel(index, text);
}

void GuiInteraction::setProgressAnimation(bool running)
{
    if (m_window)
        m_window->setProgressAnimation(running);
}

} // namespace duomir

namespace duomir {

void GuiInteraction::setInputEnabled(bool enabled)
{
    if (m_window)
        m_window->setInputEnabled(enabled);
}

} // namespace duomir

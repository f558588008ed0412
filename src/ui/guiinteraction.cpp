#include "ui/guiinteraction.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <cstdio>
#include <utility>

#include "base/nativename.h"
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

void GuiInteraction::setUnattended(std::function<bool()> unattended,
                                   std::function<void(const QString &)> record)
{
    m_unattended = std::move(unattended);
    m_record = std::move(record);
}

namespace {

// One message as one line on standard error: its own line breaks become "; " (names in it are
// escaped already, so no name can make a line of its own).
void printLine(const char *kind, const QString &text)
{
    QString line = text;
    line.replace(u"\r\n"_qs, u"; "_qs).replace(u'\n', u"; "_qs).replace(u'\r', u' ');
    QByteArray bytes;
    appendEscapedForLine(bytes, line);
    std::fprintf(stderr, "duomir: %s: %s\n", kind, bytes.constData());
    std::fflush(stderr);
}

const char *kindOf(Interaction::Icon icon)
{
    switch (icon) {
    case Interaction::Icon::Information:
        return "note";
    case Interaction::Icon::Exclamation:
        return "warning";
    case Interaction::Icon::Question:
        return "question";
    case Interaction::Icon::Critical:
        break;
    }
    return "error";
}

} // namespace

void GuiInteraction::failureReported(const QString &error, const QString &source,
                                     const QString &destination)
{
    // With a person there the box has said it; without one, this line is what cron mails.
    if (!unattended())
        return;
    std::fprintf(stderr, "duomir: error: %s\n",
                 failureLine(error, source, destination).constData());
    std::fflush(stderr);
}

Interaction::Answer GuiInteraction::message(Icon icon, Buttons buttons, const QString &text,
                                            const QString &title)
{
    if (unattended()) {
        printLine(kindOf(icon), buttons == Buttons::Ok ? text : text + u" [answered No]");
        if (m_record)
            m_record(text);
        return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }
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
    const std::array<QMessageBox::StandardButton, 4> kinds{QMessageBox::Ok, QMessageBox::Yes,
                                                           QMessageBox::No, QMessageBox::Cancel};
    for (size_t i = 0; i < kinds.size(); ++i) {
        if (QAbstractButton *b = box.button(kinds[i]); b && !m_buttonTexts[i].isEmpty())
            b->setText(m_buttonTexts[i]);
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

#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QString>
#include <array>
#include <functional>

#include "base/interaction.h"

class QWidget;

namespace duomir {

class frmMain;

// The engine's voice in the GUI: message boxes over the main window, throttled event processing
// while a scan or copy runs, and the status labels and progress animation of frmMain.
class GuiInteraction : public Interaction
{
public:
    GuiInteraction();

    // The window that parents the message boxes and shows the status labels.
    void setWindow(frmMain *window);
    // Whether anybody is there to answer (false with -dontask, or without a display) and where a
    // message then goes besides standard error (the day's log). A box that nobody can see is
    // never waited for: the run goes on as after OK, a question takes its default answer, No.
    void setUnattended(std::function<bool()> unattended,
                       std::function<void(const QString &)> record);
    bool unattended() const { return m_unattended && m_unattended(); }
    bool personPresent() const override { return !unattended(); }
    // The title of message boxes shown without a title of their own.
    void setDefaultTitle(const QString &title) { m_defaultTitle = title; }
    // The texts of OK, Yes, No and Cancel in the chosen language (empty: Qt's own).
    void setButtonTexts(std::array<QString, 4> texts) { m_buttonTexts = std::move(texts); }

    Answer message(Icon icon, Buttons buttons, const QString &text,
                   const QString &title = {}) override;
    void yieldEvents() override;
    void setStatusLabel(int index, const QString &text) override;
    void setProgressAnimation(bool running) override;
    void setInputEnabled(bool enabled) override;
    void failureReported(const QString &error, const QString &source,
                         const QString &destination) override;

private:
    QPointer<frmMain> m_window;
    QString m_defaultTitle;
    std::array<QString, 4> m_buttonTexts;
    QElapsedTimer m_sinceYield;
    std::function<bool()> m_unattended;
    std::function<void(const QString &)> m_record;
};

} // namespace duomir

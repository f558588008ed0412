#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QString>

#include "core/interaction.h"

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
    // The title of message boxes shown without a title of their own.
    void setDefaultTitle(const QString &title) { m_defaultTitle = title; }

    Answer message(Icon icon, Buttons buttons, const QString &text,
                   const QString &title = {}) override;
    void yieldEvents() override;
    void setStatusLabel(int index, const QString &text) override;
    void setProgressAnimation(bool running) override;
    void setInputEnabled(bool enabled) override;

private:
    QPointer<frmMain> m_window;
    QString m_defaultTitle;
    QElapsedTimer m_sinceYield;
};

} // namespace duomir

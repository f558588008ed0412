#pragma once

#include <QDialog>

#include "core/progressmodel.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace duomir {

class Engine;

// The non-modal copy progress window, driven by the engine's progress model (which writes a label
// only when its text changes). Cancel sets the engine's cancel flag; the copy walk stops at its
// next check.
class dlgProgress : public QDialog, public ProgressSink
{
    Q_OBJECT

public:
    explicit dlgProgress(Engine &engine, QWidget *parent = nullptr);

    void setVisible(bool visible) override;
    void setPercentText(const QString &text) override;
    void setBarWidth(int width) override;
    void setFrom(const QString &directory) override;
    void setTo(const QString &directory) override;
    void setFileName(const QString &name) override;
    int fullBarWidth() const override;

public Q_SLOTS:
    void cmdCancel_Click();
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    Engine *m_engine;
    QLabel *m_lblFrom = nullptr;
    QLabel *m_lblTo = nullptr;
    QLabel *m_lblFile = nullptr;
    QProgressBar *m_lblProgress = nullptr;
    QLabel *m_lblProgressPercent = nullptr;
    QPushButton *m_cmdCancel = nullptr;
};

} // namespace duomir

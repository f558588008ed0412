#pragma once

#include <QDialog>
#include <cstdint>

class QLabel;
class QProgressBar;
class QPushButton;

namespace duomir {

class Engine;

// The non-modal copy progress window. Labels change only when their text changes and the bar only
// grows within a run, so a callback per copied chunk costs next to nothing. Cancel sets the
// engine's cancel flag; the copy walk stops at its next check.
class dlgProgress : public QDialog
{
    Q_OBJECT

public:
    explicit dlgProgress(Engine &engine, QWidget *parent = nullptr);

    // Resets the display for a run of `total` bytes and shows the window.
    void Init(std::int64_t total);
    // `bytesCopied` of the file in progress; the finished files are counted by FileDone().
    void Update(std::int64_t fileSize, std::int64_t bytesCopied);
    void FileDone(std::int64_t size);
    // Directories arrive with their trailing separator, which the labels leave off.
    void ShowFile(const QString &sourceDir, const QString &destDir, const QString &fileName);

    int percentShown() const { return m_lastPercent; }

public Q_SLOTS:
    void cmdCancel_Click();

    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void showDone(std::int64_t done);

    Engine *m_engine;
    std::int64_t m_total = 0;
    std::int64_t m_finished = 0;
    int m_lastPercent = 0;
    int m_lastPermille = 0;

    QLabel *m_lblFrom = nullptr;
    QLabel *m_lblTo = nullptr;
    QLabel *m_lblFile = nullptr;
    QProgressBar *m_lblProgress = nullptr;
    QLabel *m_lblProgressPercent = nullptr;
    QPushButton *m_cmdCancel = nullptr;
};

} // namespace duomir

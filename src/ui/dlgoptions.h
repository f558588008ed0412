#pragma once

#include <QDialog>
#include <array>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace duomir {

class Engine;

// The program-wide options: defaults of new pairs, time lag, logging, button-bar text; and the hub
// that opens the language, launcher, hint and about dialogs.
class dlgOptions : public QDialog
{
    Q_OBJECT

public:
    explicit dlgOptions(Engine &engine, QWidget *parent = nullptr);

Q_SIGNALS:
    // Apply stored the options; the main window re-lays out its button bars.
    void optionsApplied();
    // The language dialog chose a language; the main window localizes itself again.
    void languageChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildControls();
    void fillFromSettings();
    void changed();
    void syncDirectoryOptions();
    void syncKeepOptions();
    bool validateTimeLag();
    void apply();
    void showLanguage();

    Engine &m_engine;
    QCheckBox *m_chkSubDirs = nullptr;
    std::array<QCheckBox *, 2> m_chkSystem{};
    std::array<QCheckBox *, 2> m_chkHidden{};
    QLineEdit *m_txtExcludeDirs = nullptr;  // txtSearch index 1
    QLineEdit *m_txtExcludeFiles = nullptr; // txtSearch index 3
    QLineEdit *m_txtTimeLag = nullptr;
    QCheckBox *m_chkLogToFile = nullptr;
    QCheckBox *m_chkLogActions = nullptr;
    QCheckBox *m_chkButtonBarsWithText = nullptr;
    std::array<QRadioButton *, 3> m_optKeep{}; // by Settings::VersioningMode
    QLineEdit *m_txtVersionsFolder = nullptr;
    QPushButton *m_cmdApply = nullptr;
    QPushButton *m_cmdExit = nullptr;
    QPushButton *m_cmdMakeLink = nullptr;
    QLabel *m_lblVersion = nullptr;
    bool m_validating = false;
};

} // namespace duomir

#pragma once

#include <QDialog>
#include <functional>

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace duomir {

class Engine;

// Puts a launcher that starts Duomir with the current profile and the chosen switches into a
// folder the user picks.
class dlgMakeLink : public QDialog
{
    Q_OBJECT

public:
    explicit dlgMakeLink(Engine &engine, QWidget *parent = nullptr);

    // Asks for the folder (title, start folder); empty when the user cancels. Tests replace it.
    using FolderChooser = std::function<QString(QWidget *, const QString &, const QString &)>;
    static FolderChooser setFolderChooser(FolderChooser chooser);

private:
    void create();

    Engine &m_engine;
    QLineEdit *m_txtName = nullptr;
    QLineEdit *m_txtDescription = nullptr;
    QCheckBox *m_chkHide = nullptr;
    QCheckBox *m_chkDontAsk = nullptr;
    QCheckBox *m_chkAuto = nullptr;
    QPushButton *m_cmdOK = nullptr;
};

} // namespace duomir

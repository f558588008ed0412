#include "ui/dlgmakelink.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include "core/engine.h"
#include "settings/launcher.h"
#include "ui/helppage.h"
#include "ui/localizecontrols.h"

namespace duomir {

namespace {

dlgMakeLink::FolderChooser &folderChooser()
{
    static dlgMakeLink::FolderChooser chooser;
    return chooser;
}

QString chooseFolder(QWidget *parent, const QString &title, const QString &start)
{
    if (folderChooser())
        return folderChooser()(parent, title, start);
    return QFileDialog::getExistingDirectory(parent, title, start);
}

// The icon beside the language files works wherever the program was installed or built; the
// theme name is the fallback.
QString launcherIcon(const QString &programFolder)
{
    const QString file = QDir(programFolder).filePath(QStringLiteral("duomir.svg"));
    return QFileInfo::exists(file) ? file : QStringLiteral("duomir");
}

} // namespace

dlgMakeLink::FolderChooser dlgMakeLink::setFolderChooser(FolderChooser chooser)
{
    return std::exchange(folderChooser(), std::move(chooser));
}

dlgMakeLink::dlgMakeLink(Engine &engine, QWidget *parent) : QDialog(parent), m_engine(engine)
{
    setObjectName(QStringLiteral("dlgMakeLink"));
    setHelpId(this, 50000);
    setHelpPage(this, QStringLiteral("Shortcut.htm"));
    setWindowTitle(QStringLiteral("Create Shortcut"));

    m_txtName = named(new QLineEdit, "txtName", 0);

    m_txtDescription = named(new QLineEdit, "txtDescription", 0);

    auto *lblName = named(new QLabel(QStringLiteral("&Name of shortcut:")), "lblName", 50001);
    auto *lblDescription =
        named(new QLabel(QStringLiteral("&Description:")), "lblDescription", 50002);
    lblName->setToolTip(QStringLiteral("Give the shortcut a name"));
    lblDescription->setToolTip(QStringLiteral("Describes the shortcut's function"));
    lblName->setBuddy(m_txtName);
    lblDescription->setBuddy(m_txtDescription);

    auto *grpOptions = named(new QGroupBox(QStringLiteral("Options")), "fraOptions", 50003);
    m_chkHide = named(new QCheckBox(QStringLiteral("&Hide program window")), "chkHide", 50004);
    m_chkDontAsk = named(new QCheckBox(QStringLiteral("&Don't ask user for intervention")),
                         "chkDontAsk", 50005);
    m_chkAuto = named(new QCheckBox(QStringLiteral("Automatic &synchronization after start")),
                      "chkAuto", 50006);
    auto *optionsBox = new QVBoxLayout(grpOptions);
    optionsBox->addWidget(m_chkHide);
    optionsBox->addWidget(m_chkDontAsk);
    optionsBox->addWidget(m_chkAuto);

    m_cmdOK = named(new QPushButton(QStringLiteral("OK")), "cmdOK", 50007);
    auto *cmdCancel = named(new QPushButton(QStringLiteral("Cancel")), "cmdCancel", 50008);
    m_cmdOK->setDefault(true);

    auto *form = new QFormLayout;
    form->addRow(lblName, m_txtName);
    form->addRow(lblDescription, m_txtDescription);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_cmdOK);
    buttons->addWidget(cmdCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(grpOptions);
    layout->addLayout(buttons);
    m_txtName->setMinimumWidth(320);

    LocalizeControls(this, m_engine.language);
    // The text boxes carry no number of their own (localizing one would fill it in); they share
    // the tips of their labels.
    m_txtName->setToolTip(lblName->toolTip());
    m_txtDescription->setToolTip(lblDescription->toolTip());
    // An automatic run needs a profile to run.
    m_chkAuto->setEnabled(!m_engine.ProfilePath.isEmpty());
    m_cmdOK->setEnabled(false);

    connect(m_txtName, &QLineEdit::textChanged, this,
            [this](const QString &text) { m_cmdOK->setEnabled(!text.isEmpty()); });
    connect(m_cmdOK, &QPushButton::clicked, this, &dlgMakeLink::create);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void dlgMakeLink::create()
{
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    setEnabled(false);
    const QString folder = chooseFolder(this, m_engine.FormatMsg(50800), desktop);
    setEnabled(true);
    if (folder.isEmpty())
        return;

    Launcher launcher;
    launcher.program = QCoreApplication::applicationFilePath();
    launcher.workingFolder = QCoreApplication::applicationDirPath();
    launcher.arguments =
        launcherArguments(m_engine.ProfilePath, m_chkAuto->isEnabled() && m_chkAuto->isChecked(),
                          m_chkDontAsk->isChecked(), m_chkHide->isChecked());
    launcher.icon = launcherIcon(m_engine.ShareFolder);
    launcher.name = m_txtName->text();
    launcher.description = m_txtDescription->text();
    // A failed write is not reported: the dialog closes either way.
    CreateShortcut(launcherFilePath(folder, launcher.name), launcher);
    accept();
}

} // namespace duomir

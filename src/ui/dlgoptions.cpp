#include "ui/dlgoptions.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QFocusEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <optional>

#include "base/inifile.h"
#include "base/interaction.h"
#include "base/timelag.h"
#include "core/engine.h"
#include "settings/settingsfile.h"
#include "ui/dlgabout.h"
#include "ui/dlghint.h"
#include "ui/dlglanguage.h"
#include "ui/dlgmakelink.h"
#include "ui/helppage.h"
#include "ui/localizecontrols.h"
#include "ui/modal.h"
#include "ui/programversion.h"

namespace duomir {

dlgOptions::dlgOptions(Engine &engine, QWidget *parent) : QDialog(parent), m_engine(engine)
{
    setObjectName(QStringLiteral("dlgOptions"));
    setHelpId(this, 10000);
    setHelpPage(this, QStringLiteral("Options.htm"));
    setWindowTitle(QStringLiteral("Options"));
    buildControls();
    m_lblVersion->setText(m_lblVersion->text() + programVersion());
    LocalizeControls(this, m_engine.language);
    fillFromSettings();
    m_cmdMakeLink->setEnabled(!m_engine.ProfilePath.isEmpty());
    m_cmdApply->setEnabled(false);
}

void dlgOptions::buildControls()
{
    auto *grpInclude =
        named(new QGroupBox(QStringLiteral("&Include by default"), this), "fraInclude", 10001);
    m_chkSubDirs = named(new QCheckBox(QStringLiteral("Subdirectories")), "chkSubDirs", 10002);
    m_chkSystem[0] =
        named(new QCheckBox(QStringLiteral("System directories")), "chkSystem0", 10003);
    m_chkHidden[0] =
        named(new QCheckBox(QStringLiteral("Hidden directories")), "chkHidden0", 10004);
    m_chkSystem[1] = named(new QCheckBox(QStringLiteral("System files")), "chkSystem1", 10005);
    m_chkHidden[1] = named(new QCheckBox(QStringLiteral("Hidden files")), "chkHidden1", 10006);
    auto *includeGrid = new QGridLayout(grpInclude);
    includeGrid->addWidget(m_chkSubDirs, 0, 0);
    includeGrid->addWidget(m_chkSystem[0], 1, 0);
    includeGrid->addWidget(m_chkHidden[0], 2, 0);
    includeGrid->addWidget(m_chkSystem[1], 1, 1);
    includeGrid->addWidget(m_chkHidden[1], 2, 1);

    auto *grpExclude =
        named(new QGroupBox(QStringLiteral("Files and directories to exclude by default *"), this),
              "fraExclude", 10007);
    m_txtExcludeDirs = named(new QLineEdit, "txtSearch1", 0);
    m_txtExcludeFiles = named(new QLineEdit, "txtSearch3", 0);
    auto *lblDirs = named(new QLabel(QStringLiteral("&Subdirectories:")), "lblSearch1", 10008);
    auto *lblFiles = named(new QLabel(QStringLiteral("&Files:")), "lblSearch3", 10009);
    lblDirs->setBuddy(m_txtExcludeDirs);
    lblFiles->setBuddy(m_txtExcludeFiles);
    auto *lblHint =
        named(new QLabel(QStringLiteral(
                  "Use  ;  (semicolon) to separate entries. ATTENTION:  *  differs from  *.*  !")),
              "lblSemicolon", 10010);
    lblHint->setWordWrap(true);
    auto *excludeGrid = new QGridLayout(grpExclude);
    excludeGrid->addWidget(lblDirs, 0, 0);
    excludeGrid->addWidget(m_txtExcludeDirs, 0, 1);
    excludeGrid->addWidget(lblFiles, 1, 0);
    excludeGrid->addWidget(m_txtExcludeFiles, 1, 1);
    excludeGrid->addWidget(lblHint, 2, 0, 1, 2);

    m_txtTimeLag = named(new QLineEdit(QStringLiteral("00:00:02")), "txtTimeLag", 0);
    m_txtTimeLag->setMaximumWidth(fontMetrics().horizontalAdvance(u"000:00:00:00"_qs));
    auto *lblTimeLag =
        named(new QLabel(QStringLiteral("time lag allowed before files are recognized as changed")),
              "lblTimeLag", 10014);
    lblTimeLag->setBuddy(m_txtTimeLag);
    m_chkLogToFile =
        named(new QCheckBox(QStringLiteral("Log errors into file")), "chkLogToFile", 10015);
    m_chkLogActions =
        named(new QCheckBox(QStringLiteral("Log every change into file")), "chkLogActions", 10023);
    m_chkButtonBarsWithText = named(new QCheckBox(QStringLiteral("Display text on button bars")),
                                    "chkButtonBarsWithText", 10016);

    // Where a deleted or replaced file goes: the person can always get it back unless they chose
    // otherwise.
    auto *grpKeep =
        named(new QGroupBox(QStringLiteral("Deleted and replaced files"), this), "fraKeep", 10024);
    m_optKeep[Settings::ForGood] =
        named(new QRadioButton(QStringLiteral("&Gone for good")), "optKeep0", 10025);
    m_optKeep[Settings::ToTrash] =
        named(new QRadioButton(QStringLiteral("To the &Trash")), "optKeep1", 10026);
    m_optKeep[Settings::ToVersionsFolder] =
        named(new QRadioButton(QStringLiteral("Into a &versions folder:")), "optKeep2", 10027);
    m_txtVersionsFolder = named(new QLineEdit, "txtVersionsFolder", 10028);
    auto *keepGrid = new QGridLayout(grpKeep);
    keepGrid->addWidget(m_optKeep[Settings::ToTrash], 0, 0, 1, 2);
    keepGrid->addWidget(m_optKeep[Settings::ToVersionsFolder], 1, 0);
    keepGrid->addWidget(m_txtVersionsFolder, 1, 1);
    keepGrid->addWidget(m_optKeep[Settings::ForGood], 2, 0, 1, 2);
    keepGrid->setColumnStretch(1, 1);

    m_cmdApply = named(new QPushButton(QStringLiteral("&Apply")), "cmdApply", 10017);
    m_cmdApply->setToolTip(QStringLiteral("Save options and exit this dialog"));
    m_cmdExit = named(new QPushButton(QStringLiteral("E&xit")), "cmdExit", 10018);
    m_cmdExit->setToolTip(QStringLiteral("Exit this dialog without saving the options"));
    // Leaving never validates the time lag: Exit must not move the focus out of the box.
    m_cmdExit->setFocusPolicy(Qt::TabFocus);
    auto *cmdLanguage =
        named(new QPushButton(QStringLiteral("&Language...")), "cmdLanguage", 10019);
    m_cmdMakeLink =
        named(new QPushButton(QStringLiteral("&Create shortcut...")), "cmdMakeLink", 10020);
    auto *cmdHint = named(new QPushButton(QStringLiteral("&Hint...")), "cmdHint", 10021);
    auto *cmdAbout = named(new QPushButton(QStringLiteral("A&bout...")), "cmdAbout", 10022);
    for (QPushButton *b : {m_cmdApply, m_cmdExit, cmdLanguage, m_cmdMakeLink, cmdHint, cmdAbout})
        b->setAutoDefault(false);
    m_lblVersion = new QLabel(QStringLiteral("Duomir "));
    m_lblVersion->setObjectName(QStringLiteral("lblVersion"));
    m_lblVersion->setEnabled(false);

    auto *timeRow = new QHBoxLayout;
    timeRow->addWidget(m_txtTimeLag);
    timeRow->addWidget(lblTimeLag, 1);

    auto *left = new QVBoxLayout;
    left->addWidget(grpInclude);
    left->addWidget(grpExclude);
    left->addWidget(grpKeep);
    left->addLayout(timeRow);
    left->addWidget(m_chkLogToFile);
    left->addWidget(m_chkLogActions);
    left->addWidget(m_chkButtonBarsWithText);

    auto *right = new QVBoxLayout;
    right->addWidget(m_cmdApply);
    right->addWidget(m_cmdExit);
    right->addSpacing(12);
    right->addWidget(cmdLanguage);
    right->addWidget(m_cmdMakeLink);
    right->addWidget(cmdHint);
    right->addWidget(cmdAbout);
    right->addStretch(1);
    right->addWidget(m_lblVersion, 0, Qt::AlignRight);

    auto *main = new QHBoxLayout(this);
    main->addLayout(left, 1);
    main->addLayout(right);

    for (QCheckBox *c : {m_chkSubDirs, m_chkSystem[0], m_chkSystem[1], m_chkHidden[0],
                         m_chkHidden[1], m_chkLogToFile, m_chkLogActions, m_chkButtonBarsWithText})
        connect(c, &QCheckBox::clicked, this, &dlgOptions::changed);
    for (QLineEdit *e : {m_txtExcludeDirs, m_txtExcludeFiles, m_txtTimeLag, m_txtVersionsFolder})
        connect(e, &QLineEdit::textEdited, this, &dlgOptions::changed);
    for (QRadioButton *o : m_optKeep) {
        connect(o, &QRadioButton::clicked, this, &dlgOptions::changed);
        connect(o, &QRadioButton::toggled, this, &dlgOptions::syncKeepOptions);
    }
    connect(m_chkSubDirs, &QCheckBox::clicked, this, &dlgOptions::syncDirectoryOptions);
    m_txtTimeLag->installEventFilter(this);

    connect(m_cmdApply, &QPushButton::clicked, this, &dlgOptions::apply);
    connect(m_cmdExit, &QPushButton::clicked, this, &QDialog::reject);
    connect(cmdLanguage, &QPushButton::clicked, this, &dlgOptions::showLanguage);
    connect(m_cmdMakeLink, &QPushButton::clicked, this, [this] {
        dlgMakeLink dlg(m_engine, this);
        execModal(dlg);
    });
    connect(cmdHint, &QPushButton::clicked, this, [this] {
        dlgHint dlg(m_engine, this);
        execModal(dlg);
    });
    connect(cmdAbout, &QPushButton::clicked, this, [this] {
        dlgAbout dlg(m_engine, this);
        execModal(dlg);
    });
}

void dlgOptions::fillFromSettings()
{
    const Settings &s = m_engine.settings;
    m_txtExcludeDirs->setText(s.ExcludeDirs);
    m_txtExcludeFiles->setText(s.ExcludeFiles);
    m_txtTimeLag->setText(timeLagToText(s.TimeLag));
    m_chkSubDirs->setChecked(s.SubDirs);
    m_chkSystem[0]->setChecked(s.SysDirs);
    m_chkSystem[1]->setChecked(s.SysFiles);
    m_chkHidden[0]->setChecked(s.HiddenDirs);
    m_chkHidden[1]->setChecked(s.HiddenFiles);
    m_chkLogToFile->setChecked(s.LogToFile);
    m_chkLogActions->setChecked(s.LogActions);
    m_chkButtonBarsWithText->setChecked(s.ButtonBarsWithText);
    m_optKeep[size_t(std::clamp(s.Versioning, 0, 2))]->setChecked(true);
    m_txtVersionsFolder->setText(s.VersionsFolder);
    syncDirectoryOptions();
    syncKeepOptions();
}

void dlgOptions::syncKeepOptions()
{
    m_txtVersionsFolder->setEnabled(m_optKeep[Settings::ToVersionsFolder]->isChecked());
}

void dlgOptions::changed()
{
    m_cmdApply->setEnabled(true);
}

void dlgOptions::syncDirectoryOptions()
{
    // Without subdirectories the kinds of directory to include mean nothing.
    const bool on = m_chkSubDirs->isChecked();
    m_chkSystem[0]->setEnabled(on);
    m_chkHidden[0]->setEnabled(on);
}

bool dlgOptions::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_txtTimeLag && event->type() == QEvent::FocusOut && !m_validating) {
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        // Switching to another window or opening a menu is not leaving the box.
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            validateTimeLag();
    }
    return QDialog::eventFilter(watched, event);
}

bool dlgOptions::validateTimeLag()
{
    // Unlike the settings reader, which reads what is not a time as no lag, the box refuses it,
    // so that a typing error is not silently stored as zero; and the box takes a time of day.
    const auto lag = parseTimeLag(m_txtTimeLag->text());
    if (lag && *lag < 1.0) {
        m_txtTimeLag->setText(timeLagToText(*lag));
        return true;
    }
    m_validating = true;
    m_cmdApply->setEnabled(false);
    // A click on a check box moved the focus here: the box opens between its press and its
    // release, so the check box never hears the release and would stay drawn pressed.
    const QPointer<QAbstractButton> pressed =
        qobject_cast<QAbstractButton *>(QWidget::mouseGrabber());
    m_engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                          m_engine.FormatMsg(10800));
    if (pressed)
        pressed->setDown(false);
    // The focus is still on its way to the next control; take it back once it has arrived.
    QTimer::singleShot(0, m_txtTimeLag, [edit = m_txtTimeLag] {
        edit->setFocus(Qt::OtherFocusReason);
        edit->selectAll();
    });
    m_validating = false;
    return false;
}

void dlgOptions::apply()
{
    if (!validateTimeLag())
        return;
    m_cmdApply->setEnabled(false);
    Settings &s = m_engine.settings;
    s.ExcludeDirs = m_txtExcludeDirs->text();
    s.ExcludeFiles = m_txtExcludeFiles->text();
    s.TimeLag = parseTimeLag(m_txtTimeLag->text()).value_or(0.0);
    s.LogToFile = m_chkLogToFile->isChecked();
    s.LogActions = m_chkLogActions->isChecked();
    s.ButtonBarsWithText = m_chkButtonBarsWithText->isChecked();
    for (int mode = 0; mode < 3; ++mode) {
        if (m_optKeep[size_t(mode)]->isChecked())
            s.Versioning = mode;
    }
    s.VersionsFolder = m_txtVersionsFolder->text().trimmed();
    if (s.VersionsFolder.isEmpty())
        s.VersionsFolder = Settings().VersionsFolder;
    s.SubDirs = m_chkSubDirs->isChecked();
    for (int i = 0; i < 2; ++i) {
        s.sys(i) = m_chkSystem[i]->isChecked();
        s.hidden(i) = m_chkHidden[i]->isChecked();
    }
    IniFile file(m_engine.SettingsFile);
    WriteOptions(file, s);
    Q_EMIT optionsApplied();
}

void dlgOptions::showLanguage()
{
    dlgLanguage dlg(m_engine, this);
    connect(&dlg, &dlgLanguage::languageChanged, this, &dlgOptions::languageChanged);
    execModal(dlg);
    LocalizeControls(this, m_engine.language);
}

} // namespace duomir

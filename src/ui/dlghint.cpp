#include "ui/dlghint.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/inifile.h"
#include "core/engine.h"
#include "settings/settingsfile.h"
#include "ui/helppage.h"
#include "ui/localizecontrols.h"
#include "ui/programversion.h"

namespace duomir {

dlgHint::dlgHint(Engine &engine, QWidget *parent) : QDialog(parent), m_engine(engine)
{
    setObjectName(QStringLiteral("dlgHint"));
    setHelpId(this, 60000);
    setHelpPage(this, QStringLiteral("Main.htm"));
    setWindowTitle(QStringLiteral("Hint"));

    auto *lblVersion = new QLabel(QStringLiteral("Duomir "));
    lblVersion->setObjectName(QStringLiteral("lblVersion"));
    QFont bold = lblVersion->font();
    bold.setBold(true);
    lblVersion->setFont(bold);
    // Read-only: the text can be selected and scrolled, never changed.
    auto *txtInfo = new QPlainTextEdit;
    txtInfo->setObjectName(QStringLiteral("txtInfo"));
    txtInfo->setReadOnly(true);
    txtInfo->setMinimumSize(520, 380);
    auto *chkAgain = new QCheckBox(QStringLiteral("&Don't show this hint again"));
    chkAgain->setObjectName(QStringLiteral("chkAgain"));
    setHelpId(chkAgain, 60001);
    auto *cmdOK = new QPushButton(QStringLiteral("OK"));
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    setHelpId(cmdOK, 60002);
    cmdOK->setDefault(true);

    auto *bottom = new QHBoxLayout;
    bottom->addWidget(chkAgain, 1);
    bottom->addWidget(cmdOK);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(lblVersion);
    layout->addWidget(txtInfo, 1);
    layout->addLayout(bottom);

    lblVersion->setText(lblVersion->text() + programVersion());
    LocalizeControls(this, m_engine.language);
    txtInfo->setPlainText(hintText(m_engine));
    chkAgain->setChecked(m_engine.settings.DontShowHint);

    connect(chkAgain, &QCheckBox::clicked, this, [this](bool checked) {
        m_engine.settings.DontShowHint = checked;
        IniFile file(m_engine.SettingsFile);
        WriteDontShowHint(file, checked);
    });
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    cmdOK->setFocus();
}

QString dlgHint::hintText(const Engine &engine)
{
    QString text;
    for (int n = 1; n <= 10; ++n)
        text += engine.language.FormatMsg(u"hint" + QString::number(n));
    // The parts end their lines Windows-style; the text box wants plain line feeds.
    text.replace(u"\r\n"_qs, u"\n"_qs);
    return text;
}

} // namespace duomir

#include "ui/dlglanguage.h"

#include <QComboBox>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/inifile.h"
#include "core/engine.h"
#include "settings/settingsfile.h"
#include "ui/helppage.h"
#include "ui/localizecontrols.h"
#include "ui/modal.h"

namespace duomir {

dlgLanguage::dlgLanguage(Engine &engine, QWidget *parent) : QDialog(parent), m_engine(engine)
{
    setObjectName(QStringLiteral("dlgLanguage"));
    setHelpId(this, 30000);
    setHelpPage(this, QStringLiteral("Main.htm"));
    setWindowTitle(QStringLiteral("Language"));

    auto *lbl = new QLabel(QStringLiteral("Please select your language!"));
    lbl->setObjectName(QStringLiteral("lblSelect"));
    setHelpId(lbl, 30001);
    m_cboLanguage = new QComboBox;
    m_cboLanguage->setObjectName(QStringLiteral("cboLanguage"));
    m_cboLanguage->setMinimumWidth(200);
    auto *cmdOK = new QPushButton(QStringLiteral("OK"));
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    setHelpId(cmdOK, 30002);
    cmdOK->setDefault(true);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(lbl);
    layout->addWidget(m_cboLanguage);
    layout->addStretch(1);
    layout->addLayout(buttons);

    // The file name stays with each entry: a language file may translate the shown names.
    for (const QString &name : Language::available(m_engine.ShareFolder))
        m_cboLanguage->addItem(name, name);
    m_cboLanguage->setCurrentIndex(m_cboLanguage->findData(m_engine.settings.Language));
    LocalizeControls(this, m_engine.language);

    connect(cmdOK, &QPushButton::clicked, this, &dlgLanguage::choose);
}

void dlgLanguage::choose()
{
    if (m_cboLanguage->currentIndex() >= 0) {
        const QString name = m_cboLanguage->currentData().toString();
        m_engine.settings.Language = name;
        IniFile file(m_engine.SettingsFile);
        WriteLanguage(file, name);
        m_engine.language =
            Language::load(Language::filePath(m_engine.ShareFolder, name), &m_engine.ui());
        LocalizeControls(this, m_engine.language);
        Q_EMIT languageChanged();
    }
    accept();
}

void dlgLanguage::done(int result)
{
    // Escape and the window's close button end here too.
    if (m_cboLanguage->currentIndex() < 0) {
        beep();
        return;
    }
    QDialog::done(result);
}

} // namespace duomir

#include "ui/dlgdirs.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "core/engine.h"
#include "core/pairvalidation.h"
#include "ui/helppage.h"
#include "ui/localizecontrols.h"

namespace duomir {

dlgDirs::dlgDirs(Engine &engine, QWidget *parent) : QDialog(parent), m_engine(&engine)
{
    setObjectName(QStringLiteral("dlgDirs"));
    setHelpId(this, 20000);
    setHelpPage(this, QStringLiteral("Dirs.htm"));
    setWindowTitle(QStringLiteral("Directory pair"));
    buildLayout();
    LocalizeControls(this, engine.language);
}

void dlgDirs::buildLayout()
{
    auto *paths = new QGridLayout;
    const std::array<QString, 2> pathCaptions{QStringLiteral("&Source directory:"),
                                              QStringLiteral("&Destination directory:")};
    for (int i = 0; i < 2; ++i) {
        const auto n = static_cast<size_t>(i);
        auto *label =
            named(new QLabel(pathCaptions[n], this), QStringLiteral("lblPath%1").arg(i), 20001 + i);
        m_txtPath[n] = named(new QLineEdit(this), QStringLiteral("txtPath%1").arg(i), 20003 + i);
        m_txtPath[n]->setMinimumWidth(420);
        m_txtPath[n]->setClearButtonEnabled(true);
        label->setBuddy(m_txtPath[n]);
        m_cmdGetDir[n] =
            named(new QToolButton(this), QStringLiteral("cmdGetDir%1").arg(i), 20005 + i);
        m_cmdGetDir[n]->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
        m_cmdGetDir[n]->setToolTip(QStringLiteral("Choose a folder"));
        connect(m_cmdGetDir[n], &QToolButton::clicked, this, [this, i] { cmdGetDir_Click(i); });
        paths->addWidget(label, i, 0);
        paths->addWidget(m_txtPath[n], i, 1);
        paths->addWidget(m_cmdGetDir[n], i, 2);
    }

    auto *include =
        named(new QGroupBox(QStringLiteral("Include"), this), QStringLiteral("fraInclude"), 20010);
    auto *includeLayout = new QVBoxLayout(include);
    m_chkSubDirs = named(new QCheckBox(QStringLiteral("S&ubdirectories"), include),
                         QStringLiteral("chkSubDirs"), 20011);
    m_chkSystem[0] = named(new QCheckBox(QStringLiteral("S&ystem directories"), include),
                           QStringLiteral("chkSystem0"), 20012);
    m_chkHidden[0] = named(new QCheckBox(QStringLiteral("&Hidden directories"), include),
                           QStringLiteral("chkHidden0"), 20013);
    m_chkSystem[1] = named(new QCheckBox(QStringLiteral("Sys&tem files"), include),
                           QStringLiteral("chkSystem1"), 20014);
    m_chkHidden[1] = named(new QCheckBox(QStringLiteral("Hidd&en files"), include),
                           QStringLiteral("chkHidden1"), 20015);
    includeLayout->addWidget(m_chkSubDirs);
    // The directory switches belong to Subdirectories and stand indented under it.
    auto *dirSwitches = new QVBoxLayout;
    dirSwitches->setContentsMargins(20, 0, 0, 0);
    dirSwitches->addWidget(m_chkSystem[0]);
    dirSwitches->addWidget(m_chkHidden[0]);
    includeLayout->addLayout(dirSwitches);
    includeLayout->addSpacing(6);
    includeLayout->addWidget(m_chkSystem[1]);
    includeLayout->addWidget(m_chkHidden[1]);
    includeLayout->addStretch();

    // A check box writes into the working copy at once; so does a mask box, as typed.
    connect(m_chkSubDirs, &QCheckBox::toggled, this, [this](bool on) {
        m_pair.SubDirs = on;
        updateEnabling();
    });
    connect(m_chkSystem[0], &QCheckBox::toggled, this, [this](bool on) { m_pair.SysDirs = on; });
    connect(m_chkSystem[1], &QCheckBox::toggled, this, [this](bool on) { m_pair.SysFiles = on; });
    connect(m_chkHidden[0], &QCheckBox::toggled, this, [this](bool on) { m_pair.HiddenDirs = on; });
    connect(m_chkHidden[1], &QCheckBox::toggled, this,
            [this](bool on) { m_pair.HiddenFiles = on; });

    auto *masks = named(new QGroupBox(QStringLiteral("Name masks"), this),
                        QStringLiteral("fraSearch"), 20020);
    auto *maskBox = new QVBoxLayout(masks);
    auto *maskLayout = new QFormLayout;
    maskBox->addLayout(maskLayout);
    const std::array<QString, 4> maskCaptions{
        QStringLiteral("Include subdirectories:"), QStringLiteral("Exclude subdirectories:"),
        QStringLiteral("Include files:"), QStringLiteral("Exclude files:")};
    QString DirPair::*const fields[] = {&DirPair::IncludeDirs, &DirPair::ExcludeDirs,
                                        &DirPair::IncludeFiles, &DirPair::ExcludeFiles};
    for (int i = 0; i < 4; ++i) {
        const auto n = static_cast<size_t>(i);
        auto *label = named(new QLabel(maskCaptions[n], masks),
                            QStringLiteral("lblSearch%1").arg(i), 20021 + i);
        m_txtSearch[n] =
            named(new QLineEdit(masks), QStringLiteral("txtSearch%1").arg(i), 20025 + i);
        if (i % 2 == 1)
            m_txtSearch[n]->setPlaceholderText(QStringLiteral("*.tmp;*.bak"));
        // Long captions (German) must not squeeze the boxes down to a few characters.
        m_txtSearch[n]->setMinimumWidth(fontMetrics().horizontalAdvance(QString(22, u'x')));
        maskLayout->addRow(label, m_txtSearch[n]);
        QString DirPair::*field = fields[i];
        connect(m_txtSearch[n], &QLineEdit::textEdited, this,
                [this, field](const QString &t) { m_pair.*field = t; });
    }
    auto *hint = named(new QLabel(QStringLiteral("Patterns are separated by \";\". Use \"*\" for "
                                                 "every name: \"*.*\" takes only names that "
                                                 "contain a dot."),
                                  masks),
                       QStringLiteral("lblSearchHint"), 20029);
    hint->setWordWrap(true);
    hint->setEnabled(false);
    maskBox->addWidget(hint);
    maskBox->addStretch(1);

    auto *options = new QHBoxLayout;
    options->addWidget(include);
    options->addWidget(masks, 1);

    m_cmdOK = named(new QPushButton(QStringLiteral("OK"), this), QStringLiteral("cmdOK"), 20040);
    m_cmdCancel =
        named(new QPushButton(QStringLiteral("Cancel"), this), QStringLiteral("cmdCancel"), 20041);
    m_cmdOK->setDefault(true);
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(m_cmdCancel, QDialogButtonBox::RejectRole);
    // OK validates first; the box would otherwise accept at once.
    connect(m_cmdOK, &QPushButton::clicked, this, &dlgDirs::cmdOK_Click);
    connect(m_cmdCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *root = new QVBoxLayout(this);
    root->addLayout(paths);
    root->addSpacing(4);
    root->addLayout(options);
    root->addWidget(buttons);
}

void dlgDirs::Init(int index)
{
    m_index = index;
    m_pair = m_engine->pairs[index];
    const DirPair &pathsFrom =
        (m_pair.Source.isEmpty() && index >= 1) ? m_engine->pairs[index - 1] : m_pair;
    m_browseStart = {pathsFrom.Source, pathsFrom.Destination};
    m_txtPath[0]->setText(pathsFrom.Source);
    m_txtPath[1]->setText(pathsFrom.Destination);

    const DirPair pair = m_pair; // the toggled() handlers write into m_pair while we set them
    const std::array<QString, 4> masks{pair.IncludeDirs, pair.ExcludeDirs, pair.IncludeFiles,
                                       pair.ExcludeFiles};
    for (size_t i = 0; i < masks.size(); ++i)
        m_txtSearch[i]->setText(masks[i]);
    m_chkSubDirs->setChecked(pair.SubDirs);
    m_chkSystem[0]->setChecked(pair.SysDirs);
    m_chkSystem[1]->setChecked(pair.SysFiles);
    m_chkHidden[0]->setChecked(pair.HiddenDirs);
    m_chkHidden[1]->setChecked(pair.HiddenFiles);
    m_pair = pair;
    updateEnabling();
}

void dlgDirs::updateEnabling()
{
    const bool on = m_chkSubDirs->isChecked();
    m_txtSearch[0]->setEnabled(on);
    m_txtSearch[1]->setEnabled(on);
    m_chkSystem[0]->setEnabled(on);
    m_chkHidden[0]->setEnabled(on);
}

void dlgDirs::cmdOK_Click()
{
    for (QLineEdit *box : m_txtPath) {
        const QString trimmed = withoutTrailingSeparator(box->text());
        if (trimmed != box->text())
            box->setText(trimmed);
    }
    m_pair.Source = m_txtPath[0]->text();
    m_pair.Destination = m_txtPath[1]->text();
    const MessageText text = [this](int key, const QStringList &params) {
        return m_engine->FormatMsg(key, params);
    };
    if (!confirmPair(m_pair, m_index, m_engine->pairs, m_engine->ui(), text))
        return;
    m_engine->pairs[m_index] = m_pair;
    accept();
}

void dlgDirs::cmdGetDir_Click(int i)
{
    const auto n = static_cast<size_t>(i);
    const QString start = m_txtPath[n]->text().isEmpty() ? m_browseStart[n] : m_txtPath[n]->text();
    const QString title = m_engine->FormatMsg(20800, {m_engine->FormatMsg(20801 + i)});
    const QString chosen = QFileDialog::getExistingDirectory(
        this, title.isEmpty() ? QStringLiteral("Choose a folder") : title, start);
    if (!chosen.isEmpty())
        m_txtPath[n]->setText(QDir::toNativeSeparators(chosen));
}

} // namespace duomir

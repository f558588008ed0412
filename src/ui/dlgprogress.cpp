#include "ui/dlgprogress.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QDir>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "core/engine.h"
#include "ui/localizecontrols.h"

namespace duomir {

namespace {

QString withoutLastCharacter(const QString &dir)
{
    return dir.endsWith(QDir::separator()) && dir.size() > 1 ? dir.left(dir.size() - 1) : dir;
}

void setIfChanged(QLabel *label, const QString &text)
{
    if (label->text() != text)
        label->setText(text);
}

} // namespace

dlgProgress::dlgProgress(Engine &engine, QWidget *parent) : QDialog(parent), m_engine(&engine)
{
    setObjectName(QStringLiteral("dlgProgress"));
    setHelpId(this, 40000);
    setWindowTitle(QStringLiteral("Copying"));
    setModal(false);

    auto *captionFrom = new QLabel(QStringLiteral("From:"), this);
    captionFrom->setObjectName(QStringLiteral("lblCaptionFrom"));
    setHelpId(captionFrom, 40001);
    auto *captionTo = new QLabel(QStringLiteral("To:"), this);
    captionTo->setObjectName(QStringLiteral("lblCaptionTo"));
    setHelpId(captionTo, 40002);

    m_lblFrom = new QLabel(this);
    m_lblFrom->setObjectName(QStringLiteral("lblFrom"));
    m_lblTo = new QLabel(this);
    m_lblTo->setObjectName(QStringLiteral("lblTo"));
    m_lblFile = new QLabel(this);
    m_lblFile->setObjectName(QStringLiteral("lblFile"));
    QFont bold = m_lblFile->font();
    bold.setBold(true);
    m_lblFile->setFont(bold);
    for (QLabel *label : {m_lblFrom, m_lblTo, m_lblFile}) {
        label->setTextFormat(Qt::PlainText);
        label->setMinimumWidth(460);
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }

    m_lblProgress = new QProgressBar(this);
    m_lblProgress->setObjectName(QStringLiteral("lblProgress"));
    m_lblProgress->setRange(0, 1000);
    m_lblProgress->setTextVisible(false);
    m_lblProgressPercent = new QLabel(QStringLiteral("0 %"), this);
    m_lblProgressPercent->setObjectName(QStringLiteral("lblProgressPercent"));
    m_lblProgressPercent->setMinimumWidth(
        m_lblProgressPercent->fontMetrics().horizontalAdvance(QStringLiteral("100 %  ")));
    m_lblProgressPercent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    m_cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    m_cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    setHelpId(m_cmdCancel, 40003);
    connect(m_cmdCancel, &QPushButton::clicked, this, &dlgProgress::cmdCancel_Click);

    auto *form = new QFormLayout;
    form->addRow(captionFrom, m_lblFrom);
    form->addRow(captionTo, m_lblTo);
    auto *bar = new QHBoxLayout;
    bar->addWidget(m_lblProgress, 1);
    bar->addWidget(m_lblProgressPercent);
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_cmdCancel, QDialogButtonBox::RejectRole);

    auto *root = new QVBoxLayout(this);
    root->addLayout(form);
    root->addSpacing(6);
    root->addWidget(m_lblFile);
    root->addLayout(bar);
    root->addWidget(buttons);
    LocalizeControls(this, engine.language);
}

void dlgProgress::Init(std::int64_t total)
{
    m_total = total;
    m_finished = 0;
    m_lastPercent = 0;
    m_lastPermille = 0;
    m_lblProgress->setValue(0);
    m_lblProgressPercent->setText(QStringLiteral("0 %"));
    m_lblFile->clear();
    m_lblFrom->clear();
    m_lblTo->clear();
    m_cmdCancel->setEnabled(true);
    show();
    raise();
}

void dlgProgress::showDone(std::int64_t done)
{
    // An empty run (every file of size 0) stays at 0 % rather than dividing by zero.
    if (m_total <= 0)
        return;
    const double share = static_cast<double>(done) / static_cast<double>(m_total);
    const int percent = static_cast<int>(std::lround(std::min(1.0, share) * 100.0));
    if (percent > m_lastPercent) {
        m_lastPercent = percent;
        m_lblProgressPercent->setText(QString::number(percent) + QStringLiteral(" %"));
    }
    const int permille = static_cast<int>(std::min(1.0, share) * 1000.0);
    if (permille > m_lastPermille) {
        m_lastPermille = permille;
        m_lblProgress->setValue(permille);
    }
}

void dlgProgress::Update(std::int64_t /*fileSize*/, std::int64_t bytesCopied)
{
    showDone(m_finished + bytesCopied);
}

void dlgProgress::FileDone(std::int64_t size)
{
    m_finished += size;
    showDone(m_finished);
}

void dlgProgress::ShowFile(const QString &sourceDir, const QString &destDir,
                           const QString &fileName)
{
    setIfChanged(m_lblFile, fileName);
    setIfChanged(m_lblFrom, withoutLastCharacter(sourceDir));
    setIfChanged(m_lblTo, withoutLastCharacter(destDir));
    QApplication::processEvents();
}

void dlgProgress::cmdCancel_Click()
{
    m_engine->CancelFlag = true;
    m_cmdCancel->setEnabled(false);
}

void dlgProgress::reject()
{
    // Escape cancels the run instead of hiding the window while files are still being copied.
    cmdCancel_Click();
}

void dlgProgress::closeEvent(QCloseEvent *event)
{
    // Closing the window while a copy runs means the same as Cancel; the run hides it at the end.
    cmdCancel_Click();
    event->ignore();
}

} // namespace duomir

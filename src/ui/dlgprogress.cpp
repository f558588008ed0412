#include "ui/dlgprogress.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/engine.h"
#include "ui/localizecontrols.h"

namespace duomir {

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

void dlgProgress::setVisible(bool visible)
{
    if (visible) {
        m_cmdCancel->setEnabled(true);
        m_lblFile->clear();
        m_lblFrom->clear();
        m_lblTo->clear();
    }
    QDialog::setVisible(visible);
    if (visible)
        raise();
}

void dlgProgress::setPercentText(const QString &text)
{
    m_lblProgressPercent->setText(text);
}

void dlgProgress::setBarWidth(int width)
{
    m_lblProgress->setValue(width);
}

void dlgProgress::setFrom(const QString &directory)
{
    m_lblFrom->setText(directory);
}

void dlgProgress::setTo(const QString &directory)
{
    m_lblTo->setText(directory);
}

void dlgProgress::setFileName(const QString &name)
{
    if (m_lblFile->text() != name)
        m_lblFile->setText(name);
}

int dlgProgress::fullBarWidth() const
{
    return m_lblProgress->maximum();
}

void dlgProgress::cmdCancel_Click()
{
    m_engine->run().cancel();
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

#include "ui/dlgabout.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrlQuery>
#include <QVBoxLayout>

#include "core/engine.h"
#include "ui/helppage.h"
#include "ui/localizecontrols.h"
#include "ui/programversion.h"

namespace duomir {

namespace {

QLabel *linkLabel(const QString &name, const QString &text)
{
    auto *label = new QLabel;
    label->setObjectName(name);
    // Shown as a link, opened by our own handler so that the target is exactly the language's.
    label->setText(u"<a href=\"#\">" + text.toHtmlEscaped() + u"</a>");
    label->setTextFormat(Qt::RichText);
    label->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    label->setCursor(Qt::PointingHandCursor);
    return label;
}

} // namespace

dlgAbout::dlgAbout(Engine &engine, QWidget *parent) : QDialog(parent), m_engine(engine)
{
    setObjectName(QStringLiteral("dlgAbout"));
    setHelpId(this, 70000);
    setHelpPage(this, QStringLiteral("Main.htm"));
    setWindowTitle(QStringLiteral("About Duomir"));

    auto *icon = new QLabel;
    icon->setObjectName(QStringLiteral("imgIcon"));
    const QPixmap pixmap = windowIcon().pixmap(64, 64);
    icon->setPixmap(pixmap);
    icon->setVisible(!pixmap.isNull());
    auto *lblProduct = new QLabel(QStringLiteral("Duomir"));
    lblProduct->setObjectName(QStringLiteral("lblProduct"));
    QFont big = lblProduct->font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    big.setBold(true);
    lblProduct->setFont(big);
    auto *lblPurpose = new QLabel(QStringLiteral("Keeps pairs of directories in step."));
    lblPurpose->setObjectName(QStringLiteral("lblPurpose"));
    setHelpId(lblPurpose, 70001);
    m_lblVersion = new QLabel(QStringLiteral("Version "));
    m_lblVersion->setObjectName(QStringLiteral("lblVersion"));
    m_lblVersion->setText(m_lblVersion->text() + programVersion());

    const QString homepage = m_engine.language.FormatMsg(QStringLiteral("homepage"));
    const QString email = m_engine.language.FormatMsg(QStringLiteral("email"));
    auto *lblHomePage = linkLabel(QStringLiteral("lblHomePage"), homepage);
    auto *lblMailTo = linkLabel(QStringLiteral("lblMailTo"), email);

    auto *cmdOK = new QPushButton(QStringLiteral("OK"));
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    setHelpId(cmdOK, 70002);
    cmdOK->setDefault(true);

    auto *texts = new QVBoxLayout;
    texts->addWidget(lblProduct);
    texts->addWidget(m_lblVersion);
    texts->addWidget(lblPurpose);
    texts->addSpacing(8);
    texts->addWidget(lblHomePage);
    texts->addWidget(lblMailTo);
    auto *top = new QHBoxLayout;
    top->addWidget(icon, 0, Qt::AlignTop);
    top->addSpacing(12);
    top->addLayout(texts, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addSpacing(8);
    layout->addLayout(buttons);

    LocalizeControls(this, m_engine.language);

    connect(lblHomePage, &QLabel::linkActivated, this,
            [this] { QDesktopServices::openUrl(homePageUrl()); });
    connect(lblMailTo, &QLabel::linkActivated, this,
            [this] { QDesktopServices::openUrl(mailUrl()); });
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
}

QUrl dlgAbout::homePageUrl() const
{
    return QUrl::fromUserInput(m_engine.language.FormatMsg(QStringLiteral("homepage")));
}

QUrl dlgAbout::mailUrl() const
{
    QUrl url(u"mailto:" + m_engine.language.FormatMsg(QStringLiteral("email")));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("subject"), u"Duomir " + m_lblVersion->text());
    url.setQuery(query);
    return url;
}

} // namespace duomir

#include "ui/localizecontrols.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QLabel>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QTranslator>
#include <QWidget>

#include "localization/language.h"

namespace duomir {

void setHelpId(QObject *object, int id)
{
    object->setProperty(HelpIdProperty, id);
}

int helpId(const QObject *object)
{
    return object->property(HelpIdProperty).toInt();
}

namespace {

void setCaption(QObject *object, const QString &text)
{
    if (auto *edit = qobject_cast<QLineEdit *>(object))
        edit->setText(text);
    else if (auto *plain = qobject_cast<QPlainTextEdit *>(object))
        plain->setPlainText(text);
    else if (auto *rich = qobject_cast<QTextEdit *>(object))
        rich->setPlainText(text);
    else if (auto *button = qobject_cast<QAbstractButton *>(object))
        button->setText(text);
    else if (auto *label = qobject_cast<QLabel *>(object))
        label->setText(text);
    else if (auto *group = qobject_cast<QGroupBox *>(object))
        group->setTitle(text);
    else if (auto *action = qobject_cast<QAction *>(object))
        action->setText(text);
    else if (auto *widget = qobject_cast<QWidget *>(object); widget && widget->isWindow())
        widget->setWindowTitle(text);
}

void setToolTip(QObject *object, const QString &tip)
{
    if (auto *widget = qobject_cast<QWidget *>(object))
        widget->setToolTip(tip);
    else if (auto *action = qobject_cast<QAction *>(object))
        action->setToolTip(tip);
}

void LocalizeObject(QObject *object, const Language &language)
{
    const int id = helpId(object);
    if (id == 0)
        return;
    const QString key = QString::number(id);
    // One working text serves the tool tip and then the caption: a key with a tool tip but no text
    // therefore shows its tool tip as the caption too.
    QString value = language.toolTip(key);
    if (!value.isEmpty())
        setToolTip(object, value);
    const QString text = language.text(key);
    if (!text.isEmpty())
        value = text;
    if (!value.isEmpty())
        setCaption(object, value);
}

void LocalizeCombo(QComboBox *combo, const Language &language)
{
    for (int i = 0; i < combo->count(); ++i) {
        const QString text = language.text(combo->itemText(i));
        if (!text.isEmpty())
            combo->setItemText(i, text);
    }
}

} // namespace

void ApplyLanguageLocale(const Language &language)
{
    static QTranslator qtTexts;
    const QString name = language.FormatMsg(QStringLiteral("locale"));
    const QLocale locale(name.isEmpty() || name == u"locale" ? QStringLiteral("en_US") : name);
    QLocale::setDefault(locale);
    QCoreApplication::removeTranslator(&qtTexts);
    if (qtTexts.load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                     QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&qtTexts);
}

void LocalizeControls(QWidget *form, const Language &language)
{
    if (!language.isLoaded())
        return;
    LocalizeObject(form, language);
    const QList<QObject *> children = form->findChildren<QObject *>();
    for (QObject *child : children) {
        if (auto *combo = qobject_cast<QComboBox *>(child))
            LocalizeCombo(combo, language);
        else if (qobject_cast<QWidget *>(child) || qobject_cast<QAction *>(child))
            LocalizeObject(child, language);
    }
}

} // namespace duomir

#include "localization/language.h"

#include <QDir>
#include <QFileInfo>

#include "base/inifile.h"
#include "base/interaction.h"

namespace duomir {

namespace {

// The loader saw the language file through fixed buffers: 254 characters per value and 32766 for
// the list of keys (each counted with its terminating zero).
constexpr int MaxValueChars = 254;
constexpr int MaxKeyListChars = 32766;

QString fold(const QString &key)
{
    return key.toCaseFolded();
}

QString lookup(const QHash<QString, QString> &table, const QString &key)
{
    const QString value = table.value(fold(key));
    if (value.startsWith(u':'))
        return table.value(fold(value.mid(1)));
    return value;
}

QString format(QString text, const QStringList &params)
{
    for (qsizetype n = 0; n < params.size(); ++n)
        text.replace(u'%' + QString::number(n + 1), params[n]);
    text.replace(QStringLiteral("\\r"), QStringLiteral("\r"));
    text.replace(QStringLiteral("\\n"), QStringLiteral("\n"));
    return text;
}

} // namespace

Language Language::load(const QString &file, Interaction *ui)
{
    Language lang;
    lang.m_file = QFileInfo(file).absoluteFilePath();
    const IniFile ini(file);
    if (!ini.exists())
        return lang;
    lang.m_loaded = true;

    const auto store = [&](QHash<QString, QString> &table, const QString &key,
                           const QString &part) {
        if (part.isEmpty())
            return;
        if (table.contains(fold(key))) {
            if (ui) {
                ui->message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                            u"Item " + key + u" exists twice in language file!", lang.m_file);
            }
            return;
        }
        table.insert(fold(key), part);
    };

    int listed = 0;
    for (const QString &key : ini.keyLines(QString())) {
        listed += int(key.size()) + 1;
        if (listed > MaxKeyListChars)
            break;
        const QStringList parts = ini.readString(QString(), key, {}, MaxValueChars).split(u'|');
        store(lang.m_texts, key, parts[0]);
        if (parts.size() > 1)
            store(lang.m_toolTips, key, parts[1]);
    }
    return lang;
}

QString Language::filePath(const QString &folder, const QString &name)
{
    return QDir(folder).filePath(name + u".lang");
}

QStringList Language::available(const QString &folder)
{
    QStringList names;
    const QFileInfoList files = QDir(folder).entryInfoList(
        {QStringLiteral("*.lang")}, QDir::Files | QDir::Readable | QDir::CaseSensitive,
        QDir::Name | QDir::IgnoreCase);
    for (const QFileInfo &info : files)
        names.append(info.completeBaseName());
    return names;
}

QString Language::text(const QString &key) const
{
    return lookup(m_texts, key);
}

QString Language::toolTip(const QString &key) const
{
    return lookup(m_toolTips, key);
}

// Messages take their stored text as it stands: a ":" reference is a control's affair only.
QString Language::FormatMsg(const QString &key, const QStringList &params) const
{
    return format(m_texts.value(fold(key)), params);
}

QString Language::FormatToolTip(const QString &key, const QStringList &params) const
{
    return format(m_toolTips.value(fold(key)), params);
}

} // namespace duomir

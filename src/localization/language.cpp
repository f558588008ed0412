#include "localization/language.h"

namespace duomir {

// Placeholder: the language-file loader comes with the localization work.
Language Language::load(const QString &file, Interaction *)
{
    Language lang;
    lang.m_file = file;
    return lang;
}

QString Language::text(const QString &key) const
{
    return m_texts.value(key);
}

QString Language::toolTip(const QString &key) const
{
    return m_toolTips.value(key);
}

QString Language::FormatMsg(const QString &key, const QStringList &) const
{
    return text(key);
}

QString Language::FormatToolTip(const QString &key, const QStringList &) const
{
    return toolTip(key);
}

} // namespace duomir

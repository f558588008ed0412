#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace duomir {

class Interaction;

// The texts and tool tips of one language file, keyed by number as text. An instance with no file
// loaded answers every lookup with an empty text.
class Language
{
public:
    Language() = default;

    // Reads `file` (the language name followed by ".lang"). A key that occurs twice is reported
    // through `ui` with the fixed, untranslated message; loading goes on.
    static Language load(const QString &file, Interaction *ui);

    bool isLoaded() const { return m_loaded; }
    QString fileName() const { return m_file; }

    // The stored part, with a leading ":" followed one level to the referenced key's part.
    QString text(const QString &key) const;
    QString toolTip(const QString &key) const;

    // The text of `key` with "%1", "%2" ... replaced one after another, then "\r" and "\n".
    QString FormatMsg(const QString &key, const QStringList &params = {}) const;
    QString FormatToolTip(const QString &key, const QStringList &params = {}) const;

private:
    bool m_loaded = false;
    QString m_file;
    QHash<QString, QString> m_texts;
    QHash<QString, QString> m_toolTips;
};

} // namespace duomir

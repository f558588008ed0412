#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace duomir {

class Interaction;

// The texts and tool tips of one language file, keyed by number as text. An instance with no file
// loaded answers every lookup with an empty text.
//
// A language file holds key=value lines before any section header (or under "[]"). The value is
// "text" or "text|tooltip" (anything after a second "|" is ignored), at most 254 characters; an
// empty part is not stored. A part that begins with ":" names another key whose part of the same
// kind stands in for it, one level deep. Keys match regardless of letter case.
class Language
{
public:
    Language() = default;

    // Reads `file` (the language name followed by ".lang"). A key that occurs twice is reported
    // through `ui` (may be null) with the fixed, untranslated message, once for each part that the
    // repeat fails to store; loading goes on. A missing or unreadable file loads nothing.
    static Language load(const QString &file, Interaction *ui);

    // `folder`/`name`.lang
    static QString filePath(const QString &folder, const QString &name);
    // The names of the language files in `folder` (without ".lang"), sorted by name.
    static QStringList available(const QString &folder);

    bool isLoaded() const { return m_loaded; }
    QString fileName() const { return m_file; }

    // The stored part, with a leading ":" followed one level to the referenced key's part.
    QString text(const QString &key) const;
    QString toolTip(const QString &key) const;

    // The text of `key` with "%1", "%2" ... replaced one after another (so a parameter that holds
    // a later marker is replaced too, and "%1" also hits the start of "%10"), then the
    // two-character escapes "\r" and "\n" by CR and LF. Empty when the key has no text.
    QString FormatMsg(const QString &key, const QStringList &params = {}) const;
    QString FormatToolTip(const QString &key, const QStringList &params = {}) const;

private:
    bool m_loaded = false;
    QString m_file;
    QHash<QString, QString> m_texts; // keys case-folded
    QHash<QString, QString> m_toolTips;
};

} // namespace duomir

#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace duomir {

// One INI file (settings, profile or language file), parsed once and written key by key.
//
// Reading rules: section and key names match case-insensitively and the first occurrence wins;
// blanks around keys and values are dropped, then one pair of matching quotes (" or ') around a
// value; the section with the empty name is what stands before the first header line (or under
// "[]"). Lines starting with ";" or "#" are comments; lines without "=" carry no key. Text is read
// as UTF-8, bytes that are not UTF-8 carried through unchanged (a path in a profile may hold
// them); CRLF and LF line ends are both read.
//
// Writing changes only the line of the key concerned (or appends the key at the end of its
// section, or the section at the end of the file); every other byte stays as it was, line ends
// included. A new file gets "\n". Every write replaces the file through a temporary file in the
// same folder and a rename, so a crash leaves the old file or the new one, never half of one.
// Before a write the file is parsed again when it changed on disk since the last load, so keys that
// another writer added in the meantime survive.
//
// Nothing here throws or reports: a missing or unreadable file reads as empty and every read
// returns its default. A file that exists but cannot be read is never written over. Only a
// regular file of at most 64 MiB is read: a FIFO, a device or a directory in its place reads as
// unreadable at once instead of hanging or filling the memory.
// The whole content of `path` when it is a regular file of at most `limit` bytes.
std::optional<QByteArray> readRegularFile(const QString &path, qint64 limit = 64 << 20);

class IniFile
{
public:
    explicit IniFile(const QString &path);

    QString path() const { return m_path; }

    // Parses the file again from disk.
    void reload();

    bool exists() const;
    // The file was read, or there is none; false for one that exists but could not be read.
    bool readable() const { return m_readable; }

    // Section names in file order, each once, spelled as at its first occurrence.
    QStringList sectionNames() const;
    // Key names of `section` in file order, each once.
    QStringList keys(const QString &section) const;
    // Every key line of `section` in file order, repeats included: a loader that must notice
    // a key written twice uses this list.
    QStringList keyLines(const QString &section) const;

    bool contains(const QString &section, const QString &key) const;

    // The value (or `def` when the key is absent), cut to at most `maxChars` characters.
    QString readString(const QString &section, const QString &key, const QString &def = {},
                       int maxChars = 32766) const;
    // An optional sign and the leading decimal digits of the value ("12ab" is 12, "abc" is 0);
    // `def` when the key is absent or its value is empty. Out-of-range values are clamped.
    int readInt(const QString &section, const QString &key, int def) const;

    // Sets the key to `value`; a null QString deletes the key instead. Returns false when the file
    // could not be written (it is then unchanged on disk and in this object).
    bool writeString(const QString &section, const QString &key, const QString &value);
    bool deleteKey(const QString &section, const QString &key)
    {
        return writeString(section, key, QString());
    }

    // Between these two, writes change only this object; endBatch() replaces the file once and
    // returns false when that failed (the object then holds the file as it is on disk again).
    // A whole profile is saved this way instead of rewriting the file once per key.
    void beginBatch();
    bool endBatch();

private:
    struct Entry
    {
        QString key;
        QString value;
        int line; // index into m_lines
    };
    struct Section
    {
        QString name;
        int header;      // line of "[name]", -1 for the keys before the first header
        int lastContent; // last non-blank line that belongs to the section (the header at least)
        QList<Entry> entries;
    };

    void parse();
    void addSection(Section section);
    const Section *findSection(const QString &name) const;
    const Entry *findEntry(const QString &section, const QString &key) const;
    static const Entry *entryIn(const Section *section, const QString &key);
    void reloadIfChanged();
    void applyWrite(const QString &section, const QString &key, const QString &value);
    bool save(const QList<QByteArray> &lines);

    QString m_path;
    bool m_readable = false; // the file was read (or did not exist)
    QDateTime m_loadedTime;
    qint64 m_loadedSize = -1;
    QByteArray m_eol = "\n";
    bool m_batch = false;
    bool m_dirty = false;
    QList<QByteArray> m_lines;                // raw lines, each with its own line end
    QList<Section> m_sections;                // file order
    QHash<QString, qsizetype> m_sectionIndex; // case-folded name -> first of m_sections
};

} // namespace duomir

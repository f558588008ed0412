#include "base/inifile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/nativename.h"

namespace duomir {

namespace {

QByteArray withoutLineEnd(const QByteArray &raw)
{
    qsizetype n = raw.size();
    if (n > 0 && raw[n - 1] == '\n')
        --n;
    if (n > 0 && raw[n - 1] == '\r')
        --n;
    return raw.left(n);
}

QByteArray lineEndOf(const QByteArray &raw)
{
    return raw.mid(withoutLineEnd(raw).size());
}

bool isQuote(QChar c)
{
    return c == u'"' || c == u'\'';
}

QString unquote(const QString &value)
{
    if (value.size() >= 2 && isQuote(value.front()) && value.back() == value.front())
        return value.mid(1, value.size() - 2);
    return value;
}

// The value as it must stand in the file to read back unchanged: line breaks would split the
// entry, and blanks or quotes at its ends would be dropped by the reader, so such a value is
// written inside a pair of quotes.
QString fileValue(QString value)
{
    value.replace(u'\r', u' ').replace(u'\n', u' ');
    if (value != value.trimmed() || unquote(value) != value)
        return u'"' + value + u'"';
    return value;
}

// What a later parse reads back from a value written by fileValue().
QString storedValue(const QString &value)
{
    return unquote(fileValue(value).trimmed());
}

bool sameName(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

} // namespace

std::optional<QByteArray> readRegularFile(const QString &path, qint64 limit)
{
    // O_NONBLOCK: a FIFO put where a profile was expected would hold the open forever; fstat then
    // refuses it, as it refuses a directory or a device such as /dev/zero, which never ends.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    QByteArray data;
    struct stat st;
    bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size <= limit;
    if (ok)
        data.reserve(qsizetype(st.st_size));
    char buffer[1 << 16];
    while (ok) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            ok = n == 0;
            break;
        }
        data.append(buffer, n);
        ok = data.size() <= limit; // grown since the look
    }
    ::close(fd);
    if (!ok)
        return std::nullopt;
    return data;
}

IniFile::IniFile(const QString &path) : m_path(path)
{
    reload();
}

void IniFile::reload()
{
    m_lines.clear();
    m_eol = "\n";
    const QFileInfo info(m_path);
    m_loadedSize = info.exists() ? info.size() : -1;
    m_loadedTime = info.exists() ? info.lastModified() : QDateTime();
    m_readable = !info.exists();

    if (info.exists()) {
        const std::optional<QByteArray> data = readRegularFile(m_path);
        m_readable = data.has_value();
        if (data) {
            qsizetype start = 0;
            while (start < data->size()) {
                const qsizetype nl = data->indexOf('\n', start);
                const qsizetype end = nl < 0 ? data->size() : nl + 1;
                m_lines.append(data->mid(start, end - start));
                start = end;
            }
        }
    }
    for (const QByteArray &raw : std::as_const(m_lines)) {
        if (raw.endsWith('\n')) {
            m_eol = raw.endsWith("\r\n") ? QByteArray("\r\n") : QByteArray("\n");
            break;
        }
    }
    parse();
}

void IniFile::addSection(Section section)
{
    const QString folded = section.name.toCaseFolded();
    if (!m_sectionIndex.contains(folded))
        m_sectionIndex.insert(folded, m_sections.size());
    m_sections.append(std::move(section));
}

void IniFile::parse()
{
    m_sections.clear();
    m_sectionIndex.clear();
    // The keys before the first header form the section with the empty name; it only counts when
    // it holds a key, so that a comment at the top does not hide a later "[]" section.
    Section implicit{QString(), -1, -1, {}};
    bool beforeFirstHeader = true;
    const auto current = [&]() -> Section & {
        return beforeFirstHeader ? implicit : m_sections.last();
    };
    for (int i = 0; i < m_lines.size(); ++i) {
        const QString text = fromNative(withoutLineEnd(m_lines[i])).trimmed();
        if (text.isEmpty())
            continue;
        if (text.startsWith(u'[')) {
            if (beforeFirstHeader && !implicit.entries.isEmpty())
                addSection(implicit);
            beforeFirstHeader = false;
            const qsizetype close = text.indexOf(u']');
            const QString name = text.mid(1, close < 0 ? -1 : close - 1).trimmed();
            addSection(Section{name, i, i, {}});
            continue;
        }
        current().lastContent = i;
        if (text.startsWith(u';') || text.startsWith(u'#'))
            continue;
        const qsizetype eq = text.indexOf(u'=');
        if (eq <= 0)
            continue;
        const QString key = text.left(eq).trimmed();
        if (key.isEmpty())
            continue;
        current().entries.append(Entry{key, unquote(text.mid(eq + 1).trimmed()), i});
    }
    if (beforeFirstHeader && !implicit.entries.isEmpty())
        addSection(implicit);
}

bool IniFile::exists() const
{
    return QFileInfo::exists(m_path);
}

const IniFile::Section *IniFile::findSection(const QString &name) const
{
    const auto found = m_sectionIndex.constFind(name.toCaseFolded());
    return found == m_sectionIndex.cend() ? nullptr : &m_sections[*found];
}

const IniFile::Entry *IniFile::findEntry(const QString &section, const QString &key) const
{
    return entryIn(findSection(section), key);
}

const IniFile::Entry *IniFile::entryIn(const Section *s, const QString &key)
{
    if (!s)
        return nullptr;
    for (const Entry &e : s->entries) {
        if (sameName(e.key, key))
            return &e;
    }
    return nullptr;
}

QStringList IniFile::sectionNames() const
{
    QStringList names;
    for (qsizetype i = 0; i < m_sections.size(); ++i) {
        if (m_sectionIndex.value(m_sections[i].name.toCaseFolded()) == i)
            names.append(m_sections[i].name);
    }
    return names;
}

QStringList IniFile::keyLines(const QString &section) const
{
    QStringList result;
    if (const Section *s = findSection(section)) {
        for (const Entry &e : s->entries)
            result.append(e.key);
    }
    return result;
}

QStringList IniFile::keys(const QString &section) const
{
    QStringList result;
    for (const QString &key : keyLines(section)) {
        if (!result.contains(key, Qt::CaseInsensitive))
            result.append(key);
    }
    return result;
}

bool IniFile::contains(const QString &section, const QString &key) const
{
    return findEntry(section, key) != nullptr;
}

QString IniFile::readString(const QString &section, const QString &key, const QString &def,
                            int maxChars) const
{
    const Entry *e = findEntry(section, key);
    const QString &value = e ? e->value : def;
    return value.left(std::max(0, maxChars));
}

int IniFile::readInt(const QString &section, const QString &key, int def) const
{
    const Entry *e = findEntry(section, key);
    if (!e || e->value.isEmpty())
        return def;
    const QString &v = e->value;
    qsizetype i = 0;
    bool negative = false;
    if (i < v.size() && (v[i] == u'-' || v[i] == u'+'))
        negative = v[i++] == u'-';
    qint64 n = 0;
    for (; i < v.size() && v[i] >= u'0' && v[i] <= u'9'; ++i) {
        n = n * 10 + (v[i].unicode() - u'0');
        if (n > qint64(INT_MAX) + 1)
            break;
    }
    if (negative)
        n = -n;
    return int(std::clamp<qint64>(n, INT_MIN, INT_MAX));
}

void IniFile::reloadIfChanged()
{
    const QFileInfo info(m_path);
    const qint64 size = info.exists() ? info.size() : -1;
    const QDateTime time = info.exists() ? info.lastModified() : QDateTime();
    if (size != m_loadedSize || time != m_loadedTime)
        reload();
}

bool IniFile::writeString(const QString &section, const QString &key, const QString &value)
{
    if (m_batch) {
        if (m_readable)
            applyWrite(section, key, value);
        return m_readable;
    }
    beginBatch();
    if (m_readable)
        applyWrite(section, key, value);
    return endBatch();
}

void IniFile::beginBatch()
{
    reloadIfChanged();
    m_batch = true;
    m_dirty = false;
}

bool IniFile::endBatch()
{
    m_batch = false;
    if (!m_readable)
        return false;
    if (!m_dirty)
        return true;
    m_dirty = false;
    if (save(m_lines))
        return true;
    reload(); // the file on disk is unchanged: so is this object
    return false;
}

// Changes m_lines and keeps the parsed sections in step without parsing the whole file again, so
// that a batch of thousands of writes (a long profile) stays linear in practice.
void IniFile::applyWrite(const QString &section, const QString &key, const QString &value)
{
    Section *s = const_cast<Section *>(findSection(section));
    Entry *e = const_cast<Entry *>(entryIn(s, key));
    const auto terminate = [&](qsizetype line) {
        if (line >= 0 && line < m_lines.size() && !m_lines[line].endsWith('\n'))
            m_lines[line] += m_eol;
    };
    const auto insertLine = [&](int at, const QByteArray &line) {
        m_lines.insert(at, line);
        // Sections are in file order: once one ends before the new line, so do all before it.
        for (qsizetype i = m_sections.size() - 1; i >= 0; --i) {
            Section &other = m_sections[i];
            if (other.lastContent < at) // the header is never after the last content
                break;
            if (other.header >= at)
                ++other.header;
            if (other.lastContent >= at)
                ++other.lastContent;
            for (Entry &entry : other.entries) {
                if (entry.line >= at)
                    ++entry.line;
            }
        }
    };

    if (value.isNull()) {
        if (!e)
            return;
        // Every repeat of the key goes, so that a later duplicate does not reappear.
        for (qsizetype i = s->entries.size() - 1; i >= 0; --i) {
            if (sameName(s->entries[i].key, key))
                m_lines.removeAt(s->entries[i].line);
        }
        parse();
    } else if (e) {
        m_lines[e->line] = toNative(e->key + u'=' + fileValue(value)) + lineEndOf(m_lines[e->line]);
        e->value = storedValue(value);
    } else {
        const QByteArray entry = toNative(key + u'=' + fileValue(value)) + m_eol;
        if (s) {
            terminate(s->lastContent);
            const int at = s->lastContent + 1;
            insertLine(at, entry);
            s->entries.append(Entry{key, storedValue(value), at});
            s->lastContent = at;
        } else if (section.isEmpty()) {
            m_lines.prepend(entry);
            parse();
        } else {
            terminate(m_lines.size() - 1);
            const int header = int(m_lines.size());
            m_lines.append(toNative(u'[' + section + u']') + m_eol);
            m_lines.append(entry);
            addSection(
                Section{section, header, header + 1, {Entry{key, storedValue(value), header + 1}}});
        }
    }
    m_dirty = true;
}

bool IniFile::save(const QList<QByteArray> &lines)
{
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (const QByteArray &line : lines) {
        if (file.write(line) != line.size()) {
            file.cancelWriting();
            return false;
        }
    }
    if (!file.commit())
        return false;
    m_lines = lines;
    parse();
    const QFileInfo info(m_path);
    m_loadedSize = info.size();
    m_loadedTime = info.lastModified();
    return true;
}

} // namespace duomir

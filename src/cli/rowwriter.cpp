#include "cli/rowwriter.h"

#include <charconv>
#include <cmath>

#include "base/nativename.h"

namespace duomir::cli {

namespace {

constexpr qsizetype FlushAt = 1 << 16;

void appendNumber(QByteArray &out, std::int64_t v)
{
    char buf[24];
    const auto result = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, result.ptr - buf);
}

void appendTwo(QByteArray &out, int v)
{
    out.append(static_cast<char>('0' + v / 10));
    out.append(static_cast<char>('0' + v % 10));
}

bool missingOn(const CompareEntry &e, Side side)
{
    return e.lacks(side) && !e.lacks(otherSide(side));
}

void appendTsv(QByteArray &out, QAnyStringView text)
{
    const qsizetype start = out.size();
    appendNative(out, text);
    // Escape only when needed; almost no name holds these bytes.
    bool special = false;
    for (qsizetype i = start; i < out.size() && !special; ++i) {
        const char c = out.at(i);
        special = c == '\\' || c == '\t' || c == '\n' || c == '\r';
    }
    if (!special)
        return;
    const QByteArray raw = out.mid(start);
    out.truncate(start);
    for (char c : raw) {
        switch (c) {
        case '\\':
            out.append("\\\\");
            break;
        case '\t':
            out.append("\\t");
            break;
        case '\n':
            out.append("\\n");
            break;
        case '\r':
            out.append("\\r");
            break;
        default:
            out.append(c);
        }
    }
}

} // namespace

void appendDate(QByteArray &out, Date value)
{
    const std::int64_t seconds = std::llround((value - UnixEpochAsDate) * 86400.0);
    std::int64_t days = seconds >= 0 ? seconds / 86400 : (seconds - 86399) / 86400;
    const int inDay = static_cast<int>(seconds - days * 86400);
    // Civil date from days since 1970-01-01 (proleptic Gregorian).
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(days - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    const unsigned d = doy - (153 * mp + 2) / 5 + 1;
    const unsigned m = mp < 10 ? mp + 3 : mp - 9;
    const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2 ? 1 : 0);
    if (y >= 0 && y <= 9999) {
        appendTwo(out, static_cast<int>(y / 100));
        appendTwo(out, static_cast<int>(y % 100));
        out.append('-');
    } else {
        char buf[32];
        const int n = std::snprintf(buf, sizeof buf, "%04lld-", static_cast<long long>(y));
        out.append(buf, n);
    }
    appendTwo(out, static_cast<int>(m));
    out.append('-');
    appendTwo(out, static_cast<int>(d));
    out.append(' ');
    appendTwo(out, inDay / 3600);
    out.append(':');
    appendTwo(out, inDay / 60 % 60);
    out.append(':');
    appendTwo(out, inDay % 60);
}

RowWriter::RowWriter(std::FILE *out, Format format) : m_out(out), m_format(format)
{
    m_buffer.reserve(FlushAt + 4096);
    if (m_format == Format::Tsv)
        m_buffer.append("state\tmarked\tkind\tsource\tdestination\tsource_size\t"
                        "destination_size\tsource_modified\tdestination_modified\n");
    else
        m_buffer.append('[');
}

RowWriter::~RowWriter()
{
    finish();
}

void RowWriter::jsonField(QStringView head, QAnyStringView tail)
{
    // Quoted and escaped; escape units become \udcXX rather than raw invalid bytes.
    m_buffer.append('"');
    const QString tailText = tail.toString();
    for (const QStringView part : {head, QStringView(tailText)}) {
        const qsizetype n = part.size();
        const QChar *p = part.data();
        for (qsizetype i = 0; i < n; ++i) {
            const char16_t c = p[i].unicode();
            if (c == u'"' || c == u'\\') {
                m_buffer.append('\\');
                m_buffer.append(static_cast<char>(c));
            } else if (c < 0x20 || (c >= 0xDC80 && c <= 0xDCFF)) {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned>(c));
                m_buffer.append(buf, 6);
            } else if (c < 0x80) {
                m_buffer.append(static_cast<char>(c));
            } else {
                // Copy the run up to the next unit that needs care in one go.
                qsizetype j = i + 1;
                while (j < n && p[j].unicode() >= 0x80 &&
                       !(p[j].unicode() >= 0xDC80 && p[j].unicode() <= 0xDCFF))
                    ++j;
                appendNative(m_buffer, QStringView(p + i, j - i));
                i = j - 1;
            }
        }
    }
    m_buffer.append('"');
}

void RowWriter::path(const CompareEntry &e, Side side)
{
    if (missingOn(e, side)) {
        if (m_format == Format::Json)
            m_buffer.append("\"\"");
        return;
    }
    const QAnyStringView name = e.isDirectory() ? QAnyStringView() : e.nameView(side);
    if (m_format == Format::Json) {
        jsonField(e.path(side), name);
        return;
    }
    // The files of one folder share their path: it is encoded once.
    const QString &path = e.path(side);
    auto &[lastPath, encoded] = m_lastPath[size_t(side)];
    if (&path != lastPath) {
        lastPath = &path;
        encoded.clear();
        appendTsv(encoded, path);
    }
    m_buffer.append(encoded);
    appendTsv(m_buffer, name);
}

void RowWriter::row(const CompareEntry &e)
{
    const bool json = m_format == Format::Json;
    const char kind = e.isDirectory()                                ? 'd'
                      : (e.Attributes[Side::Source] & Attr::Reparse) ? 'l'
                                                                     : 'f';
    if (json) {
        m_buffer.append(m_first ? "\n{\"state\":" : ",\n{\"state\":");
        m_first = false;
    }
    appendNumber(m_buffer, e.State);
    m_buffer.append(json ? ",\"marked\":" : "\t");
    m_buffer.append(e.Marked ? '1' : '0');
    m_buffer.append(json ? ",\"kind\":\"" : "\t");
    m_buffer.append(kind);
    m_buffer.append(json ? "\",\"source\":" : "\t");
    path(e, Side::Source);
    m_buffer.append(json ? ",\"destination\":" : "\t");
    path(e, Side::Destination);
    static const char *const sizeKeys[2] = {",\"source_size\":", ",\"destination_size\":"};
    static const char *const timeKeys[2] = {",\"source_modified\":", ",\"destination_modified\":"};
    for (Side side : Sides) {
        m_buffer.append(json ? sizeKeys[side] : "\t");
        if (!missingOn(e, side) && !e.isDirectory())
            appendNumber(m_buffer, e.FullSize[side]);
        else if (json)
            m_buffer.append("null");
    }
    for (Side side : Sides) {
        m_buffer.append(json ? timeKeys[side] : "\t");
        if (missingOn(e, side) || e.isDirectory() || e.Modified[side] == 0) {
            if (json)
                m_buffer.append("null");
        } else {
            if (json)
                m_buffer.append('"');
            appendDate(m_buffer, e.Modified[side]);
            if (json)
                m_buffer.append('"');
        }
    }
    m_buffer.append(json ? "}" : "\n");
    flushIfFull();
}

void RowWriter::flushIfFull()
{
    if (m_buffer.size() < FlushAt)
        return;
    std::fwrite(m_buffer.constData(), 1, static_cast<size_t>(m_buffer.size()), m_out);
    m_buffer.clear();
}

void RowWriter::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    if (m_format == Format::Json)
        m_buffer.append(m_first ? "]\n" : "\n]\n");
    std::fwrite(m_buffer.constData(), 1, static_cast<size_t>(m_buffer.size()), m_out);
    m_buffer.clear();
    std::fflush(m_out);
}

} // namespace duomir::cli

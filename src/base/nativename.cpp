#include "base/nativename.h"

#include <QVarLengthArray>
#include <cstdint>
#include <string>
#include <type_traits>

namespace duomir {

namespace {

constexpr char16_t EscapeBase = 0xDC00;

bool isContinuation(unsigned char c)
{
    return (c & 0xC0) == 0x80;
}

// Length of the valid UTF-8 sequence at `p` (1..4), or 0 when the lead byte does not start one.
// Overlong forms, encoded surrogates and code points past U+10FFFF count as invalid, as the
// standard demands; they are escaped byte by byte instead.
int validSequence(const unsigned char *p, const unsigned char *end, char32_t &cp)
{
    const unsigned char c = p[0];
    const std::ptrdiff_t left = end - p;
    if (c < 0x80) {
        cp = c;
        return 1;
    }
    if (c >= 0xC2 && c <= 0xDF) {
        if (left < 2 || !isContinuation(p[1]))
            return 0;
        cp = (char32_t(c & 0x1F) << 6) | (p[1] & 0x3F);
        return 2;
    }
    if (c >= 0xE0 && c <= 0xEF) {
        if (left < 3 || !isContinuation(p[1]) || !isContinuation(p[2]))
            return 0;
        cp = (char32_t(c & 0x0F) << 12) | (char32_t(p[1] & 0x3F) << 6) | (p[2] & 0x3F);
        if (cp < 0x800 || (cp >= 0xD800 && cp <= 0xDFFF))
            return 0;
        return 3;
    }
    if (c >= 0xF0 && c <= 0xF4) {
        if (left < 4 || !isContinuation(p[1]) || !isContinuation(p[2]) || !isContinuation(p[3]))
            return 0;
        cp = (char32_t(c & 0x07) << 18) | (char32_t(p[1] & 0x3F) << 12) |
             (char32_t(p[2] & 0x3F) << 6) | (p[3] & 0x3F);
        if (cp < 0x10000 || cp > 0x10FFFF)
            return 0;
        return 4;
    }
    return 0;
}

} // namespace

std::size_t decodeNative(const char *bytes, std::size_t size, char16_t *out)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes);
    const unsigned char *const end = p + size;
    char16_t *dst = out;
    // Most names are ASCII: copied unit by unit until the first other byte.
    while (p != end && *p < 0x80)
        *dst++ = *p++;
    while (p != end) {
        if (*p < 0x80) {
            *dst++ = *p++;
            continue;
        }
        char32_t cp = 0;
        const int n = validSequence(p, end, cp);
        if (n == 0) {
            *dst++ = static_cast<char16_t>(EscapeBase + *p);
            ++p;
            continue;
        }
        p += n;
        if (cp >= 0x10000) {
            *dst++ = QChar::highSurrogate(cp);
            *dst++ = QChar::lowSurrogate(cp);
        } else {
            *dst++ = static_cast<char16_t>(cp);
        }
    }
    return static_cast<std::size_t>(dst - out);
}

QString fromNative(const char *bytes, std::size_t size)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes);
    const unsigned char *const end = p + size;
    const unsigned char *q = p;
    while (q != end && *q < 0x80)
        ++q;
    if (q == end)
        return QString::fromLatin1(bytes, static_cast<qsizetype>(size));
    // The units go to a scratch buffer first: a QString cut down after the fact keeps its whole
    // allocation.
    QVarLengthArray<char16_t, 256> units(static_cast<qsizetype>(size));
    const std::size_t n = decodeNative(bytes, size, units.data());
    return QString(reinterpret_cast<const QChar *>(units.data()), static_cast<qsizetype>(n));
}

namespace {

void appendLatin1(QByteArray &out, QLatin1StringView text)
{
    for (const char c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 0x80) {
            out.append(c);
        } else {
            out.append(static_cast<char>(0xC0 | (u >> 6)));
            out.append(static_cast<char>(0x80 | (u & 0x3F)));
        }
    }
}

void appendUtf16(QByteArray &out, QStringView text)
{
    // Writes straight into the buffer: a unit never takes more than three bytes (a surrogate
    // pair, two units, takes four).
    const qsizetype old = out.size();
    out.resize(old + text.size() * 3);
    char *d = out.data() + old;
    const auto *p = reinterpret_cast<const char16_t *>(text.constData());
    const char16_t *const end = p + text.size();
    for (; p != end; ++p) {
        char32_t cp = *p;
        if (cp < 0x80) {
            *d++ = static_cast<char>(cp);
            continue;
        }
        if (QChar::isHighSurrogate(cp) && p + 1 != end && QChar::isLowSurrogate(p[1])) {
            cp = QChar::surrogateToUcs4(static_cast<char16_t>(cp), p[1]);
            ++p;
        } else if (cp >= 0xDC80 && cp <= 0xDCFF) {
            *d++ = static_cast<char>(cp - EscapeBase);
            continue;
        } else if (QChar::isSurrogate(cp)) {
            cp = 0xFFFD;
        }
        if (cp < 0x800) {
            *d++ = static_cast<char>(0xC0 | (cp >> 6));
            *d++ = static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            *d++ = static_cast<char>(0xE0 | (cp >> 12));
            *d++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            *d++ = static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            *d++ = static_cast<char>(0xF0 | (cp >> 18));
            *d++ = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            *d++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            *d++ = static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    out.resize(d - out.constData());
}

} // namespace

void appendNative(QByteArray &out, QAnyStringView text)
{
    text.visit([&out](auto view) {
        if constexpr (std::is_same_v<decltype(view), QStringView>)
            appendUtf16(out, view);
        else if constexpr (std::is_same_v<decltype(view), QLatin1StringView>)
            appendLatin1(out, view);
        else
            appendUtf16(out, view.toString());
    });
}

QByteArray toNative(const QString &text)
{
    QByteArray out;
    out.reserve(text.size() * 3);
    appendNative(out, text);
    return out;
}

} // namespace duomir

namespace duomir {

namespace {

bool needsEscape(char16_t u)
{
    return u < 0x20 || u == u'\\' || (u >= 0x7F && u <= 0x9F) ||
           (u >= EscapeBase + 0x80 && u <= EscapeBase + 0xFF);
}

template <typename Out> void escapeUnit(Out &out, unsigned value)
{
    static constexpr char hex[] = "0123456789ABCDEF";
    switch (value) {
    case '\\':
        out += "\\\\";
        return;
    case '\t':
        out += "\\t";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    default:
        out += "\\x";
        out += hex[(value >> 4) & 0xF];
        out += hex[value & 0xF];
    }
}

} // namespace

QString escapedForLine(const QString &text)
{
    const char16_t *p = reinterpret_cast<const char16_t *>(text.utf16());
    qsizetype i = 0;
    while (i < text.size() && !needsEscape(p[i]))
        ++i;
    if (i == text.size())
        return text;
    QString out = text.left(i);
    for (; i < text.size(); ++i) {
        const char16_t u = p[i];
        if (!needsEscape(u)) {
            out += QChar(u);
            continue;
        }
        std::string piece;
        escapeUnit(piece, u >= EscapeBase ? unsigned(u - EscapeBase) : unsigned(u));
        out += QLatin1StringView(piece.data(), qsizetype(piece.size()));
    }
    return out;
}

void appendEscapedForLine(QByteArray &out, const QString &text)
{
    const qsizetype start = out.size();
    appendNative(out, text);
    qsizetype i = start;
    const auto plain = [](char c) {
        const auto b = static_cast<unsigned char>(c);
        return b >= 0x20 && b != 0x7F && c != '\\';
    };
    while (i < out.size() && plain(out.at(i)))
        ++i;
    if (i == out.size())
        return;
    const QByteArray raw = out.mid(i);
    out.truncate(i);
    for (const char c : raw) {
        if (plain(c))
            out += c;
        else
            escapeUnit(out, static_cast<unsigned char>(c));
    }
}

QByteArray nameForLine(const QString &text)
{
    QByteArray line;
    appendEscapedForLine(line, text);
    return line;
}

QByteArray failureLine(const QString &error, const QString &source, const QString &destination)
{
    QByteArray line;
    appendEscapedForLine(line, error);
    if (!source.isEmpty()) {
        line += ": ";
        appendEscapedForLine(line, source);
    }
    if (!destination.isEmpty()) {
        line += source.isEmpty() ? ": " : " -> ";
        appendEscapedForLine(line, destination);
    }
    return line;
}

} // namespace duomir

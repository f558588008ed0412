#pragma once

#include <QAnyStringView>
#include <QByteArray>
#include <QString>
#include <cstddef>

namespace duomir {

// File names on Linux are bytes. The engine shows and compares them as UTF-8 text but must be able
// to give every name back byte for byte, so a byte that is not part of valid UTF-8 is carried as
// the lone surrogate U+DC00 + byte (U+DC80..U+DCFF). Valid UTF-8 never decodes to a lone
// surrogate, so the mapping is reversible: toNative(fromNative(b)) == b for every byte string b.

// Decodes `size` bytes of a name or path into `out`, which has room for `size` units (UTF-8
// never gives more units than bytes); returns the units written.
std::size_t decodeNative(const char *bytes, std::size_t size, char16_t *out);
// Decodes `size` bytes of a name or path.
QString fromNative(const char *bytes, std::size_t size);
inline QString fromNative(const QByteArray &bytes)
{
    return fromNative(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

// Encodes a name or path for the system calls; escape units become their byte again. A lone
// surrogate outside U+DC80..U+DCFF (never produced by fromNative) becomes U+FFFD.
QByteArray toNative(const QString &text);
// Appends the encoding of `text` to `out` (no allocation when `out` has room).
void appendNative(QByteArray &out, QAnyStringView text);

} // namespace duomir

namespace duomir {

// A name or path for one line of text (a message, a log column, a line on standard error): a
// backslash, TAB, LF and CR become \\, \t, \n and \r as in the TSV output, every other byte below
// 0x20 becomes \xHH, so that a name can neither start a line of its own nor add a column. In the
// text form a byte that is not UTF-8 shows as \xHH too; the byte form keeps it raw.
QString escapedForLine(const QString &text);
void appendEscapedForLine(QByteArray &out, const QString &text);
// The byte form alone: how a command-line program writes a name into a line of its output.
QByteArray nameForLine(const QString &text);

// A failed operation as one line for standard error, in both programs:
// "TEXT: SOURCE -> DESTINATION" (either path may be missing), names as their bytes, escaped.
QByteArray failureLine(const QString &error, const QString &source, const QString &destination);

} // namespace duomir

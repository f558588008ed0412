#pragma once

#include <QChar>
#include <QString>

namespace duomir {

// Names are compared case-insensitively by upper-casing one 16-bit code unit at a time (the simple
// mapping, so a name keeps its length: "ß" stays "ß"). Surrogates and the escape units of
// nativename.h map to themselves.
inline char16_t upperUnit(char16_t c)
{
    if (c < 0x80)
        return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 0x20) : c;
    if (QChar::isSurrogate(c))
        return c;
    const char32_t u = QChar::toUpper(static_cast<char32_t>(c));
    return u > 0xFFFF ? c : static_cast<char16_t>(u);
}

// The code units of `text`.
inline const char16_t *units(QStringView text)
{
    return text.utf16();
}

// `text` upper-cased unit by unit.
QString upperUnits(const QString &text);

} // namespace duomir

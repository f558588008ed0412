#include "core/masks.h"

#include <QStringList>

#include "base/casefold.h"

namespace duomir {

QString upperUnits(const QString &text)
{
    QString out = text;
    for (QChar &c : out)
        c = QChar(upperUnit(c.unicode()));
    return out;
}

WildcardPattern::WildcardPattern(const QString &pattern)
{
    const QString p = upperUnits(pattern);
    const qsizetype n = p.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = p.at(i).unicode();
        switch (c) {
        case u'*':
            // Runs of stars match what one star matches.
            if (m_tokens.empty() || m_tokens.back().kind != Kind::AnyRun)
                m_tokens.push_back({Kind::AnyRun});
            continue;
        case u'?':
            m_tokens.push_back({Kind::AnyOne});
            continue;
        case u'#':
            m_tokens.push_back({Kind::Digit});
            continue;
        case u'[': {
            const qsizetype close = p.indexOf(u']', i + 1);
            if (close < 0)
                break; // no closing bracket: the "[" stands for itself
            qsizetype k = i + 1;
            Token t{Kind::Set};
            if (k < close && p.at(k) == u'!') {
                t.kind = Kind::NotSet;
                ++k;
            }
            if (close == i + 1) {
                // "[]" matches the empty text, as the wildcard operator it copies does.
                m_tokens.push_back({Kind::Empty});
                i = close;
                continue;
            }
            t.setBegin = static_cast<int>(m_ranges.size());
            while (k < close) {
                const char16_t low = p.at(k).unicode();
                if (k + 2 < close && p.at(k + 1) == u'-') {
                    const char16_t high = p.at(k + 2).unicode();
                    m_ranges.push_back({low, high});
                    k += 3;
                } else {
                    m_ranges.push_back({low, low});
                    ++k;
                }
            }
            t.setEnd = static_cast<int>(m_ranges.size());
            m_tokens.push_back(t);
            i = close;
            continue;
        }
        default:
            break;
        }
        Token t{Kind::Literal};
        t.unit = c;
        m_tokens.push_back(t);
    }
    m_matchesAll = m_tokens.size() == 1 && m_tokens.front().kind == Kind::AnyRun;
}

bool WildcardPattern::tokenMatches(const Token &t, char16_t upper) const
{
    switch (t.kind) {
    case Kind::Literal:
        return t.unit == upper;
    case Kind::AnyOne:
        return true;
    case Kind::Digit:
        return upper >= u'0' && upper <= u'9';
    case Kind::Set:
    case Kind::NotSet: {
        bool in = false;
        for (int r = t.setBegin; r < t.setEnd && !in; ++r)
            in = upper >= m_ranges[r].low && upper <= m_ranges[r].high;
        return in == (t.kind == Kind::Set);
    }
    case Kind::AnyRun:
    case Kind::Empty:
        break;
    }
    return false;
}

bool WildcardPattern::matches(QStringView name) const
{
    if (m_matchesAll)
        return true;
    // Every token but "*" (and the empty "[]") consumes exactly one unit, so the classic
    // backtrack-to-the-last-star walk is exact and linear in practice.
    constexpr std::size_t noStar = static_cast<std::size_t>(-1);
    const std::size_t nt = m_tokens.size();
    const qsizetype nn = name.size();
    std::size_t t = 0;
    qsizetype s = 0;
    std::size_t starToken = noStar;
    qsizetype starName = 0;
    while (true) {
        while (t < nt && m_tokens[t].kind == Kind::Empty)
            ++t;
        if (t < nt && m_tokens[t].kind == Kind::AnyRun) {
            starToken = ++t;
            starName = s;
            continue;
        }
        if (s == nn) {
            // A star can only take more of the name, so nothing is left to try.
            while (t < nt && (m_tokens[t].kind == Kind::AnyRun || m_tokens[t].kind == Kind::Empty))
                ++t;
            return t == nt;
        }
        if (t < nt && tokenMatches(m_tokens[t], upperUnit(name[s].unicode()))) {
            ++t;
            ++s;
            continue;
        }
        if (starToken == noStar)
            return false;
        t = starToken;
        s = ++starName;
    }
}

MaskSet MaskSet::fromTexts(const QString &includeText, const QString &excludeText)
{
    MaskSet set;
    auto split = [](const QString &text, std::vector<WildcardPattern> &out) {
        if (text.isEmpty())
            return;
        for (const QString &part : text.split(u';'))
            out.emplace_back(part);
    };
    split(includeText, set.include);
    split(excludeText, set.exclude);
    return set;
}

bool MatchesMasks(QStringView name, const MaskSet &masks)
{
    bool included = false;
    for (const WildcardPattern &p : masks.include) {
        if (p.matches(name)) {
            included = true;
            break;
        }
    }
    if (!included)
        return false;
    for (const WildcardPattern &p : masks.exclude) {
        if (p.matches(name))
            return false;
    }
    return true;
}

} // namespace duomir

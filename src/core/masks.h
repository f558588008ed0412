#pragma once

#include <QString>
#include <QStringView>
#include <vector>

namespace duomir {

// One wildcard pattern, compiled once: "*" any run (none included), "?" any one character, "#" one
// digit 0-9, "[A-Z...]" one character of the list (ranges with "-"), "[!...]" one character not
// in it; everything else matches itself. The whole name must match. Patterns and names are
// compared upper-cased unit by unit, so matching ignores case.
class WildcardPattern
{
public:
    explicit WildcardPattern(const QString &pattern);

    // `name` in any case.
    bool matches(QStringView name) const;

private:
    enum class Kind : unsigned char { Literal, AnyRun, AnyOne, Digit, Set, NotSet, Empty };
    struct Token
    {
        Kind kind;
        char16_t unit = 0; // Literal
        int setBegin = 0;  // Set/NotSet: [setBegin, setEnd) in m_ranges
        int setEnd = 0;
    };
    struct Range
    {
        char16_t low;
        char16_t high;
    };

    bool tokenMatches(const Token &t, char16_t upper) const;

    std::vector<Token> m_tokens;
    std::vector<Range> m_ranges;
    bool m_matchesAll = false; // the pattern is a lone "*"
};

// A mask set: include patterns and exclude patterns, each from one ";"-separated text.
struct MaskSet
{
    std::vector<WildcardPattern> include;
    std::vector<WildcardPattern> exclude;

    // Splits at every ";" without trimming: "" gives no pattern, "*.TXT; *.DOC" gives "*.TXT" and
    // " *.DOC" (which needs a leading blank in the name).
    static MaskSet fromTexts(const QString &includeText, const QString &excludeText);
};

// True when `name` matches an include pattern and no exclude pattern. An empty include list
// admits nothing.
bool MatchesMasks(QStringView name, const MaskSet &masks);

} // namespace duomir

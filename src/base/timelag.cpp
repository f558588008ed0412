#include "base/timelag.h"

#include <QRegularExpression>
#include <cmath>

namespace duomir {

namespace {
constexpr double SecondsPerDay = 86400.0;
}

std::optional<double> parseTimeLag(const QString &text)
{
    if (text.trimmed() == u"0")
        return 0.0;
    static const QRegularExpression time(
        QStringLiteral(R"(^\s*(\d{1,6}):([0-5]?\d)(?::([0-5]?\d))?\s*$)"));
    const QRegularExpressionMatch m = time.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    const qint64 seconds =
        m.captured(1).toLongLong() * 3600 + m.captured(2).toInt() * 60 + m.captured(3).toInt();
    return double(seconds) / SecondsPerDay;
}

double timeLagFromText(const QString &text)
{
    return parseTimeLag(text).value_or(0.0);
}

QString timeLagToText(double days)
{
    qint64 seconds = 0;
    if (std::isfinite(days) && days > 0 && days < 1e9)
        seconds = std::llround(days * SecondsPerDay);
    const auto two = [](qint64 n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); };
    return two(seconds / 3600) + u':' + two(seconds / 60 % 60) + u':' + two(seconds % 60);
}

} // namespace duomir

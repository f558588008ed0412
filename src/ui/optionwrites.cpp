#include "ui/optionwrites.h"

#include <QRegularExpression>
#include <cmath>

#include "core/engine.h"

namespace duomir {

void WriteOptions(const Engine &) {}
void WriteLanguage(const Engine &) {}
void WriteDontShowHint(const Engine &) {}

std::optional<double> timeLagFromText(const QString &text)
{
    static const QRegularExpression re(
        QStringLiteral("^\\s*(\\d{1,2}):(\\d{1,2})(?::(\\d{1,2}))?\\s*$"));
    if (text.trimmed() == u"0")
        return 0.0;
    const auto m = re.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    const int h = m.captured(1).toInt(), mi = m.captured(2).toInt(), s = m.captured(3).toInt();
    if (mi > 59 || s > 59)
        return std::nullopt;
    return (h * 3600 + mi * 60 + s) / 86400.0;
}

QString timeLagText(double days)
{
    const auto secs = static_cast<long long>(std::llround(days * 86400.0));
    return QStringLiteral("%1:%2:%3")
        .arg(secs / 3600, 2, 10, QLatin1Char('0'))
        .arg(secs / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(secs % 60, 2, 10, QLatin1Char('0'));
}

} // namespace duomir

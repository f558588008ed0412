#include "core/progressmodel.h"

namespace duomir {

namespace {

QString withoutLastCharacter(const QString &text)
{
    return text.isEmpty() ? text : text.left(text.size() - 1);
}

} // namespace

void ProgressModel::Init(std::int64_t total)
{
    m_total = total;
    m_finished = 0;
    m_lastPercent = 0;
    m_lastWidth = 0;
    m_from.clear();
    m_to.clear();
    if (!m_sink)
        return;
    m_fullWidth = m_sink->fullBarWidth();
    m_sink->setBarWidth(0);
    m_sink->setPercentText(QStringLiteral("0 %"));
    m_sink->setVisible(true);
    m_visible = true;
}

void ProgressModel::Update(std::int64_t /*fileSize*/, std::int64_t bytesCopied)
{
    show(m_finished + bytesCopied);
}

void ProgressModel::FileDone(std::int64_t size)
{
    m_finished += size;
    show(m_finished);
}

void ProgressModel::show(std::int64_t done)
{
    if (!m_sink || m_total <= 0)
        return;
    // Long double keeps the product exact enough for byte counts far beyond 2^53.
    long double ratio = static_cast<long double>(done) / static_cast<long double>(m_total);
    if (ratio > 1.0L)
        ratio = 1.0L; // a file that grew while it was copied
    const int percent = static_cast<int>(100.0L * ratio + 0.5L);
    if (percent > m_lastPercent) {
        m_lastPercent = percent;
        m_sink->setPercentText(QString::number(percent) + u" %");
    }
    const int width = static_cast<int>(ratio * m_fullWidth);
    if (width > m_lastWidth) {
        m_lastWidth = width;
        m_sink->setBarWidth(width);
    }
}

void ProgressModel::ShowFile(const QString &sourceDir, const QString &destDir,
                             const QString &fileName)
{
    if (!m_sink)
        return;
    m_sink->setFileName(fileName);
    const QString from = withoutLastCharacter(sourceDir);
    if (from != m_from) {
        m_from = from;
        m_sink->setFrom(from);
    }
    const QString to = withoutLastCharacter(destDir);
    if (to != m_to) {
        m_to = to;
        m_sink->setTo(to);
    }
}

void ProgressModel::Hide()
{
    if (m_visible && m_sink)
        m_sink->setVisible(false);
    m_visible = false;
}

} // namespace duomir

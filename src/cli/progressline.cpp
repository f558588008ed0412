#include "cli/progressline.h"

#include <QLocale>

namespace duomir::cli {

namespace {

QByteArray size(std::int64_t bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat).toUtf8();
}

QByteArray duration(std::int64_t seconds)
{
    const std::int64_t h = seconds / 3600;
    const std::int64_t m = seconds / 60 % 60;
    const std::int64_t s = seconds % 60;
    QByteArray text = h > 0 ? QByteArray::number(h) + ':' : QByteArray();
    text += (h > 0 && m < 10 ? "0" : "") + QByteArray::number(m) + ':';
    text += (s < 10 ? "0" : "") + QByteArray::number(s);
    return text;
}

} // namespace

QByteArray ProgressLine::format(int files, std::int64_t bytes, std::int64_t total,
                                std::int64_t elapsedMs)
{
    const int percent = total > 0 ? int(bytes * 100 / total) : 0;
    QByteArray line = QByteArray::number(files) + " files  " + size(bytes) + " / " + size(total) +
                      "  " + QByteArray::number(percent) + " %";
    if (elapsedMs >= 1000 && bytes > 0) {
        const double rate = double(bytes) * 1000.0 / double(elapsedMs);
        line += "  " + size(std::int64_t(rate)) + "/s";
        line += "  " + duration(std::int64_t(double(total - bytes) / rate)) + " left";
    }
    return line;
}

void ProgressLine::setVisible(bool visible)
{
    if (visible) {
        m_clock.start();
        m_sinceDraw.start();
        m_files = 0;
        m_width = 0;
        m_shown = true;
        draw(true);
        return;
    }
    if (m_shown) {
        std::fputs("\r\033[K", m_out);
        std::fflush(m_out);
    }
    m_shown = false;
}

void ProgressLine::setBarWidth(int width)
{
    m_width = width;
    draw(width == FullWidth);
}

void ProgressLine::setFileName(const QString &)
{
    ++m_files;
    draw(false);
}

void ProgressLine::listing(std::int64_t source, std::int64_t destination)
{
    if (m_sinceDraw.isValid() && m_sinceDraw.elapsed() < 100)
        return;
    m_sinceDraw.start();
    std::fprintf(m_out, "\r\033[Klisted %lld entries in the source, %lld in the destination",
                 static_cast<long long>(source), static_cast<long long>(destination));
    std::fflush(m_out);
    m_listing = true;
}

void ProgressLine::endListing()
{
    if (m_listing)
        std::fputs("\r\033[K", m_out);
    std::fflush(m_out);
    m_listing = false;
}

void ProgressLine::draw(bool force)
{
    if (!m_shown || (!force && m_sinceDraw.isValid() && m_sinceDraw.elapsed() < 100))
        return;
    m_sinceDraw.restart();
    const std::int64_t bytes =
        std::int64_t(static_cast<long double>(m_run.byteTotal()) * m_width / FullWidth);
    std::fprintf(m_out, "\r\033[K%s",
                 format(m_files, bytes, m_run.byteTotal(), m_clock.elapsed()).constData());
    std::fflush(m_out);
}

} // namespace duomir::cli

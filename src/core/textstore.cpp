#include "core/textstore.h"

#include <algorithm>
#include <cstring>

namespace duomir {

char16_t *TextStore::reserve(std::size_t size)
{
    if (m_blocks.empty() || m_capacity - m_used < size) {
        // A text longer than a block gets a block of its own size.
        m_capacity = std::max(BlockUnits, size);
        m_blocks.push_back(std::make_unique_for_overwrite<char16_t[]>(m_capacity));
        m_used = 0;
    }
    m_reserved = m_blocks.back().get() + m_used;
    return m_reserved;
}

QStringView TextStore::commit(std::size_t used)
{
    const QStringView view(m_reserved, static_cast<qsizetype>(used));
    m_used += used;
    m_reserved = nullptr;
    return view;
}

QStringView TextStore::add(QStringView text)
{
    if (text.isEmpty())
        return {};
    const auto size = static_cast<std::size_t>(text.size());
    char16_t *to = reserve(size);
    std::memcpy(to, text.utf16(), size * sizeof(char16_t));
    return commit(size);
}

const QString *TextStore::addPath(QString path)
{
    return &m_paths.emplace_back(std::move(path));
}

std::size_t TextStore::bytes() const
{
    std::size_t total = 0;
    for (std::size_t b = 0; b < m_blocks.size(); ++b)
        total += (b + 1 == m_blocks.size() ? m_capacity : BlockUnits) * sizeof(char16_t);
    for (const QString &p : m_paths)
        total += sizeof(QString) + static_cast<std::size_t>(p.capacity()) * sizeof(char16_t);
    return total;
}

} // namespace duomir

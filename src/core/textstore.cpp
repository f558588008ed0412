#include "core/textstore.h"

#include <algorithm>
#include <cstring>

namespace duomir {

char *TextStore::take(std::size_t bytes, std::size_t alignment)
{
    std::size_t at = (m_used + alignment - 1) & ~(alignment - 1);
    if (m_blocks.empty() || at + bytes > m_capacity) {
        // A text longer than a block gets a block of its own size.
        m_capacity = std::max(BlockBytes, bytes);
        m_blocks.push_back(std::make_unique_for_overwrite<char[]>(m_capacity));
        at = 0;
    }
    m_used = at + bytes;
    return m_blocks.back().get() + at;
}

QAnyStringView TextStore::add(QStringView text)
{
    if (text.isEmpty())
        return {};
    const auto size = static_cast<std::size_t>(text.size());
    const char16_t *units = text.utf16();
    if (std::all_of(units, units + size, [](char16_t u) { return u < 0x100; })) {
        char *to = take(size, 1);
        std::transform(units, units + size, to, [](char16_t u) { return static_cast<char>(u); });
        return QLatin1StringView(to, text.size());
    }
    auto *to = reinterpret_cast<char16_t *>(take(size * sizeof(char16_t), alignof(char16_t)));
    std::memcpy(to, units, size * sizeof(char16_t));
    return QStringView(to, text.size());
}

const QString *TextStore::addPath(QString path)
{
    return &m_paths.emplace_back(std::move(path));
}

} // namespace duomir

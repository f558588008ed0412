#pragma once

#include <QString>
#include <QStringView>
#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

namespace duomir {

// The texts of a large comparison: names packed one after the other in large blocks, and the
// directory paths, each once. A million names as a million strings would cost a heap block and
// a header each; here a name costs its units. Nothing is ever moved or taken back, so the views
// and pointers handed out stay valid as long as the store lives; whoever holds entries pointing
// into a store holds the store too.
class TextStore
{
public:
    TextStore() = default;
    TextStore(const TextStore &) = delete;
    TextStore &operator=(const TextStore &) = delete;

    // A lasting copy of `text`.
    QStringView add(QStringView text);
    // Room for `size` units at the end of the current block: fill it, then keep its first units
    // with commit(). Nothing else may be added in between.
    char16_t *reserve(std::size_t size);
    QStringView commit(std::size_t used);

    // A lasting path string; the same address for as long as the store lives.
    const QString *addPath(QString path);

    // The bytes held, for memory reports.
    std::size_t bytes() const;

private:
    static constexpr std::size_t BlockUnits = 1 << 16;

    std::vector<std::unique_ptr<char16_t[]>> m_blocks;
    std::size_t m_used = 0;     // units taken in the last block
    std::size_t m_capacity = 0; // units in the last block
    char16_t *m_reserved = nullptr;
    std::deque<QString> m_paths;
};

using SharedTexts = std::shared_ptr<TextStore>;

} // namespace duomir

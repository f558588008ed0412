#pragma once

#include <QAnyStringView>
#include <QString>
#include <QStringView>
#include <cstddef>
#include <deque>
#include <memory>
#include <type_traits>
#include <vector>

namespace duomir {

// The texts of a large comparison: names packed one after the other in large blocks, and the
// directory paths, each once. A million names as a million strings would cost a heap block and
// a header each; here a name costs its units, one byte each when every unit fits in one (Latin-1,
// as almost every name is) and two otherwise. Nothing is ever moved or taken back, so the views
// and pointers handed out stay valid as long as the store lives; whoever holds entries pointing
// into a store holds the store too.
class TextStore
{
public:
    TextStore() = default;
    TextStore(const TextStore &) = delete;
    TextStore &operator=(const TextStore &) = delete;

    // A lasting copy of `text`: a Latin-1 view when every unit is below 0x100, else UTF-16.
    QAnyStringView add(QStringView text);

    // A lasting path string; the same address for as long as the store lives.
    const QString *addPath(QString path);

private:
    static constexpr std::size_t BlockBytes = 1 << 17;

    char *take(std::size_t bytes, std::size_t alignment);

    std::vector<std::unique_ptr<char[]>> m_blocks;
    std::size_t m_used = 0;     // bytes taken in the last block
    std::size_t m_capacity = 0; // bytes in the last block
    std::deque<QString> m_paths;
};

using SharedTexts = std::shared_ptr<TextStore>;

// The units of a name as a TextStore keeps them: one byte each (Latin-1) or two (UTF-16).
struct NameUnits
{
    const void *data = nullptr;
    qsizetype size = 0;
    bool wide = false;

    static NameUnits of(QAnyStringView text)
    {
        return text.visit([](auto view) {
            if constexpr (std::is_same_v<decltype(view), QStringView>)
                return NameUnits{view.utf16(), view.size(), true};
            else // Latin-1 (a TextStore makes no UTF-8 views)
                return NameUnits{view.data(), view.size(), false};
        });
    }
    char16_t operator[](qsizetype i) const
    {
        return wide ? static_cast<const char16_t *>(data)[i]
                    : static_cast<const unsigned char *>(data)[i];
    }
};

} // namespace duomir

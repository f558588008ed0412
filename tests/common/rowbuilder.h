#pragma once

#include <QString>

#include "core/fileentry.h"
#include "core/textstore.h"

namespace duomir::test {

// Rows made by hand: their texts go to `texts`, which must live as long as the rows (an engine's
// texts() does). A null or empty text leaves that side without a name or path.
inline void setPaths(CompareEntry &row, TextStore &texts, const QString &source,
                     const QString &destination)
{
    row.setPath(Side::Source, texts.addPath(source));
    row.setPath(Side::Destination, texts.addPath(destination));
}

inline void setNames(CompareEntry &row, TextStore &texts, const QString &source,
                     const QString &destination)
{
    row.setName(Side::Source, texts.add(source));
    row.setName(Side::Destination, texts.add(destination));
}

} // namespace duomir::test

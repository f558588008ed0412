#pragma once

#include <QString>

namespace duomir {

// major.minor.revision of this build.
inline QString programVersion()
{
    return QStringLiteral(DUOMIR_VERSION);
}

} // namespace duomir

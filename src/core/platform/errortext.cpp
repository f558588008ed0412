#include <cstring>

#include "core/platform/fileops.h"

namespace duomir {

QString errorText(int code)
{
    if (code == OpError::NotRegularFile)
        return QStringLiteral("Not a regular file: sockets, FIFOs and devices are not copied");
    if (code == OpError::PlaceUnknown)
        return QStringLiteral("No absolute path (the pair has no directory on this side): "
                              "nothing was changed");
    return QString::fromLocal8Bit(std::strerror(code));
}

} // namespace duomir

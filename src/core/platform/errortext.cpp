#include <cstring>

#include "core/platform/fileops.h"

namespace duomir {

QString errorText(int code)
{
    if (code == OpError::NotRegularFile)
        return QStringLiteral("Not a regular file: sockets, FIFOs and devices are not copied");
    if (code == OpError::PlaceUnknown)
        return QStringLiteral("No absolute path (the pair has no directory on this side), or "
                              "a path outside the pair: nothing was changed");
    if (code == OpError::FolderChanged)
        return QStringLiteral("A folder on the way is no longer the one the comparison saw (now a "
                              "symbolic link, a file or gone): nothing was changed below it");
    if (code == OpError::NotSeen)
        return QStringLiteral("exists on the receiving side but was not seen by the comparison");
    if (code == OpError::ChangedSinceCompare)
        return QStringLiteral("changed since the comparison");
    if (code == OpError::NoTrash)
        return QStringLiteral("No trash can be used on this volume: the file was neither deleted "
                              "nor replaced");
    return QString::fromLocal8Bit(std::strerror(code));
}

} // namespace duomir

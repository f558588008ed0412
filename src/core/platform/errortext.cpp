#include <cstring>

#include "core/platform/fileops.h"

namespace duomir {

QString errorText(int code)
{
    if (code == OpError::NotRegularFile)
        return QStringLiteral("Not a regular file: sockets, FIFOs and devices are not copied");
    return QString::fromLocal8Bit(std::strerror(code));
}

} // namespace duomir

#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace duomir {

// The bytes the system takes for a path held as text.
inline QByteArray nativePath(const QString &path)
{
    return QFile::encodeName(path);
}

} // namespace duomir

#pragma once

#include <QString>

namespace duomir {

inline constexpr QChar pathSeparator()
{
#ifdef Q_OS_WIN
    return u'\\';
#else
    return u'/';
#endif
}

// A directory as the system takes it: without its trailing separator, except a root of its own.
inline QString withoutTrailingSeparator(const QString &path)
{
    if (path.size() > 1 && path.endsWith(pathSeparator()))
        return path.left(path.size() - 1);
    return path;
}

// How deep a path lies: the walks end a subtree at the first directory that is not deeper than
// the one they started at.
inline qsizetype separatorCount(const QString &path)
{
    return path.count(pathSeparator());
}

} // namespace duomir

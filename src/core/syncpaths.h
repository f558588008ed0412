#pragma once

#include <QString>

#include "base/casefold.h"
#include "core/fileentry.h"
#include "core/platform/fileops.h"

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

// What the paths of every row inside a folder begin with on that side: the folder's path with one
// separator. Empty for a folder without a path, which then holds everything.
inline QString insidePrefix(const QString &folder)
{
    if (folder.isEmpty())
        return {};
    QString inside = withoutTrailingSeparator(folder);
    if (!inside.endsWith(pathSeparator()))
        inside += pathSeparator();
    return inside;
}

// Whether a row's path lies inside the folder of `inside` (from insidePrefix), names compared as
// the comparison pairs them, unit by unit upper-cased: a row that only the other side has carries
// that side's spelling.
inline bool liesInside(const QString &path, const QString &inside)
{
    if (path.size() < inside.size())
        return false;
    const char16_t *p = units(path);
    const char16_t *q = units(inside);
    for (qsizetype i = 0; i < inside.size(); ++i) {
        if (upperUnit(p[i]) != upperUnit(q[i]))
            return false;
    }
    return true;
}

// Where a row stands to a folder walk: inside the folder as this side spells it; among its rows
// without being inside (a case twin of the folder or of something in it, which the sort puts
// between the folder's rows: passed over); or past the folder's rows (the walk ends).
enum class InFolder { Inside, Twin, Past };
// `folder` is the walk's folder on this side without its separator, `inside` its insidePrefix
// (empty: the whole list, where everything is inside).
inline InFolder inFolder(const QString &path, const QString &folder, const QString &inside)
{
    if (inside.isEmpty() || path.startsWith(inside))
        return InFolder::Inside;
    if (liesInside(path, inside) ||
        (path.size() == folder.size() && liesInside(path + pathSeparator(), inside)))
        return InFolder::Twin;
    return InFolder::Past;
}

// The row that opens the pair `row` belongs to: the pair's roots, no name on either side.
inline bool isPairRootRow(const CompareEntry &x)
{
    return x.lacks(Side::Source) && x.lacks(Side::Destination);
}
inline int pairRootRow(const CompareArray &rows, int row)
{
    while (row > 1 && !isPairRootRow(rows[size_t(row)]))
        --row;
    return row;
}

// The pair's directory on `side` as the file operations take it: "/" for the file system's root
// (its row holds the empty text), empty when the pair names no directory there.
inline QString pairRoot(const CompareEntry &rootRow, Side side)
{
    const QString &path = rootRow.path(side);
    if (!path.isEmpty())
        return path;
    return rootRow.Attributes[size_t(side)] == Attr::Invalid ? QString() : QStringLiteral("/");
}

// A full path of a row as a place below `root`; a path that does not lie below it gets no root,
// which every operation refuses.
inline TreePath placeBelow(const QString &root, const QString &full)
{
    QString path = withoutTrailingSeparator(full);
    if (root.isEmpty())
        return {};
    if (path == root)
        return {root, {}};
    if (root == u"/" && path.startsWith(u'/'))
        return {root, path.mid(1)};
    if (path.size() > root.size() + 1 && path.startsWith(root) && path[root.size()] == u'/')
        return {root, path.mid(root.size() + 1)};
    return {};
}

} // namespace duomir

#pragma once

#include <QString>
#include <array>

#include "core/comparison.h"
#include "core/platform/fileops.h"
#include "core/syncpaths.h"

namespace duomir {

// The two roots of the pair a walk is in, as the file operations take them: every place the walk
// acts on is built below one of them, with the identity the comparison recorded for it.
class PairPlaces
{
public:
    void enter(const Comparison &comparison, int rootRow)
    {
        const CompareEntry &root = comparison.row(rootRow);
        m_roots = {pairRoot(root, Side::Source), pairRoot(root, Side::Destination)};
        m_ids = comparison.rootIdentities(rootRow);
    }
    TreePath place(Side side, const QString &full) const
    {
        TreePath p = placeBelow(m_roots[size_t(side)], full);
        p.rootId = m_ids[size_t(side)];
        return p;
    }

private:
    std::array<QString, 2> m_roots;
    std::array<RootIdentity, 2> m_ids;
};

// The folders one side of a walk acts in: each is checked once as the walk enters it; one that is
// no longer the folder the comparison saw (or could not be made) is reported once, and nothing
// below it is touched.
class FolderGate
{
public:
    // Whether `path` lies below a folder given up (exactly as spelled: on a file system that
    // tells case apart, the twin folder is another).
    bool isBlocked(const QString &path) const
    {
        return !m_blockedBelow.isEmpty() && path.startsWith(m_blockedBelow);
    }
    void block(const QString &folder) { m_blockedBelow = insidePrefix(folder); }
    // Checks `folder` (its place `at`) unless it was the last one checked; a failure blocks it.
    OpResult check(FileOps &ops, const QString &folder, const TreePath &at)
    {
        if (folder == m_checked)
            return OpResult::success();
        const OpResult there = ops.checkDirectory(at);
        if (!there.ok()) {
            block(folder);
            return there;
        }
        m_checked = folder;
        return there;
    }
    void passed(const QString &folder) { m_checked = folder; }
    void reset()
    {
        m_blockedBelow.clear();
        m_checked.clear();
    }

private:
    QString m_blockedBelow;
    QString m_checked;
};

} // namespace duomir

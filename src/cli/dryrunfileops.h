#pragma once

#include <cerrno>
#include <cstdio>

#include "core/platform/fileops.h"
#include "core/platform/nativename.h"

namespace duomir::cli {

// Prints each change instead of making it, and answers success; only the look-ups reach the disk.
// What the real run would refuse is refused here too, and not printed. Names are printed as
// their bytes, control bytes escaped, one change a line.
class DryRunFileOps : public FileOps
{
public:
    explicit DryRunFileOps(FileOps &real) : m_real(real) {}

    OpResult checkDirectory(const TreePath &dir) override
    {
        // A folder the run would create first is not there yet; the dry run goes on into it.
        const OpResult there = m_real.checkDirectory(dir);
        return there.error == ENOENT ? OpResult::success() : there;
    }
    OpResult makeDirectory(const TreePath &dir, const TreePath &) override
    {
        return say("create", dir, dir.full());
    }
    OpResult clearReadOnly(const TreePath &file) override
    {
        return placeKnown(file) ? OpResult::success() : OpResult::failure(OpError::PlaceUnknown);
    }
    OpResult removeFile(const TreePath &file, const Seen &) override
    {
        return say("delete", file, file.full());
    }
    OpResult removeDirectory(const TreePath &dir) override
    {
        // Only an empty directory would go; a dry run cannot know whether it would be empty.
        if (placeKnown(dir) && m_real.checkDirectory(dir).error == ENOENT)
            return OpResult::success();
        return say("remove-if-empty", dir, dir.full());
    }
    OpResult copyFile(const TreePath &from, const Seen &, const TreePath &to,
                      const std::optional<Seen> &, const CopyProgress &,
                      const std::atomic<bool> &) override
    {
        if (!placeKnown(from))
            return OpResult::failure(OpError::PlaceUnknown);
        return say("copy", to, from.full(), to.full());
    }
    OpResult removeLeftover(const TreePath &) override { return OpResult::success(); }
    OpResult listFolders(const TreePath &dir, QStringList &names) override
    {
        return m_real.listFolders(dir, names);
    }
    OpResult removeTree(const TreePath &dir) override
    {
        return say("remove-old-versions", dir, dir.full());
    }
    void walkEnded() override { m_real.walkEnded(); }

private:
    // Prints a change at `place`, unless the real run would refuse that place.
    static OpResult say(const char *what, const TreePath &place, const QString &path,
                        const QString &to = {})
    {
        if (!placeKnown(place))
            return OpResult::failure(OpError::PlaceUnknown);
        QByteArray line(what);
        line += ' ';
        appendEscapedForLine(line, path);
        if (!to.isEmpty()) {
            line += " -> ";
            appendEscapedForLine(line, to);
        }
        line += '\n';
        std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
        std::fflush(stdout);
        return OpResult::success();
    }

    FileOps &m_real;
};

} // namespace duomir::cli

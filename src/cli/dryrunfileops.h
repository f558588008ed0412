#pragma once

#include <cerrno>
#include <cstdio>
#include <mutex>

#include "base/nativename.h"
#include "core/platform/fileops.h"

namespace duomir::cli {

// One change as one line on standard output: "copy FROM -> TO", "delete PATH", names as their
// bytes with control bytes escaped. The dry run and --verbose print the same lines.
inline void printChange(const char *what, const QString &path, const QString &to = {})
{
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
}

// The real operations, each change printed once it is made (--verbose): a run can be read
// afterwards as its dry run would have been. Copies on worker threads print whole lines.
class ItemizedFileOps : public FileOps
{
public:
    explicit ItemizedFileOps(FileOps &real) : m_real(real) {}

    void setKeeping(Keeping keeping) override
    {
        m_real.setKeeping(keeping);
        FileOps::setKeeping(std::move(keeping));
    }
    OpResult checkDirectory(const TreePath &dir) override { return m_real.checkDirectory(dir); }
    OpResult makeDirectory(const TreePath &dir, const TreePath &templ) override
    {
        return told("create", m_real.makeDirectory(dir, templ), dir.full());
    }
    OpResult clearReadOnly(const TreePath &file) override { return m_real.clearReadOnly(file); }
    OpResult removeFile(const TreePath &file, const Seen &seen) override
    {
        return told("delete", m_real.removeFile(file, seen), file.full());
    }
    OpResult removeDirectory(const TreePath &dir) override
    {
        return told("remove", m_real.removeDirectory(dir), dir.full());
    }
    OpResult copyFile(const TreePath &from, const Seen &fromSeen, const TreePath &to,
                      const std::optional<Seen> &toSeen, const CopyProgress &progress,
                      const std::atomic<bool> &cancel) override
    {
        return told(toSeen ? "replace" : "copy",
                    m_real.copyFile(from, fromSeen, to, toSeen, progress, cancel), from.full(),
                    to.full());
    }
    OpResult removeLeftover(const TreePath &file) override
    {
        return told("remove-leftover", m_real.removeLeftover(file), file.full());
    }
    OpResult listFolders(const TreePath &dir, QStringList &names) override
    {
        return m_real.listFolders(dir, names);
    }
    OpResult removeTree(const TreePath &dir) override
    {
        return told("remove-old-versions", m_real.removeTree(dir), dir.full());
    }
    void walkEnded() override { m_real.walkEnded(); }
    std::int64_t parallelCopyLimit() const override { return m_real.parallelCopyLimit(); }

private:
    OpResult told(const char *what, OpResult result, const QString &path, const QString &to = {})
    {
        if (result.ok()) {
            const std::lock_guard lock(m_print);
            printChange(what, path, to);
        }
        return result;
    }

    FileOps &m_real;
    std::mutex m_print;
};

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
        printChange(what, path, to);
        return OpResult::success();
    }

    FileOps &m_real;
};

} // namespace duomir::cli

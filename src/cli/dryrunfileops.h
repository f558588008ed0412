#pragma once

#include <QTextStream>

#include "core/platform/fileops.h"

namespace duomir::cli {

// Prints each change instead of making it, and answers success; only the look-ups reach the disk.
// What the real run would refuse is refused here too, and not printed.
class DryRunFileOps : public FileOps
{
public:
    explicit DryRunFileOps(FileOps &real) : m_real(real), m_out(stdout) {}

    bool directoryExists(const QString &path) override { return m_real.directoryExists(path); }
    OpResult makeDirectory(const QString &path, const QString &) override
    {
        return say(QStringLiteral("create"), path, path);
    }
    OpResult clearReadOnly(const QString &path) override
    {
        return placeKnown(path) ? OpResult::success() : OpResult::failure(OpError::PlaceUnknown);
    }
    OpResult removeFile(const QString &path) override
    {
        return say(QStringLiteral("delete"), path, path);
    }
    OpResult removeDirectory(const QString &path) override
    {
        // Only an empty directory would go; a dry run cannot know whether it would be empty.
        if (placeKnown(path) && !m_real.directoryExists(path))
            return OpResult::success();
        return say(QStringLiteral("remove-if-empty"), path, path);
    }
    OpResult copyFile(const QString &from, const QString &to, const CopyProgress &,
                      const std::atomic<bool> &) override
    {
        if (!placeKnown(from))
            return OpResult::failure(OpError::PlaceUnknown);
        return say(QStringLiteral("copy"), to, from + u" -> " + to);
    }

private:
    // Prints `text` as a change at `place`, unless the real run would refuse that place.
    OpResult say(const QString &what, const QString &place, const QString &text)
    {
        if (!placeKnown(place))
            return OpResult::failure(OpError::PlaceUnknown);
        m_out << what << u' ' << text << u'\n';
        m_out.flush();
        return OpResult::success();
    }

    FileOps &m_real;
    QTextStream m_out;
};

} // namespace duomir::cli

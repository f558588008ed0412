#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QTemporaryDir>

namespace duomir::test {

// A temporary folder in which a test builds the trees it compares or synchronizes.
// Paths are relative to the folder; every helper fails the test (QVERIFY) when the disk says no.
class TempTree
{
public:
    TempTree();
    ~TempTree();
    TempTree(const TempTree &) = delete;
    TempTree &operator=(const TempTree &) = delete;

    QString root() const { return m_dir.path(); }
    QString path(const QString &relative) const;

    // Creates the file with its parent folders; `mtime` as seconds since the epoch when non-zero.
    void file(const QString &relative, const QByteArray &content = {}, qint64 mtime = 0);
    void dir(const QString &relative);
    void symlink(const QString &relative, const QByteArray &target);
    // A file whose name need not be UTF-8 (`relative` in the file system's bytes), with its
    // parent folders.
    void rawFile(const QByteArray &relative, const QByteArray &content = {}, qint64 mtime = 0);
    QByteArray nativePath(const QByteArray &relative) const;
    void setMtime(const QString &relative, qint64 mtime);
    void setMode(const QString &relative, unsigned mode);

    bool exists(const QString &relative) const;
    QByteArray read(const QString &relative) const;
    qint64 mtime(const QString &relative) const;
    unsigned mode(const QString &relative) const;

    // Every entry below `relative`, as "d name/", "f name size mtime" or "l name -> target" lines,
    // sorted: two trees with equal snapshots hold the same names, sizes, times and links.
    QStringList snapshot(const QString &relative = {}) const;

private:
    QTemporaryDir m_dir;
};

} // namespace duomir::test

#include "common/temptree.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <ftw.h>

namespace duomir::test {

TempTree::TempTree()
{
    QVERIFY2(m_dir.isValid(), "cannot create a temporary folder");
}

// QTemporaryDir cannot remove names that are not UTF-8; removing by bytes first can. What is left
// after that (paths beyond PATH_MAX, folders a failed test left closed) goes with rm, which walks
// by descriptor.
TempTree::~TempTree()
{
    ::nftw(
        QFile::encodeName(root()).constData(),
        [](const char *name, const struct stat *, int, struct FTW *) { return std::remove(name); },
        16, FTW_DEPTH | FTW_PHYS);
    if (QFileInfo::exists(root())) {
        QProcess::execute(QStringLiteral("chmod"),
                          {QStringLiteral("-R"), QStringLiteral("u+rwx"), root()});
        QProcess::execute(QStringLiteral("rm"), {QStringLiteral("-rf"), root()});
    }
}

QByteArray TempTree::nativePath(const QByteArray &relative) const
{
    return QFile::encodeName(root()) + '/' + relative;
}

void TempTree::rawFile(const QByteArray &relative, const QByteArray &content, qint64 mtime)
{
    for (qsizetype slash = relative.indexOf('/'); slash >= 0;
         slash = relative.indexOf('/', slash + 1)) {
        const QByteArray dir = nativePath(relative.left(slash));
        ::mkdir(dir.constData(), 0755);
    }
    const QByteArray full = nativePath(relative);
    const int fd = ::open(full.constData(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    QVERIFY2(fd >= 0, full.constData());
    const bool written = ::write(fd, content.constData(), size_t(content.size())) == content.size();
    ::close(fd);
    QVERIFY(written);
    const struct timespec times[2] = {{mtime, 0}, {mtime, 0}};
    if (mtime != 0)
        QCOMPARE(::utimensat(AT_FDCWD, full.constData(), times, 0), 0);
}

QString TempTree::path(const QString &relative) const
{
    return relative.isEmpty() ? root() : root() + u'/' + relative;
}

void TempTree::file(const QString &relative, const QByteArray &content, qint64 mtime)
{
    rawFile(QFile::encodeName(relative), content, mtime);
}

void TempTree::dir(const QString &relative)
{
    QVERIFY(QDir().mkpath(path(relative)));
}

void TempTree::symlink(const QString &relative, const QByteArray &target)
{
    const QByteArray link = QFile::encodeName(path(relative));
    QVERIFY2(::symlink(target.constData(), link.constData()) == 0, link.constData());
}

void TempTree::setMtime(const QString &relative, qint64 mtime)
{
    const QByteArray name = QFile::encodeName(path(relative));
    struct timeval times[2] = {{static_cast<time_t>(mtime), 0}, {static_cast<time_t>(mtime), 0}};
    QVERIFY2(::lutimes(name.constData(), times) == 0, name.constData());
}

void TempTree::setMode(const QString &relative, unsigned mode)
{
    const QByteArray name = QFile::encodeName(path(relative));
    QVERIFY2(::chmod(name.constData(), mode) == 0, name.constData());
}

bool TempTree::exists(const QString &relative) const
{
    struct stat st;
    return ::lstat(QFile::encodeName(path(relative)).constData(), &st) == 0;
}

QByteArray TempTree::read(const QString &relative) const
{
    QFile f(path(relative));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

qint64 TempTree::mtime(const QString &relative) const
{
    struct stat st;
    if (::lstat(QFile::encodeName(path(relative)).constData(), &st) != 0)
        return -1;
    return st.st_mtime;
}

unsigned TempTree::mode(const QString &relative) const
{
    struct stat st;
    if (::lstat(QFile::encodeName(path(relative)).constData(), &st) != 0)
        return 0;
    return st.st_mode & 07777;
}

QStringList TempTree::snapshot(const QString &relative) const
{
    const QString base = path(relative);
    QStringList lines;
    QDirIterator it(base, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        const QString rel = QDir(base).relativeFilePath(info.filePath());
        if (info.isSymLink())
            lines << QStringLiteral("l %1 -> %2").arg(rel, info.symLinkTarget());
        else if (info.isDir())
            lines << QStringLiteral("d %1/").arg(rel);
        else
            lines << QStringLiteral("f %1 %2 %3")
                         .arg(rel)
                         .arg(info.size())
                         .arg(info.lastModified().toSecsSinceEpoch());
    }
    lines.sort();
    return lines;
}

} // namespace duomir::test

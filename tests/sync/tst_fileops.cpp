#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTest>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/nativename.h"
#include "common/faultyfileops.h"
#include "common/temptree.h"
#include "core/platform/coarseclock.h"

using namespace duomir;
using duomir::test::TempTree;

namespace {

constexpr std::int64_t chunk = 64 * 1024;
constexpr qint64 OLD = 1'500'000'000;
constexpr qint64 NEW = 1'600'000'000;
const std::atomic<bool> noCancel = false;

// Names in the folder that look like a copy's temporary file.
QStringList leftovers(const TempTree &tree, const QString &dir)
{
    return QDir(tree.path(dir))
        .entryList({u".duomir-*"_qs}, QDir::AllEntries | QDir::Hidden | QDir::System);
}

TreePath at(const TempTree &tree, const QString &relative)
{
    return {tree.root(), relative};
}

// The file as a comparison would see it now; size -1 when there is none.
Seen seen(const TempTree &tree, const QByteArray &relative)
{
    struct stat st;
    if (::lstat(tree.nativePath(relative).constData(), &st) != 0)
        return {-1, -1};
    return {st.st_size, st.st_mtim.tv_sec, std::uint32_t(st.st_mtim.tv_nsec)};
}

// Copies `from` to `to`, both as the comparison would see them now.
OpResult copy(FileOps &ops, const TempTree &tree, const QString &from, const QString &to,
              const CopyProgress &progress = {}, const std::atomic<bool> &cancel = noCancel)
{
    const Seen target = seen(tree, to.toUtf8());
    return ops.copyFile(at(tree, from), seen(tree, from.toUtf8()), at(tree, to),
                        target.size < 0 ? std::optional<Seen>() : target, progress, cancel);
}

// A file's content by its bytes' name (null when it cannot be read).
QByteArray readRaw(const QByteArray &path)
{
    QFile file;
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || !file.open(fd, QIODevice::ReadOnly, QFile::AutoCloseHandle))
        return {};
    return file.readAll();
}

} // namespace

class TestFileOps : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A copy carries content, time and mode on both copy paths, and holes in the source stay holes
    // wherever they lie; every way a copy can fail leaves the old target whole. Either way
    // no temporary file stays behind.
    void copy_data()
    {
        QTest::addColumn<QList<int>>("layout"); // alternating hole and data lengths, in bytes
        QTest::addColumn<unsigned>("mode");
        QTest::addColumn<QString>("fault");
        QTest::addColumn<int>("expected");
        const int c = int(chunk);
        const QList<int> big{0, 5 * c};
        QTest::newRow("empty") << QList<int>() << 0644u << QString() << 0;
        QTest::newRow("several chunks, read-only")
            << QList<int>{0, 3 * c + 17} << 0444u << QString() << 0;
        QTest::newRow("read/write fallback")
            << QList<int>{0, 2 * c + 5} << 0755u << u"exdev"_qs << 0;
        QTest::newRow("disk full on 2nd write") << big << 0644u << u"write"_qs << ENOSPC;
        QTest::newRow("disk full, read/write") << big << 0644u << u"write exdev"_qs << ENOSPC;
        QTest::newRow("rename refused") << big << 0644u << u"rename"_qs << EACCES;
        QTest::newRow("cancelled mid-file") << big << 0644u << u"cancel"_qs << ECANCELED;
        QTest::newRow("source vanished") << big << 0644u << u"vanish"_qs << ENOENT;
        QTest::newRow("hole, data, hole")
            << QList<int>{8 * c, 2 * c, 8 * c} << 0644u << QString() << 0;
        QTest::newRow("data, hole, data")
            << QList<int>{0, c, 16 * c, 3 * c} << 0644u << QString() << 0;
        QTest::newRow("only a hole") << QList<int>{20 * c} << 0644u << QString() << 0;
    }
    void copy()
    {
        QFETCH(QList<int>, layout);
        QFETCH(unsigned, mode);
        QFETCH(QString, fault);
        QFETCH(int, expected);
        TempTree tree;
        tree.dir(u"s"_qs);
        QByteArray data;
        QFile f(tree.path(u"s/f"_qs));
        QVERIFY(f.open(QIODevice::WriteOnly));
        for (qsizetype i = 0; i < layout.size(); ++i) {
            QByteArray part(layout[i], '\0');
            for (qsizetype b = 0; b < part.size() && i % 2; ++b)
                part[b] = char(b * 7 + b / 251 + i);
            QVERIFY(i % 2 ? f.write(part) == part.size() : f.seek(f.pos() + part.size()));
            data += part;
        }
        QVERIFY(f.resize(data.size()));
        f.close();
        tree.setMtime(u"s/f"_qs, NEW);
        tree.setMode(u"s/f"_qs, mode);
        tree.file(u"d/f"_qs, "previous", OLD);
        struct stat st;
        QVERIFY(::stat(tree.nativePath("s/f").constData(), &st) == 0);
        const bool holes = layout.size() > 2 || layout.value(0) > 0; // a hole at 0, 2, ...
        if (holes && st.st_blocks * 512 >= st.st_size)
            QSKIP("this file system keeps no holes");
        FaultyFileOps ops(chunk);
        ops.copyRangeErrno = fault.contains(u"exdev") ? EXDEV : 0;
        ops.failWriteAt = fault.startsWith(u"write") ? 2 : 0;
        ops.renameErrno = fault == u"rename" ? EACCES : 0;
        ops.sourcesVanish = fault == u"vanish";
        std::atomic<bool> cancel = false;
        std::int64_t lastDone = 0;
        const auto progress = [&](std::int64_t total, std::int64_t done) {
            QVERIFY(done > lastDone);
            QCOMPARE(total, std::int64_t(data.size()));
            lastDone = done;
            cancel = fault == u"cancel" && done >= 2 * chunk;
        };
        QCOMPARE(::copy(ops, tree, u"s/f"_qs, u"d/f"_qs, progress, cancel).error, expected);
        QCOMPARE(tree.read(u"d/f"_qs), expected ? QByteArray("previous") : data);
        QCOMPARE(tree.mtime(u"d/f"_qs), expected ? OLD : NEW);
        if (!expected) {
            QCOMPARE(tree.mode(u"d/f"_qs), mode);
            QCOMPARE(lastDone, std::int64_t(data.size()));
        }
        QCOMPARE(leftovers(tree, u"d"_qs), QStringList());
        struct stat copied;
        QVERIFY(::stat(tree.nativePath("d/f").constData(), &copied) == 0);
        QVERIFY2(!holes || copied.st_blocks <= st.st_blocks + 16,
                 qPrintable(u"%1 blocks for %2"_qs.arg(copied.st_blocks).arg(st.st_blocks)));
    }

    // A link is copied as a link, its target not followed; a FIFO would block a reader forever and
    // is refused with a text that says why, leaving the file in the way alone.
    void nonRegularSource()
    {
        TempTree tree;
        tree.file(u"d/x"_qs, "a file in the way");
        tree.file(u"d/y"_qs, "a file in the way");
        QVERIFY(::mkfifo(tree.nativePath("x").constData(), 0644) == 0);
        tree.symlink(u"y"_qs, "../no/such target");
        PosixFileOps ops;
        const OpResult fifo = ::copy(ops, tree, u"x"_qs, u"d/x"_qs);
        QCOMPARE(fifo.error, int(OpError::NotRegularFile));
        QVERIFY(errorText(fifo.error).contains(u"FIFO"));
        QCOMPARE(tree.read(u"d/x"_qs), QByteArray("a file in the way"));
        QCOMPARE(::copy(ops, tree, u"y"_qs, u"d/y"_qs).error, 0);
        QCOMPARE(QFileInfo(tree.path(u"d/y"_qs)).symLinkTarget(), tree.path(u"no/such target"_qs));
    }

    // A new folder takes its template's bits, and a name the comparison saw free but that is
    // taken now is not used. (Making a file writable is in tst_syncsafety's faults test.)
    void modeBits()
    {
        TempTree tree;
        PosixFileOps ops;
        tree.dir(u"template"_qs);
        tree.setMode(u"template"_qs, 0750);
        const auto make = [&] {
            return ops.makeDirectory(at(tree, u"new"_qs), at(tree, u"template"_qs)).error;
        };
        QCOMPARE(make(), 0);
        QCOMPARE(tree.mode(u"new"_qs), 0750u);
        QCOMPARE(make(), int(OpError::NotSeen));
    }

    // Every operation reaches its place without following a link, below an absolute root only,
    // and changes only what is as the comparison saw it. Each row prepares one trap; "outside"
    // must stay as it was, and so must the file the operation would have replaced. A relative
    // root names, from the working directory, the very folders the operation must not touch.
    // (Edits, a name taken and a receiving folder swapped for a link during a copy are in
    // tst_syncsafety's changesDuringTheRun, end to end.)
    void everyChangeStaysInsideAndAsSeen_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("trap");
        QTest::addColumn<int>("expected");
        using namespace OpError;
        const std::tuple<const char *, const char *, int> rows[] = {

            {"copy", "through a sending link", FolderChanged},

            {"copy", "onto a case twin", NotSeen},

            {"copy", "onto a link in the file's place", ChangedSinceCompare},
            {"copy", "over a file edited within the second", ChangedSinceCompare},
            {"copy", "with no trap", 0},
            {"copy", "to a new name where a link answers EIO (rclone mount)", 0},
            {"delete", "through a receiving link", FolderChanged},
            {"delete", "over an edited file", ChangedSinceCompare},
            {"mkdir", "through a receiving link", FolderChanged},
            {"mkdir", "onto a case twin", NotSeen},
            {"chmod", "through a receiving link", FolderChanged},
            {"chmod", "of a file linked from outside", 0},
            {"rmdir", "through a receiving link", FolderChanged},
            {"copy", "from below a relative root", PlaceUnknown}};
        for (const auto &[operation, trap, expected] : rows)
            QTest::addRow("%s %s", operation, trap)
                << QString::fromLatin1(operation) << QString::fromLatin1(trap) << expected;
        for (const char *operation : {"copy", "delete", "mkdir", "chmod", "rmdir", "check"})
            QTest::addRow("%s below a relative root", operation)
                << QString::fromLatin1(operation) << u"below a relative root"_qs << PlaceUnknown;
    }
    void everyChangeStaysInsideAndAsSeen()
    {
        QFETCH(QString, operation);
        QFETCH(QString, trap);
        QFETCH(int, expected);
        TempTree tree;
        tree.file(u"outside/sub/a.txt"_qs, "precious", OLD);
        tree.setMode(u"outside/sub/a.txt"_qs, 0444);
        tree.dir(u"outside/sub/x"_qs);
        tree.file(u"s/sub/a.txt"_qs, "new", NEW);
        tree.file(u"d/sub/a.txt"_qs, "old", OLD);
        const Seen source = seen(tree, "s/sub/a.txt");
        std::optional<Seen> target = seen(tree, "d/sub/a.txt");
        QString to = u"sub/a.txt"_qs;
        FaultyFileOps ops;
        const bool inPlace = trap == u"onto a link in the file's place";
        if (trap.startsWith(u"through") || inPlace) {
            const QString side = inPlace                       ? u"d/sub/a.txt"_qs
                                 : trap.contains(u"receiving") ? u"d/sub"_qs
                                                               : u"s/sub"_qs;
            QVERIFY(QFile::remove(tree.path(side)) || QDir(tree.path(side)).removeRecursively());
            tree.symlink(side, inPlace ? "../../outside/sub/a.txt" : "../outside/sub");

        } else if (trap.endsWith(u"(rclone mount)")) {
            ops.linkErrno = EIO;
            target.reset();
            to = u"sub/new.txt"_qs;
        } else if (trap == u"onto a case twin") {
            ops.caseBlind = true;
            target.reset();
            to = u"sub/A.TXT"_qs;
        } else if (trap == u"over an edited file") {
            tree.file(u"d/sub/a.txt"_qs, "edited", OLD);

        } else if (trap == u"of a file linked from outside") {
            QVERIFY(QFile::remove(tree.path(u"d/sub/a.txt"_qs)));
            QVERIFY(::link(tree.nativePath("outside/sub/a.txt").constData(),
                           tree.nativePath("d/sub/a.txt").constData()) == 0);
        } else if (trap == u"over a file edited within the second") {
            tree.file(u"d/sub/a.txt"_qs, "ol!", OLD); // same size, same second
            const struct timespec times[2] = {{OLD, 0}, {OLD, 5000}};
            QVERIFY(::utimensat(AT_FDCWD, tree.nativePath("d/sub/a.txt").constData(), times, 0) ==
                    0);
        } else if (trap == u"below a relative root") {
            tree.setMode(u"d/sub/a.txt"_qs, 0444); // for the chmod to change
        }
        const QString old = QDir::currentPath();
        QDir::setCurrent(tree.root());
        const auto back = qScopeGuard([&] { QDir::setCurrent(old); });
        const QString s = trap == u"from below a relative root" ? u"s"_qs : tree.path(u"s"_qs);
        const QString d = trap == u"below a relative root" ? u"d"_qs : tree.path(u"d"_qs);
        const unsigned modeBefore = tree.mode(u"d/sub/a.txt"_qs);
        const QStringList outsideBefore = tree.snapshot(u"outside"_qs);
        const QStringList receivingBefore = tree.snapshot(u"d"_qs);

        OpResult r;
        if (operation == u"copy")
            r = ops.copyFile({s, u"sub/a.txt"_qs}, source, {d, to}, target, {}, noCancel);
        else if (operation == u"delete")
            r = ops.removeFile({d, u"sub/a.txt"_qs}, {3, OLD});
        else if (operation == u"mkdir")
            r = ops.makeDirectory({d, trap == u"onto a case twin" ? u"SUB"_qs : u"sub/x"_qs},
                                  at(tree, u"s/sub"_qs));
        else if (operation == u"chmod")
            r = ops.clearReadOnly({d, u"sub/a.txt"_qs});
        else if (operation == u"rmdir")
            r = ops.removeDirectory({d, u"sub/x"_qs});
        else
            r = ops.checkDirectory({d, u"sub"_qs});
        QCOMPARE(r.error, expected);
        QCOMPARE(tree.snapshot(u"outside"_qs), outsideBefore);
        QCOMPARE(tree.mode(u"outside/sub/a.txt"_qs), 0444u);
        if (expected != 0 || operation != u"copy")
            QCOMPARE(tree.snapshot(u"d"_qs), receivingBefore);
        else
            QCOMPARE(tree.read(u"d/"_qs + to), QByteArray("new"));
        if (expected != 0)
            QCOMPARE(tree.mode(u"d/sub/a.txt"_qs), modeBefore);
        QCOMPARE(leftovers(tree, u"d/sub"_qs), QStringList());
    }

    // A deleted or replaced file is kept: in the trash of its volume (with an info file that
    // names it) or in the run's versions folder. A replaced name holds the old or the new file at
    // every moment, and a name already in the trash is never taken twice.
    void keepsWhatGoes_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<bool>("links");
        QTest::addColumn<QByteArray>("keptAs");
        const auto row = [](const char *tag, const char *mode, const char *operation,
                            const char *name, bool links, const char *keptAs) {
            QTest::newRow(tag) << QString::fromLatin1(mode) << QString::fromLatin1(operation)
                               << QByteArray(name) << links << QByteArray(keptAs);
        };
        row("trash: delete", "trash", "delete", "f", true, "f");
        row("trash: name taken there", "trash", "delete", "taken", true, "taken.1");
        row("trash: a file there without its info file", "trash", "delete", "orphan", true,
            "orphan.1");
        row("trash: odd bytes escaped", "trash", "delete", "a b%\xff\n", true, "a b%\xff\n");
        row("trash: replace without hard links", "trash", "replace", "f", false, "f");

        row("absolute folder: replace", "absolute", "replace", "f", true, "f");
        row("folder: name taken there", "folder", "delete", "taken", true, "taken.2");
    }
    void keepsWhatGoes()
    {
        QFETCH(QString, mode);
        QFETCH(QString, operation);
        QFETCH(QByteArray, name);
        QFETCH(bool, links);
        QFETCH(QByteArray, keptAs);
        TempTree tree;
        const QByteArray file = "r/sub/" + name;
        tree.rawFile(file, "old", OLD);
        tree.file(u"s/new"_qs, "brand new", NEW);
        tree.dir(u"home"_qs);
        const QByteArray kept = mode == u"trash" ? QByteArray("home/Trash/files/" + keptAs)
                                : mode == u"absolute"
                                    ? QByteArray("all/Versions/2026-11-24 140000/sub/" + keptAs)
                                    : QByteArray("r/Versions/2026-11-24 140000/sub/" + keptAs);
        if (name == "orphan")
            tree.rawFile("home/Trash/files/orphan", "left behind");
        if (name == "taken") {
            tree.rawFile(mode == u"trash" ? "home/Trash/files/taken" : kept.chopped(2), "other");
            if (mode == u"trash")
                tree.rawFile("home/Trash/info/taken.trashinfo", "[Trash Info]\n");
        }
        const Seen before = seen(tree, file);
        FaultyFileOps ops;
        ops.caseBlind = !links;
        ops.setKeeping(
            {.mode = mode == u"trash" ? Keeping::Mode::Trash : Keeping::Mode::Folder,
             .folder = mode == u"absolute" ? tree.path(u"all/Versions"_qs) : u"Versions"_qs,
             .runFolder = u"2026-11-24 140000"_qs,
             .homeTrash = tree.path(u"home/Trash"_qs)});
        int missingAt = 0, changes = 0;
        ops.onChange = [&] {
            ++changes;
            if (seen(tree, file).size < 0 && missingAt == 0)
                missingAt = changes;
        };
        const TreePath place{tree.path(u"r"_qs), fromNative(QByteArray("sub/" + name))};
        const OpResult r = operation == u"delete"
                               ? ops.removeFile(place, before)
                               : ops.copyFile(at(tree, u"s/new"_qs), seen(tree, "s/new"), place,
                                              before, {}, noCancel);
        QCOMPARE(r.error, 0);
        QCOMPARE(readRaw(tree.nativePath(kept)), QByteArray("old"));
        QCOMPARE(seen(tree, file).size >= 0, operation == u"replace");
        if (operation == u"replace" && links)
            QCOMPARE(missingAt, 0);
        if (mode == u"trash") {
            const QList<QByteArray> lines =
                readRaw(tree.nativePath("home/Trash/info/" + keptAs + ".trashinfo")).split('\n');
            QCOMPARE(lines.value(0), QByteArray("[Trash Info]"));
            QCOMPARE(lines.value(1), "Path=" + tree.nativePath(file).toPercentEncoding("/"));
            QVERIFY(QDateTime::fromString(QString::fromLatin1(lines.value(2).mid(13)), Qt::ISODate)
                        .isValid()); // DeletionDate=
        }
    }

    // Which mount types keep times only to two seconds (the statfs types and the boot sector are
    // met on real exFAT and FAT sticks in tst_syncsafety).
    void coarseMountTypes()
    {
        QVERIFY(coarseMountType("fuse.exfat") && !coarseMountType("fuse.sshfs"));
    }

    // The temporary name stays short whatever the target's name, so a name of 255 bytes copies;
    // and a folder deeper than the kernel's path limit is reached as any other.
    void longNamesAndDeepPaths()
    {
        TempTree tree;
        const QString name255 = u"s/"_qs + QString(85, QChar(0x00E9)) + QString(85, u'x');
        tree.file(name255, "data", NEW);
        tree.dir(u"d"_qs);
        FaultyFileOps ops;
        const QString copied = u"d/"_qs + name255.mid(2);
        QCOMPARE(::copy(ops, tree, name255, copied).error, 0);
        QCOMPARE(tree.read(copied), QByteArray("data"));
        QString deep = u"d"_qs;
        for (int i = 0; i < 20; ++i) { // 20 levels of 250 bytes: over 5,000 bytes
            deep += u'/' + QString(250, QChar(u'a' + i));
            QCOMPARE(ops.makeDirectory(at(tree, deep), at(tree, u"s"_qs)).error, 0);
        }
        QCOMPARE(::copy(ops, tree, name255, deep + u"/f"_qs).error, 0);
        QCOMPARE(ops.removeFile(at(tree, deep + u"/f"_qs), {4, NEW}).error, 0);
    }

    // Only a copy's own temporary file is removed as a leftover: not one readable to others, nor a
    // name of another shape. (A killed copy's own and one a running copy holds are in
    // tst_syncsafety's leftovers test.)
    void leftoversOfKilledRuns()
    {
        TempTree tree;
        tree.file(u"d/.duomir-mynotes1.tmp"_qs, "x");
        tree.setMode(u"d/.duomir-mynotes1.tmp"_qs, 0644);
        tree.file(u"d/.duomir-user.tmp"_qs, "x");
        tree.setMode(u"d/.duomir-user.tmp"_qs, 0600);
        PosixFileOps ops;
        QCOMPARE(ops.removeLeftover(at(tree, u"d/.duomir-mynotes1.tmp"_qs)).error, EEXIST);
        QCOMPARE(ops.removeLeftover(at(tree, u"d/.duomir-user.tmp"_qs)).error,
                 int(OpError::PlaceUnknown));
        QCOMPARE(leftovers(tree, u"d"_qs).size(), 2);
    }

    // On a volume of its own the trash is the one at the volume's top: the shared .Trash when it
    // is sticky, else .Trash-UID. One that is a link is never used, and then nothing is deleted.
    void trashOfAnotherVolume_data()
    {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<QString>("keptIn");
        const QString own = u".Trash-%1"_qs.arg(::geteuid());
        QTest::newRow("none yet: made") << QString() << own;
        QTest::newRow("shared sticky .Trash") << u"sticky"_qs << u".Trash/%1"_qs.arg(::geteuid());
        QTest::newRow("shared .Trash without sticky bit") << u"not sticky"_qs << own;
        QTest::newRow("own trash is a link") << u"link"_qs << QString();
    }
    void trashOfAnotherVolume()
    {
        QFETCH(QString, setup);
        QFETCH(QString, keptIn);
        TempTree tree;
        tree.dir(u"vol"_qs);
        tree.dir(u"elsewhere"_qs);
        tree.dir(u"home"_qs);
        if (::mount("tmpfs", tree.nativePath("vol").constData(), "tmpfs", 0, "size=1m") != 0)
            QSKIP("no tmpfs can be mounted here (needs root)");
        const auto unmount =
            qScopeGuard([&] { ::umount2(tree.nativePath("vol").constData(), MNT_DETACH); });
        const QString own = u"vol/.Trash-%1"_qs.arg(::geteuid());
        if (setup.endsWith(u"sticky")) {
            tree.dir(u"vol/.Trash"_qs);
            tree.setMode(u"vol/.Trash"_qs, setup == u"sticky" ? 01777 : 0777);
        } else if (setup == u"link") {
            tree.symlink(own, "../elsewhere");
        }
        tree.file(u"vol/r/f"_qs, "old", OLD);
        PosixFileOps ops;
        ops.setKeeping({Keeping::Mode::Trash, {}, {}, tree.path(u"home/Trash"_qs)});
        const OpResult r = ops.removeFile({tree.path(u"vol/r"_qs), u"f"_qs}, seen(tree, "vol/r/f"));
        QCOMPARE(r.error, keptIn.isEmpty() ? OpError::NoTrash : 0);
        QCOMPARE(tree.exists(u"vol/r/f"_qs), keptIn.isEmpty());
        if (!keptIn.isEmpty()) {
            QCOMPARE(tree.read(u"vol/"_qs + keptIn + u"/files/f"_qs), QByteArray("old"));
            QVERIFY(
                tree.read(u"vol/"_qs + keptIn + u"/info/f.trashinfo"_qs).contains("\nPath=r/f\n"));
        }
        QVERIFY(QDir(tree.path(u"elsewhere"_qs)).isEmpty());
        QVERIFY(!tree.exists(u"home/Trash"_qs));
    }

    // As root a copy keeps owner and group, as cp -a does. Whoever cannot keep the owner must not
    // hand out a program that runs with someone else's rights: setuid and setgid go.
    void ownerKeptOrSetuidDropped()
    {
        if (::geteuid() != 0)
            QSKIP("needs root to make files of other owners");
        for (const bool asRoot : {true, false}) {
            TempTree tree;
            tree.file(u"s/tool"_qs, "#!/bin/sh\n", NEW);
            tree.dir(u"d"_qs);
            QVERIFY(::chown(tree.nativePath("s/tool").constData(), 1234, 1234) == 0);
            tree.setMode(u"s/tool"_qs, 06755);
            tree.setMode(u"d"_qs, 0777);
            QVERIFY(::chmod(tree.root().toUtf8().constData(), 0755) == 0);
            PosixFileOps ops;
            const pid_t child = ::fork();
            if (child == 0) {
                const bool dropped = asRoot || (::setresgid(65534, 65534, 65534) == 0 &&
                                                ::setresuid(65534, 65534, 65534) == 0);
                ::_exit(dropped ? ::copy(ops, tree, u"s/tool"_qs, u"d/tool"_qs).error : 99);
            }
            int status = 0;
            QCOMPARE(::waitpid(child, &status, 0), child);
            QCOMPARE(WEXITSTATUS(status), 0);
            struct stat st;
            QVERIFY(::lstat(tree.nativePath("d/tool").constData(), &st) == 0);
            QCOMPARE(st.st_uid, asRoot ? 1234u : 65534u);
            QCOMPARE(unsigned(st.st_mode & 07777), asRoot ? 06755u : 0755u);
        }
    }
};

QTEST_GUILESS_MAIN(TestFileOps)
#include "tst_fileops.moc"

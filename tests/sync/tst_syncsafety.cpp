#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/fakeinteraction.h"
#include "common/faultyfileops.h"
#include "common/rowbuilder.h"
#include "common/temptree.h"
#include "core/comparecommand.h"
#include "core/deleteentries.h"
#include "core/engine.h"
#include "core/exitstatus.h"
#include "core/platform/coarseclock.h"
#include "core/synchronize.h"

using namespace duomir;
using namespace duomir::test;

namespace {

constexpr qint64 T0 = 1'600'000'000;

// Runs a test from inside another folder and comes back, so that a path resolved against the
// working directory would land on files the test can watch.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(const QString &path) : m_old(QDir::currentPath())
    {
        QDir::setCurrent(path);
    }
    ~WorkingDirectory() { QDir::setCurrent(m_old); }
    WorkingDirectory(const WorkingDirectory &) = delete;
    WorkingDirectory &operator=(const WorkingDirectory &) = delete;

private:
    QString m_old;
};

struct Fixture
{
    TempTree tree;
    FakeInteraction ui;
    Engine engine{ui};
    FaultyFileOps ops;

    Fixture()
    {
        engine.fileOps = &ops;
        tree.dir(u"log"_qs);
        engine.DataFolder = tree.path(u"log/"_qs);
        engine.settings.LogToFile = true;
        engine.DontAsk = true;
    }
    void addPair(const QString &source, const QString &destination)
    {
        DirPair pair;
        pair.IncludeDirs = pair.IncludeFiles = u"*"_qs;
        pair.Source = source.isEmpty() ? source : tree.path(source);
        pair.Destination = destination.isEmpty() ? destination : tree.path(destination);
        engine.pairs.append(pair);
    }
    // The row alone: copied to the destination, or synchronized towards it with Delete.
    void mirrorOrCopyRow(int row, bool copyOnly)
    {
        engine.sync = {true, false, false, true};
        if (copyOnly)
            CopySelected(engine, 0, row);
        else
            QVERIFY(Synchronize(engine, row));
    }
    QString log() const
    {
        QString all;
        for (const QString &f : QDir(tree.path(u"log"_qs)).entryList(QDir::Files))
            all += QString::fromUtf8(tree.read(u"log/" + f));
        return all;
    }
};

// Makes `levels` nested folders of 250-character names below `base` (walking with openat, since
// the full path may outgrow PATH_MAX) and, when `file` is given, a file in the innermost one.
void makeDeep(const QByteArray &base, int levels, const char *file = nullptr)
{
    const QByteArray name(250, 'n');
    int fd = ::open(base.constData(), O_RDONLY | O_DIRECTORY);
    QVERIFY(fd >= 0);
    for (int i = 0; i < levels; ++i) {
        ::mkdirat(fd, name.constData(), 0755);
        const int inner = ::openat(fd, name.constData(), O_RDONLY | O_DIRECTORY);
        ::close(fd);
        fd = inner;
        QVERIFY(fd >= 0);
    }
    if (file) {
        const int f = ::openat(fd, file, O_CREAT | O_WRONLY, 0644);
        QVERIFY(f >= 0);
        QCOMPARE(::write(f, "kept", 4), 4);
        ::close(f);
    }
    ::close(fd);
}

// An exFAT image mounted through FUSE at `at` for the life of the object; `error` says why not
// when this machine cannot (not root, no FUSE, no exFAT tools, no loop device).
class ExfatMount
{
public:
    ExfatMount(const QString &image, const QString &at) : m_at(at)
    {
        if (::geteuid() != 0) {
            error = u"mounting an exFAT image needs root"_qs;
            return;
        }
        for (const char *tool : {"mkfs.exfat", "mount.exfat-fuse", "losetup"}) {
            if (QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty() &&
                QStandardPaths::findExecutable(QString::fromLatin1(tool),
                                               {u"/sbin"_qs, u"/usr/sbin"_qs})
                    .isEmpty()) {
                error = u"%1 is not installed (packages exfatprogs, exfat-fuse)"_qs.arg(
                    QString::fromLatin1(tool));
                return;
            }
        }
        QFile file(image);
        if (!file.open(QIODevice::WriteOnly) || !file.resize(16 << 20)) {
            error = u"no room for an image"_qs;
            return;
        }
        file.close();
        if (!run(u"mkfs.exfat"_qs, {image}))
            return;
        QProcess loop;
        loop.start(u"losetup"_qs, {u"-f"_qs, u"--show"_qs, image});
        loop.waitForFinished();
        m_device = QString::fromLocal8Bit(loop.readAllStandardOutput()).trimmed();
        if (loop.exitCode() != 0 || m_device.isEmpty()) {
            error = u"no loop device: "_qs + QString::fromLocal8Bit(loop.readAllStandardError());
            m_device.clear();
            return;
        }
        m_mounted = run(u"mount.exfat-fuse"_qs, {m_device, at});
    }
    ~ExfatMount()
    {
        if (m_mounted)
            run(u"umount"_qs, {m_at});
        if (!m_device.isEmpty())
            run(u"losetup"_qs, {u"-d"_qs, m_device});
    }
    ExfatMount(const ExfatMount &) = delete;
    ExfatMount &operator=(const ExfatMount &) = delete;

    QString error;

private:
    bool run(const QString &program, const QStringList &arguments)
    {
        QProcess p;
        p.start(program, arguments);
        if (!p.waitForFinished(20000) || p.exitCode() != 0) {
            if (error.isEmpty())
                error = program + u": "_qs + QString::fromLocal8Bit(p.readAllStandardError());
            return false;
        }
        return true;
    }

    QString m_at;
    QString m_device;
    bool m_mounted = false;
};

} // namespace

class TestSyncSafety : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // One row synchronized with Delete: a file the other side has is never deleted first, and a
    // file paired across letter case is replaced under its own name, not duplicated beside it.
    void singleRowsKeepTheirFiles()
    {
        Fixture f;
        f.tree.file(u"s/a.txt"_qs, "newer", T0 + 100);
        f.tree.file(u"d/a.txt"_qs, "older", T0);
        f.tree.file(u"s/b.txt"_qs, "newer", T0 + 100);
        f.tree.file(u"d/B.TXT"_qs, "older", T0);
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        f.engine.sync = {true, false, false, true};
        for (size_t r = 1; r < f.engine.CompareResults.size(); ++r) {
            if (f.engine.CompareResults[r].name(0) == u"a.txt"_qs)
                QVERIFY(Synchronize(f.engine, int(r)));
        }
        QCOMPARE(f.tree.read(u"s/a.txt"_qs), QByteArray("newer"));
        QCOMPARE(f.tree.read(u"d/a.txt"_qs), QByteArray("newer"));

        QVERIFY(Compare(f.engine));
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.tree.read(u"d/B.TXT"_qs), QByteArray("newer"));
        QVERIFY(!f.tree.exists(u"d/b.txt"_qs));
        QCOMPARE(f.tree.read(u"s/b.txt"_qs), QByteArray("newer"));
    }

    // A folder chosen in the list is walked to its end and no further: the next pair's rows follow
    // it in the list, and a root that lies deeper than the folder must not be taken for a part
    // of it.
    void aFolderWalkStaysInItsPair_data()
    {
        QTest::addColumn<bool>("copyOnly");
        QTest::newRow("synchronize the folder, with Delete") << false;
        QTest::newRow("copy the folder") << true;
    }
    void aFolderWalkStaysInItsPair()
    {
        QFETCH(bool, copyOnly);
        Fixture f;
        f.tree.file(u"s1/sub/a.txt"_qs, "a", T0);
        f.tree.dir(u"d1"_qs);
        f.tree.file(u"deep/er/x/s2/only.txt"_qs, "only in s2", T0);
        f.tree.file(u"deep/er/x/s2/b.txt"_qs, "older", T0);
        f.tree.file(u"d2/b.txt"_qs, "newer", T0 + 100);
        f.addPair(u"s1"_qs, u"d1"_qs);
        f.addPair(u"deep/er/x/s2"_qs, u"d2"_qs);
        QVERIFY(Compare(f.engine));
        int sub = 0;
        for (size_t r = 1; r < f.engine.CompareResults.size(); ++r) {
            if (f.engine.CompareResults[r].isDirectory() &&
                f.engine.CompareResults[r].name(0) == u"sub"_qs)
                sub = int(r);
        }
        QVERIFY(sub > 0);
        f.mirrorOrCopyRow(sub, copyOnly);

        QCOMPARE(f.tree.read(u"deep/er/x/s2/only.txt"_qs), QByteArray("only in s2"));
        QCOMPARE(f.tree.read(u"deep/er/x/s2/b.txt"_qs), QByteArray("older"));
        QCOMPARE(f.tree.read(u"d2/b.txt"_qs), QByteArray("newer"));
        QVERIFY(!f.tree.exists(u"d2/only.txt"_qs));
    }

    // Folders deeper than PATH_MAX are listed and copied like any other, both ways; the copy
    // of a file whose other side is there deletes nothing when mirroring towards the source.
    void treesDeeperThanPathMax()
    {
        Fixture f;
        f.tree.dir(u"s/sub"_qs);
        f.tree.dir(u"d/sub"_qs);
        makeDeep(QFile::encodeName(f.tree.path(u"s/sub"_qs)), 20, "from-source.txt");
        makeDeep(QFile::encodeName(f.tree.path(u"d/sub"_qs)), 20, "from-destination.txt");
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        // The root, sub and its 20 levels on both sides; one file newer on each side.
        QCOMPARE(f.engine.compareCounters, (std::array<int, 3>{1, 22, 1}));
        f.engine.sync = {true, true, false, false};
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.engine.syncStats.failures, 0);
        QVERIFY(Compare(f.engine));
        QCOMPARE(f.engine.compareCounters, (std::array<int, 3>{0, 24, 0}));
    }

    // A symbolic link on the receiving side where the other side has a folder: nothing goes
    // through it, whichever way the copy runs; the folder is reported once.
    void noCopyThroughALink_data()
    {
        QTest::addColumn<bool>("towardsSource");
        QTest::newRow("to the destination") << false;
        QTest::newRow("to the source") << true;
    }
    void noCopyThroughALink()
    {
        QFETCH(bool, towardsSource);
        Fixture f;
        const QString sending = towardsSource ? u"d"_qs : u"s"_qs;
        const QString receiving = towardsSource ? u"s"_qs : u"d"_qs;
        f.tree.file(u"outside/a.txt"_qs, "precious", T0);
        f.tree.file(sending + u"/sub/a.txt"_qs, "new", T0 + 100);
        f.tree.file(sending + u"/sub/b.txt"_qs, "new", T0 + 100);
        f.tree.dir(receiving);
        f.tree.symlink(receiving + u"/sub"_qs, "../outside");
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        f.engine.sync = {!towardsSource, towardsSource, false, false};
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.tree.snapshot(u"outside"_qs), QStringList({u"f a.txt 8 %1"_qs.arg(T0)}));
        QCOMPARE(f.engine.syncStats.failures, 1);
        QCOMPARE(f.log().count(u"\r\n"_qs), 3); // Start, the one failure, End
    }

    // A folder swapped for a link between the comparison and the change (made certain through
    // the file layer's hook): neither the deletion nor the copy reaches the folder it names.
    void folderSwappedForALinkMidRun_data()
    {
        QTest::addColumn<bool>("deletion");
        QTest::addColumn<bool>("root"); // the pair's root itself instead of a folder below it
        QTest::newRow("deletion on the sending side") << true << false;
        QTest::newRow("copy into the receiving side") << false << false;
        QTest::newRow("deletion, the sending root swapped") << true << true;
        QTest::newRow("copy, the receiving root swapped") << false << true;
    }
    void folderSwappedForALinkMidRun()
    {
        QFETCH(bool, deletion);
        QFETCH(bool, root);
        Fixture f;
        f.tree.file(u"s/sub/x.txt"_qs, "seen", T0);
        f.tree.file(u"s/keep.txt"_qs, "", T0);
        f.tree.file(u"d/keep.txt"_qs, "", T0);
        if (!deletion)
            f.tree.file(u"d/sub/x.txt"_qs, "old", T0 - 100);
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        // Outside the pair, a copy of what the swapped folder held: the same names, sizes and
        // times, so that only the place tells them apart.
        const QString victim = (deletion ? u"s"_qs : u"d"_qs) + (root ? u""_qs : u"/sub"_qs);
        QVERIFY(QProcess::execute(
                    u"cp"_qs, {u"-a"_qs, f.tree.path(victim), f.tree.path(u"outside"_qs)}) == 0);
        const QStringList outside = f.tree.snapshot(u"outside"_qs);
        f.ops.onResolve = [&](const TreePath &place) {
            const bool inSub = place.relative == u"sub"_qs || place.relative.startsWith(u"sub/"_qs);
            if (!inSub || f.tree.exists(victim + u".moved"_qs))
                return;
            QVERIFY(QDir().rename(f.tree.path(victim), f.tree.path(victim + u".moved"_qs)));
            f.tree.symlink(victim, QFile::encodeName(f.tree.path(u"outside"_qs)));
        };
        f.engine.sync = {true, false, false, deletion};
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.tree.snapshot(u"outside"_qs), outside);
        QVERIFY2(f.log().contains(u"no longer the one the comparison saw"_qs), qPrintable(f.log()));
    }

    // Changes made after the comparison are kept: a receiving file edited while the run goes
    // on, and a sending file put back from an older backup, are skipped and reported.
    void changesAfterTheComparisonAreKept_data()
    {
        QTest::addColumn<QString>("edited");
        QTest::newRow("receiving file edited") << u"d/b.txt"_qs;
        QTest::newRow("sending file put back older") << u"s/b.txt"_qs;
        QTest::newRow("name taken on the receiving side") << u"d/c.txt"_qs;
    }
    void changesAfterTheComparisonAreKept()
    {
        QFETCH(QString, edited);
        Fixture f;
        f.tree.file(u"s/a.txt"_qs, "new a", T0 + 100);
        f.tree.file(u"s/b.txt"_qs, "new b", T0 + 100);
        f.tree.file(u"s/c.txt"_qs, "new c", T0 + 100);
        f.tree.file(u"d/a.txt"_qs, "old a", T0);
        f.tree.file(u"d/b.txt"_qs, "old b", T0);
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        f.ops.onResolve = [&](const TreePath &place) {
            if (place.relative == u"a.txt"_qs) // while the run is busy with another file
                f.tree.file(edited, "edited since", T0 + 50);
        };
        f.engine.sync = {true, false, false, false};
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.tree.read(edited), QByteArray("edited since"));
        QCOMPARE(f.tree.read(u"d/a.txt"_qs), QByteArray("new a"));
        QCOMPARE(f.engine.syncStats.failures, 1);
        const QString expected = edited == u"d/c.txt"_qs
                                     ? u"exists on the receiving side but was not seen"_qs
                                     : u"changed since the comparison"_qs;
        QVERIFY2(f.log().contains(expected), qPrintable(f.log()));
    }

    // On a case-blind receiving file system the second of two case twins cannot be placed: it
    // is reported, the first is not overwritten, and later two-way runs never send the wrong
    // twin back over a source file. Through the file layer's seam, and on a real exFAT image
    // where this machine can mount one.
    void caseTwinsOnACaseBlindReceiver_data()
    {
        QTest::addColumn<bool>("exfat");
        QTest::newRow("seam") << false;
        QTest::newRow("FUSE exFAT") << true;
    }
    void caseTwinsOnACaseBlindReceiver()
    {
        QFETCH(bool, exfat);
        Fixture f;
        f.tree.file(u"s/a.txt"_qs, "lower", T0);
        f.tree.file(u"s/A.TXT"_qs, "upper", T0 + 10);
        f.tree.file(u"s/D/x"_qs, "upper folder", T0);
        f.tree.file(u"s/d/x"_qs, "lower folder", T0);
        f.tree.dir(u"d"_qs);
        std::unique_ptr<ExfatMount> mount;
        if (exfat) {
            mount = std::make_unique<ExfatMount>(f.tree.path(u"image"_qs), f.tree.path(u"d"_qs));
            if (!mount->error.isEmpty())
                QSKIP(qPrintable(mount->error));
        } else {
            f.ops.caseBlind = true;
        }
        f.addPair(u"s"_qs, u"d"_qs);
        const QStringList source = f.tree.snapshot(u"s"_qs);
        for (int run = 0; run < 3; ++run) {
            QVERIFY(Compare(f.engine));
            f.engine.sync = {true, true, false, false};
            Synchronize(f.engine, 0);
            QCOMPARE(f.tree.snapshot(u"s"_qs), source);
            QVERIFY2(f.engine.syncStats.failures == 2,
                     qPrintable(f.log())); // one file twin, one folder twin
        }
        QCOMPARE(f.tree.snapshot(u"d"_qs).size(), 3); // one file, one folder and its file
    }

    // Shapes of names that Linux allows and the comparison must pair, and folder walks must
    // keep apart, exactly: each row builds files (content = their path), runs one command and
    // lists every file there is afterwards with its content.
    void linuxNameShapes_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("command"); // "sync", or "delete"/"copy" and a source folder
        QTest::addColumn<QStringList>("after");
        QTest::newRow("folders paired across case")
            << QStringList{u"s/Sub/new.txt"_qs, u"d/SUB/old.txt"_qs} << u"sync"_qs
            << QStringList{u"d/SUB/new.txt=s/Sub/new.txt"_qs, u"d/SUB/old.txt"_qs,
                           u"s/Sub/new.txt"_qs, u"s/Sub/old.txt=d/SUB/old.txt"_qs};
        QTest::newRow("delete one of two case twin folders")
            << QStringList{u"s/SUB/x"_qs, u"s/Sub/x"_qs, u"s/Sub/y"_qs, u"d/keep"_qs}
            << u"delete Sub"_qs << QStringList{u"d/keep"_qs, u"s/SUB/x"_qs};
        QTest::newRow("copy one of two case twin folders")
            << QStringList{u"s/SUB/x"_qs, u"s/Sub/x"_qs, u"s/Sub/y"_qs, u"d/keep"_qs}
            << u"copy SUB"_qs
            << QStringList{u"d/SUB/x=s/SUB/x"_qs, u"d/keep"_qs, u"s/SUB/x"_qs, u"s/Sub/x"_qs,
                           u"s/Sub/y"_qs};
        QTest::newRow("names holding the key's marks")
            << QStringList{u"s/a/b\x01\x02c"_qs, u"d/a/\x02b/c"_qs} << u"sync"_qs
            << QStringList{u"d/a/\x02b/c"_qs, u"d/a/b\x01\x02c=s/a/b\x01\x02c"_qs,
                           u"s/a/\x02b/c=d/a/\x02b/c"_qs, u"s/a/b\x01\x02c"_qs};
    }
    void linuxNameShapes()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, command);
        QFETCH(QStringList, after);
        Fixture f;
        for (const QString &file : files)
            f.tree.file(file, file.toUtf8(), T0);
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        const QString verb = command.section(u' ', 0, 0);
        int row = 0;
        for (size_t r = 1; r < f.engine.CompareResults.size(); ++r) {
            if (f.engine.CompareResults[r].path(0) ==
                f.tree.path(u"s/"_qs + command.section(u' ', 1)))
                row = int(r);
        }
        if (verb == u"sync") {
            f.engine.sync = {true, true, false, false};
            QVERIFY(Synchronize(f.engine, 0));
        } else if (verb == u"delete") {
            QVERIFY(row > 0);
            DeleteEntries(f.engine, 0, row, 0);
        } else {
            QVERIFY(row > 0);
            CopySelected(f.engine, 0, row);
        }
        QCOMPARE(f.engine.syncStats.failures, 0);
        QStringList found;
        QDirIterator it(f.tree.root(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            const QString relative = path.mid(f.tree.root().size() + 1);
            if (relative.startsWith(u"log/"_qs))
                continue;
            const QString content = QString::fromUtf8(f.tree.read(relative));
            found << (content == relative ? relative : relative + u'=' + content);
        }
        found.sort();
        after.sort();
        QCOMPARE(found, after);
    }

    // The deletion guard: a deletion step that would take more than the limit of a pair's files,
    // or finds the receiving side empty, is asked about, and without a person not run at all.
    void deletionGuard_data()
    {
        QTest::addColumn<int>("destinationFiles"); // of the source's ten; -1: nothing at all
        QTest::addColumn<int>("limit");
        QTest::addColumn<QString>("person"); // "" nobody (DontAsk), "yes", "no"
        QTest::addColumn<int>("deleted");
        QTest::addColumn<bool>("mirror"); // the receiving side loses what the sending one lacks
        QTest::newRow("empty receiving side") << -1 << 50 << QString() << 0 << false;
        QTest::newRow("empty receiving side, no share limit")
            << -1 << 100 << QString() << 0 << false;
        QTest::newRow("60 % refused") << 4 << 50 << QString() << 0 << false;
        QTest::newRow("40 % allowed") << 6 << 50 << QString() << 4 << false;
        QTest::newRow("60 %, guard off") << 4 << 100 << QString() << 6 << false;
        QTest::newRow("60 %, the person says yes") << 4 << 50 << u"yes"_qs << 6 << false;
        QTest::newRow("60 %, the person says no") << 4 << 50 << u"no"_qs << 0 << false;
        QTest::newRow("mirror from an empty sending side") << -1 << 50 << QString() << 0 << true;
        QTest::newRow("mirror, 60 % refused") << 4 << 50 << QString() << 0 << true;
        QTest::newRow("mirror, 40 % allowed") << 6 << 50 << QString() << 4 << true;
    }
    void deletionGuard()
    {
        QFETCH(int, destinationFiles);
        QFETCH(int, limit);
        QFETCH(QString, person);
        QFETCH(int, deleted);
        QFETCH(bool, mirror);
        Fixture f;
        const QString losing = mirror ? u"d"_qs : u"s"_qs;
        const QString other = mirror ? u"s"_qs : u"d"_qs;
        for (int i = 0; i < 10; ++i)
            f.tree.file(losing + u"/f%1"_qs.arg(i), "x", T0);
        f.tree.dir(other);
        for (int i = 0; i < destinationFiles; ++i)
            f.tree.file(other + u"/f%1"_qs.arg(i), "x", T0);
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        f.engine.settings.MaxDeletePercent = limit;
        f.engine.DontAsk = person.isEmpty();
        f.ui.answers = {person == u"yes"_qs ? Interaction::Answer::Yes : Interaction::Answer::No};
        f.engine.sync = {true, false, false, !mirror, mirror};
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.engine.syncStats.filesDeleted, deleted);
        QCOMPARE(QDir(f.tree.path(losing)).entryList(QDir::Files).size(), 10 - deleted);
        const bool held = deleted == 0;
        QCOMPARE(f.engine.DeletionsRefused, held ? 1 : 0);
        QCOMPARE(RunExitStatus(f.engine), held ? ExitDeletionRefused : ExitOk);
        if (held)
            QVERIFY2(f.log().contains(u"DeletionRefused"_qs), qPrintable(f.log()));
    }

    // With a versions folder, a run keeps what it deletes and replaces under its start time,
    // removes the run folders older than the days to keep, and never compares the folder itself.
    void versionsFolderKeepsAndExpires()
    {
        Fixture f;
        f.tree.file(u"s/a"_qs, "new", T0 + 100);
        f.tree.file(u"d/a"_qs, "old", T0);
        f.tree.file(u"s/sub/gone"_qs, "only here", T0);
        f.tree.file(u"d/sub/kept"_qs, "", T0);
        f.tree.file(u"s/Old/2026-10-25 135959/x"_qs, "expired", T0);
        f.tree.file(u"s/Old/2026-10-25 140001/y"_qs, "young enough", T0);
        f.tree.file(u"s/Old/notes/z"_qs, "not a run folder", T0);
        f.tree.file(u"d/Old/2020-01-01 000000/w"_qs, "expired", T0);
        f.engine.settings.Versioning = Settings::ToVersionsFolder;
        f.engine.settings.VersionsFolder = u"Old/"_qs;
        f.engine.settings.KeepVersionsDays = 30;
        f.engine.settings.MaxDeletePercent = 100;
        f.engine.clock = [] { return QDateTime(QDate(2026, 11, 24), QTime(14, 0)); };
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        f.engine.sync = {true, false, false, true};
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.engine.syncStats.failures, 0);

        QCOMPARE(f.tree.read(u"d/a"_qs), QByteArray("new"));
        QCOMPARE(f.tree.read(u"d/Old/2026-11-24 140000/a"_qs), QByteArray("old"));
        QCOMPARE(f.tree.read(u"s/Old/2026-11-24 140000/sub/gone"_qs), QByteArray("only here"));
        QVERIFY(!f.tree.exists(u"s/sub/gone"_qs));
        QVERIFY(!f.tree.exists(u"s/Old/2026-10-25 135959"_qs));
        QVERIFY(!f.tree.exists(u"d/Old/2020-01-01 000000"_qs));
        QVERIFY(f.tree.exists(u"s/Old/2026-10-25 140001/y"_qs));
        QVERIFY(f.tree.exists(u"s/Old/notes/z"_qs));
        QVERIFY(Compare(f.engine));
        for (const CompareEntry &e : f.engine.CompareResults)
            QVERIFY2(!e.path(0).contains(u"/Old"_qs) && !e.path(1).contains(u"/Old"_qs),
                     qPrintable(e.path(0) + e.path(1)));
    }

    // A mirror removes the folders the sending side lacks once they are empty, deepest first; one
    // that still holds a file the comparison left out stays, and so does the pair's root.
    void mirrorRemovesOnlyEmptiedFolders()
    {
        Fixture f;
        f.tree.file(u"s/keep"_qs, "k", T0);
        f.tree.file(u"d/keep"_qs, "k", T0);
        f.tree.file(u"d/gone/deeper/x"_qs, "x", T0);
        f.tree.file(u"d/held/y"_qs, "y", T0);
        f.tree.file(u"d/held/excluded.tmp"_qs, "not compared", T0);
        f.addPair(u"s"_qs, u"d"_qs);
        f.engine.pairs[1].ExcludeFiles = u"*.tmp"_qs;
        QVERIFY(Compare(f.engine));
        f.engine.settings.MaxDeletePercent = 100;
        f.engine.sync = {true, false, false, false, true};
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.engine.syncStats.failures, 0);
        QCOMPARE(f.tree.snapshot(u"d"_qs),
                 (QStringList{u"d held/"_qs, u"f held/excluded.tmp 12 %1"_qs.arg(T0),
                              u"f keep 1 %1"_qs.arg(T0)}));
        QCOMPARE(f.engine.syncStats.folderRemovals[1], 2);
    }

    // With every change logged, a run can be read afterwards: one line per copy, replacement,
    // deletion and new folder, in the failure lines' columns, and the totals on the End line.
    void actionLog()
    {
        Fixture f;
        f.tree.file(u"s/a"_qs, "new", T0);
        f.tree.file(u"s/b"_qs, "newer", T0 + 100);
        f.tree.file(u"d/b"_qs, "older", T0);
        f.tree.file(u"s/sub/c"_qs, "in a new folder", T0);
        f.tree.file(u"s/keep1"_qs, "", T0);
        f.tree.file(u"d/keep1"_qs, "", T0);
        f.tree.file(u"s/keep2"_qs, "", T0);
        f.tree.file(u"d/keep2"_qs, "", T0);
        f.tree.file(u"d/gone"_qs, "only here", T0);
        f.engine.settings.LogActions = true;
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        f.engine.sync = {true, false, false, false};
        QVERIFY(Synchronize(f.engine, 0));
        QVERIFY(Compare(f.engine));
        f.engine.sync = {false, true, false, true}; // towards the source, deleting what it lacks
        QVERIFY(Synchronize(f.engine, 0));

        const QString s = f.tree.path(u"s/"_qs);
        const QString d = f.tree.path(u"d/"_qs);
        QStringList actions;
        for (const QString &line : f.log().split(u"\r\n"_qs, Qt::SkipEmptyParts)) {
            const QStringList columns = line.split(u'\t');
            if (columns.size() == 6 && columns[3].isEmpty() && columns[2] != u"Start"_qs &&
                columns[2] != u"End"_qs)
                actions << columns[2] + u' ' + columns[4] + u' ' + columns[5];
        }
        QCOMPARE(
            actions,
            (QStringList{u"copy "_qs + s + u"a " + d + u"a", u"replace "_qs + s + u"b " + d + u"b",
                         u"mkdir  "_qs + d + u"sub", u"copy "_qs + s + u"sub/c " + d + u"sub/c",
                         u"delete "_qs + d + u"gone "}));
        QVERIFY2(f.log().contains(u"copied 0 files (0 bytes), created 0 folders, deleted 1 files, "
                                  u"0 failures"_qs),
                 qPrintable(f.log()));
    }

    // A name that holds a newline or a tab still makes one log line with its four columns.
    void oneFailureOneLine()
    {
        Fixture f;
        f.tree.file(u"s/bad\nduomir-cli: error: \tforged"_qs, "x", T0 + 100);
        f.tree.file(u"d/placeholder"_qs);
        f.ops.renameErrno = EACCES;
        f.addPair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(f.engine));
        f.engine.sync = {true, false, false, false};
        QVERIFY(Synchronize(f.engine, 0));
        const QStringList lines = f.log().split(u"\r\n"_qs, Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines[1].count(u'\t'), 5);
        QVERIFY2(lines[1].contains(u"bad\\nduomir-cli: error: \\tforged"_qs), qPrintable(lines[1]));
    }

    // The temporary files of a killed run are never listed as the user's files, and the next run
    // that copies into that side removes them; one a running copy still holds stays.
    void leftoversAreNeitherListedNorKept()
    {
        Fixture f;
        f.tree.file(u"s/a.txt"_qs, "new", T0 + 100);
        f.tree.file(u"d/sub/.duomir-0123abcd.tmp"_qs, "half a file");
        f.tree.setMode(u"d/sub/.duomir-0123abcd.tmp"_qs, 0600);
        f.tree.file(u"d/.duomir-held0000.tmp"_qs, "being written");
        f.tree.setMode(u"d/.duomir-held0000.tmp"_qs, 0600);
        const int held = ::open(f.tree.nativePath("d/.duomir-held0000.tmp").constData(), O_RDONLY);
        QVERIFY(held >= 0 && ::flock(held, LOCK_EX) == 0);
        f.addPair(u"s"_qs, u"d"_qs);
        f.engine.pairs[1].HiddenFiles = true;
        QVERIFY(Compare(f.engine));
        for (size_t r = 1; r < f.engine.CompareResults.size(); ++r)
            QVERIFY(!f.engine.CompareResults[r].name(1).contains(u"duomir"_qs));
        f.engine.sync = {true, true, false, false};
        QVERIFY(Synchronize(f.engine, 0));
        ::close(held);
        QVERIFY(!f.tree.exists(u"d/sub/.duomir-0123abcd.tmp"_qs));
        QVERIFY(f.tree.exists(u"d/.duomir-held0000.tmp"_qs));
        QVERIFY(!f.tree.exists(u"s/.duomir-held0000.tmp"_qs));
        QCOMPARE(f.tree.read(u"d/a.txt"_qs), QByteArray("new"));
    }

    // Every operation refuses an empty or relative path before it reaches the system: in the
    // working directory below, "victim" and "dir" would otherwise be changed.
    void relativePathsAreRefused_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("path");
        for (const char *op : {"mkdir", "chmod", "unlink", "rmdir", "copy to", "copy from"}) {
            const QString name = QString::fromLatin1(op);
            QTest::addRow("%s, empty", op) << name << QString();
            QTest::addRow("%s, relative", op) << name
                                              << (name == u"mkdir"   ? u"new"_qs
                                                  : name == u"rmdir" ? u"dir"_qs
                                                                     : u"victim"_qs);
            QTest::addRow("%s, dot-relative", op) << name << u"./dir"_qs;
        }
    }
    void relativePathsAreRefused()
    {
        QFETCH(QString, operation);
        QFETCH(QString, path);
        TempTree tree;
        tree.file(u"victim"_qs, "precious", T0);
        tree.setMode(u"victim"_qs, 0444);
        tree.dir(u"dir"_qs);
        tree.file(u"elsewhere/source"_qs, "new content", T0 + 100);
        const QStringList before = tree.snapshot();
        WorkingDirectory cwd(tree.root());

        PosixFileOps ops;
        const std::atomic<bool> cancel = false;
        const TreePath relative{u"."_qs, path};
        const TreePath source{tree.root(), u"elsewhere/source"_qs};
        const Seen seen{11, T0 + 100};
        OpResult r;
        if (operation == u"mkdir")
            r = ops.makeDirectory(relative, {tree.root(), u"dir"_qs});
        else if (operation == u"chmod")
            r = ops.clearReadOnly(relative);
        else if (operation == u"unlink")
            r = ops.removeFile(relative, {8, T0});
        else if (operation == u"rmdir")
            r = ops.removeDirectory(relative);
        else if (operation == u"copy to")
            r = ops.copyFile(source, seen, relative, std::nullopt, {}, cancel);
        else
            r = ops.copyFile(relative, seen, {tree.root(), u"elsewhere/target"_qs}, std::nullopt,
                             {}, cancel);
        QCOMPARE(r.error, OpError::PlaceUnknown);
        QVERIFY(errorText(r.error).contains(u"absolute path"));
        QCOMPARE(tree.snapshot(), before);
        QCOMPARE(tree.mode(u"victim"_qs) & 0777, 0444u);
        QCOMPARE(ops.checkDirectory({u"."_qs, u"dir"_qs}).error, OpError::PlaceUnknown);
    }

    // A row whose receiving side has no path (as a pair without a destination text would give)
    // is reported with a clear text and never touched; the walk goes on with the next row.
    void rowWithoutReceivingPathIsReported()
    {
        Fixture f;
        f.tree.file(u"s/a"_qs, "a", T0);
        f.tree.file(u"s/b"_qs, "b", T0);
        f.tree.file(u"d/placeholder"_qs);
        WorkingDirectory cwd(f.tree.root());
        CompareEntry root;
        setPaths(root, f.engine.texts(), f.tree.path(u"s"_qs), f.tree.path(u"d"_qs));
        root.Attributes = {Attr::Directory, Attr::Directory};
        f.engine.CompareResults.push_back(root);
        for (const char *name : {"a", "b"}) {
            CompareEntry row;
            row.State = ModifiedInSource;
            row.Marked = true;
            setPaths(row, f.engine.texts(), f.tree.path(u"s/"_qs),
                     name[0] == 'a' ? QString() : f.tree.path(u"d/"_qs));
            row.setName(0, f.engine.texts().add(QString::fromLatin1(name)));
            row.FullSize[0] = 1;
            row.Modified[0] = FileTimeToDate(T0, f.engine.CompareUtcOffset);
            f.engine.CompareResults.push_back(row);
        }
        f.engine.compareCounters = {2, 0, 0};
        f.engine.sync.Dest = false;

        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.engine.syncStats.failures, 1);
        QCOMPARE(f.engine.syncStats.filesCopied, 1);
        QVERIFY(!f.tree.exists(u"a"_qs)); // nothing landed in the working directory
        QCOMPARE(f.tree.read(u"d/b"_qs), QByteArray("b"));
        QVERIFY2(f.log().contains(u"No absolute path"), qPrintable(f.log()));
    }

    // A source folder that exists but could not be listed (a permission, a failing network
    // share) looks empty: its files were never seen, and a copy from the destination could
    // replace a newer one. Nothing is copied into it. (Built by hand: as root every folder can be
    // listed.)
    void unseenSourceFolderReceivesNothing()
    {
        Fixture f;
        f.tree.file(u"s/f.txt"_qs, "newer, never seen", T0 + 100);
        f.tree.file(u"d/f.txt"_qs, "older", T0);
        f.addPair(u"s"_qs, u"d"_qs);
        CompareEntry root;
        setPaths(root, f.engine.texts(), f.tree.path(u"s/"_qs), f.tree.path(u"d/"_qs));
        root.Attributes = {Attr::Directory, Attr::Directory};
        root.Marked = true;
        f.engine.CompareResults.push_back(root);
        CompareEntry row;
        row.State = ModifiedInDestination;
        row.Marked = true;
        setPaths(row, f.engine.texts(), f.tree.path(u"s/"_qs), f.tree.path(u"d/"_qs));
        row.setName(1, f.engine.texts().add(u"f.txt"_qs));
        row.FullSize[1] = 5;
        f.engine.CompareResults.push_back(row);
        f.engine.UnlistedRows.push_back({1, 2});
        f.engine.compareCounters = {0, 0, 1};
        f.engine.sync.Src = false;

        CopySelected(f.engine, 1, 2); // the row alone, whichever side is newer
        QCOMPARE(f.tree.read(u"s/f.txt"_qs), QByteArray("newer, never seen"));
        QVERIFY(Synchronize(f.engine, 0)); // the whole list (and a fresh comparison after)
        QCOMPARE(f.tree.read(u"s/f.txt"_qs), QByteArray("newer, never seen"));
        QCOMPARE(f.engine.syncStats.filesCopied, 0);
    }

    // A folder of the destination that could not be listed hides what it holds. A folder or file
    // below it, synchronized or copied on its own, neither takes the destination's files for
    // missing (and deletes its own) nor replaces them unseen. (Built by hand, as above.)
    void rowsBelowAnUnseenFolder_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("copyOnly");
        QTest::newRow("synchronize a folder with Delete") << 3 << false;
        QTest::newRow("synchronize a file with Delete") << 4 << false;
        QTest::newRow("copy a folder") << 3 << true;
        QTest::newRow("copy a file") << 4 << true;
        QTest::newRow("copy the whole list") << 0 << true;
    }
    void rowsBelowAnUnseenFolder()
    {
        QFETCH(int, row);
        QFETCH(bool, copyOnly);
        Fixture f;
        f.tree.file(u"s/u/sub/f.txt"_qs, "source", T0);
        f.tree.file(u"d/u/sub/f.txt"_qs, "newer, never seen", T0 + 100);
        f.tree.file(u"s/z.txt"_qs, "after the folder", T0);
        f.addPair(u"s"_qs, u"d"_qs);
        auto add = [&](const QString &dir, const QString &name, bool directory, bool both) {
            CompareEntry e;
            setPaths(e, f.engine.texts(), f.tree.path(u"s/"_qs + dir), f.tree.path(u"d/"_qs + dir));
            setNames(e, f.engine.texts(), name, both ? name : QString());
            e.Attributes = {directory ? Attr::Directory : 0u, directory ? Attr::Directory : 0u};
            e.State = both ? Identical : ModifiedInSource;
            e.Marked = true;
            e.FullSize[0] = directory ? 0 : 6;
            f.engine.CompareResults.push_back(e);
            return &f.engine.CompareResults.back();
        };
        setPaths(*add(QString(), QString(), true, true), f.engine.texts(), f.tree.path(u"s"_qs),
                 f.tree.path(u"d"_qs));
        add(u"u"_qs, u"u"_qs, true, true)->Attributes[1] |= Attr::Unlisted;
        add(u"u/sub"_qs, u"sub"_qs, true, false);
        add(u"u/sub/"_qs, u"f.txt"_qs, false, false);
        CompareEntry *after = add(QString(), u"z.txt"_qs, false, false);
        setPaths(*after, f.engine.texts(), f.tree.path(u"s/"_qs), f.tree.path(u"d/"_qs));
        after->FullSize[0] = 16;
        after->Modified[0] = FileTimeToDate(T0, f.engine.CompareUtcOffset);
        f.engine.compareCounters = {3, 2, 0};
        f.mirrorOrCopyRow(row, copyOnly);
        QCOMPARE(f.tree.read(u"s/u/sub/f.txt"_qs), QByteArray("source"));
        QCOMPARE(f.tree.read(u"d/u/sub/f.txt"_qs), QByteArray("newer, never seen"));
        // Past the unseen folder the walk copies again.
        if (row == 0)
            QVERIFY2(f.tree.read(u"d/z.txt"_qs) == "after the folder", qPrintable(f.log()));
    }

    // A source that cannot be listed is compared as empty, so every destination file looks
    // missing in the source. Whatever the directions and Delete, the destination keeps every file;
    // copies towards the source fail, reported, as there is no folder to take them (a walk makes
    // no root). A second, healthy pair of the same run is synchronized as usual.
    void unlistedSourceKeepsDestinationWhole_data()
    {
        QTest::addColumn<bool>("src");
        QTest::addColumn<bool>("dest");
        QTest::addColumn<bool>("del");
        QTest::addColumn<bool>("sourceIsFile");
        for (bool sourceIsFile : {false, true}) {
            const char *kind = sourceIsFile ? "source is a file" : "source missing";
            QTest::addRow("%s, both ways", kind) << true << true << false << sourceIsFile;
            QTest::addRow("%s, to source with delete", kind)
                << false << true << true << sourceIsFile;
            QTest::addRow("%s, to destination with delete", kind)
                << true << false << true << sourceIsFile;
            QTest::addRow("%s, to source", kind) << false << true << false << sourceIsFile;
        }
    }
    void unlistedSourceKeepsDestinationWhole()
    {
        QFETCH(bool, src);
        QFETCH(bool, dest);
        QFETCH(bool, del);
        QFETCH(bool, sourceIsFile);
        Fixture f;
        if (sourceIsFile)
            f.tree.file(u"gone"_qs, "not a directory", T0);
        f.tree.file(u"d1/kept"_qs, "1", T0);
        f.tree.file(u"d1/sub/deep"_qs, "2", T0);
        f.tree.file(u"s2/new"_qs, "3", T0 + 100);
        f.tree.file(u"d2/new"_qs, "old", T0);
        f.tree.file(u"d2/only-d"_qs, "4", T0);
        f.addPair(u"gone"_qs, u"d1"_qs);
        f.addPair(u"s2"_qs, u"d2"_qs);
        const QStringList sourceBefore = f.tree.snapshot(u"gone"_qs);
        const QStringList destinationBefore = f.tree.snapshot(u"d1"_qs);

        int unlisted = 0;
        QVERIFY(Compare(f.engine, &unlisted));
        QCOMPARE(unlisted, 1);
        f.engine.sync = {src, dest, false, del};
        QVERIFY(Synchronize(f.engine, 0));

        QCOMPARE(f.tree.snapshot(u"d1"_qs), destinationBefore);
        QCOMPARE(f.tree.exists(u"gone"_qs), sourceIsFile);
        QCOMPARE(f.tree.snapshot(u"gone"_qs), sourceBefore);
        // The healthy pair went its way.
        if (src)
            QCOMPARE(f.tree.read(u"d2/new"_qs), QByteArray("3"));
        if (dest && !del)
            QCOMPARE(f.tree.read(u"s2/only-d"_qs), QByteArray("4"));
        if (dest && del)
            QVERIFY(!f.tree.exists(u"d2/only-d"_qs));
        QCOMPARE(f.engine.syncStats.failures > 0,
                 dest && !del); // with Delete the receiving side decides
        if (sourceIsFile)
            QCOMPARE(f.tree.read(u"gone"_qs), QByteArray("not a directory"));
    }

    // A full disk for real: the copy fails with the system's text, the old file stays whole, no
    // temporary file is left, and the next file still arrives.
    // FAT and exFAT sticks keep times to two seconds: a file copied there compares as identical
    // afterwards, so the next run copies nothing; three seconds still count as newer.
    void stickComparesWithinTwoSeconds_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QStringList>("mount");
        QTest::newRow("exFAT through FUSE")
            << u"mkfs.exfat"_qs << QStringList{u"mount.exfat-fuse"_qs, u"@device"_qs};
        QTest::newRow("FAT through FUSE")
            << u"mkfs.vfat"_qs << QStringList{u"fusefat"_qs, u"-o"_qs, u"rw+"_qs, u"@image"_qs};
    }
    void stickComparesWithinTwoSeconds()
    {
        QFETCH(QString, format);
        QFETCH(QStringList, mount);
        Fixture f;
        const QString image = f.tree.path(u"stick.img"_qs);
        const QString stick = f.tree.path(u"stick"_qs);
        f.tree.dir(u"stick"_qs);
        QFile(image).open(QIODevice::WriteOnly);
        QVERIFY(QFile(image).resize(32 << 20));
        if (QProcess::execute(format, {image}) != 0)
            QSKIP("no tool to format the image here");
        QProcess losetup;
        losetup.start(u"losetup"_qs, {u"-f"_qs, u"--show"_qs, image});
        losetup.waitForFinished();
        const QString device = QString::fromLocal8Bit(losetup.readAllStandardOutput()).trimmed();
        if (losetup.exitCode() != 0 || device.isEmpty())
            QSKIP("no loop device can be set up here");
        struct Detach
        {
            QString device, mountPoint;
            bool mounted = false;
            ~Detach()
            {
                if (mounted)
                    QProcess::execute(u"umount"_qs, {mountPoint});
                QProcess::execute(u"losetup"_qs, {u"-d"_qs, device});
            }
        } detach{device, stick};
        for (QString &a : mount)
            a = a == u"@device" ? device : a == u"@image" ? image : a;
        const QString program = mount.takeFirst();
        if (QProcess::execute(program, mount << stick) != 0)
            QSKIP("the stick cannot be mounted here");
        detach.mounted = true;
        {
            const int stickFd =
                ::open(QFile::encodeName(stick).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            QVERIFY(keepsCoarseTimes(stickFd));
            ::close(stickFd);
        }

        f.tree.file(u"s/odd"_qs, "odd second", T0 + 1);
        const struct timespec halfPast[2] = {{T0 + 1, 500'000'000}, {T0 + 1, 500'000'000}};
        QVERIFY(::utimensat(AT_FDCWD, f.tree.nativePath("s/odd").constData(), halfPast, 0) == 0);
        f.tree.file(u"s/later"_qs, "three seconds on", T0 + 3);
        f.tree.file(u"stick/later"_qs, "three seconds on", T0);
        f.addPair(u"s"_qs, u"stick"_qs);
        QVERIFY(Compare(f.engine));
        f.engine.sync = {true, false, false, false};
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.engine.syncStats.failures, 0);
        QCOMPARE(f.engine.syncStats.filesCopied, 2);
        QVERIFY(Compare(f.engine));
        QCOMPARE(f.engine.compareCounters[0], 0);
        QCOMPARE(f.engine.compareCounters[2], 0);
    }

    void fullDiskOnTmpfs()
    {
        Fixture f;
        f.tree.dir(u"small"_qs);
        const QString small = f.tree.path(u"small"_qs);
        if (QProcess::execute(u"mount"_qs, {u"-t"_qs, u"tmpfs"_qs, u"-o"_qs, u"size=1m"_qs,
                                            u"tmpfs"_qs, small}) != 0)
            QSKIP("mounting a small tmpfs is not permitted here");
        struct Unmount
        {
            QString path;
            ~Unmount() { QProcess::execute(u"umount"_qs, {path}); }
        } unmount{small};

        const QByteArray old(200 * 1024, 'o');
        f.tree.file(u"small/big"_qs, old, T0);
        f.tree.file(u"small/z"_qs, "old z", T0);
        // Too large to be copied beside other files: it fills the disk alone, and the small file
        // after it finds room again whatever the timing of the copy threads.
        const auto bigSize = qsizetype(f.engine.fileOps->parallelCopyLimit()) + 1024 * 1024;
        f.tree.file(u"s/big"_qs, QByteArray(bigSize, 'n'), T0 + 100);
        f.tree.file(u"s/z"_qs, "new z", T0 + 100);
        f.addPair(u"s"_qs, u"small"_qs);
        QVERIFY(Compare(f.engine));
        f.engine.sync.Dest = false;
        QVERIFY(Synchronize(f.engine, 0));

        QCOMPARE(f.engine.syncStats.failures, 1);
        QCOMPARE(f.tree.read(u"small/big"_qs), old);
        QCOMPARE(f.tree.read(u"small/z"_qs), QByteArray("new z"));
        QCOMPARE(QDir(small).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 (QStringList{u"big"_qs, u"z"_qs}));
        const QString expected = QString::fromLocal8Bit(std::strerror(ENOSPC));
        QVERIFY2(f.log().contains(u'\t' + QString::number(ENOSPC) + u'\t' + expected + u'\t' +
                                  f.tree.path(u"s/big"_qs) + u'\t' + small + u"/big\r\n"),
                 qPrintable(f.log()));
    }
};

QTEST_GUILESS_MAIN(TestSyncSafety)
#include "tst_syncsafety.moc"

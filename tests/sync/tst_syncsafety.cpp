#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTest>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
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
#include "core/scanner.h"
#include "core/synchronize.h"
#include "core/syncplan.h"

using namespace duomir;
using namespace duomir::test;

namespace {

constexpr qint64 T0 = 1'600'000'000;

// A display at which a person presses Cancel once the run has come this far.
class CancellingSink : public ProgressSink
{
public:
    std::function<void()> onPercent;
    void setVisible(bool) override {}
    void setPercentText(const QString &) override { onPercent(); }
    void setBarWidth(int) override {}
    void setFrom(const QString &) override {}
    void setTo(const QString &) override {}
    void setFileName(const QString &) override {}
    int fullBarWidth() const override { return 100; }
};

// "a, b, c" as the sorted list a listing is compared with.
QStringList list(const QString &items)
{
    QStringList out = items.split(u", "_qs, Qt::SkipEmptyParts);
    out.sort();
    return out;
}

struct Fixture
{
    TempTree tree;
    FakeInteraction ui;
    Engine engine{ui};
    FaultyFileOps ops{64 * 1024};
    int unlistedRoots = 0; // by the last comparison

    Fixture()
    {
        engine.run().setFileOps(ops);
        tree.dir(u"log"_qs);
        engine.DataFolder = tree.path(u"log/"_qs);
        engine.settings.LogToFile = true;
        engine.DontAsk = true;
    }
    // Items "path[=content][@seconds after T0]" separated by ", "; "path/" is an empty folder,
    // "path -> target" a link. A file holds its own path unless told otherwise, so that a listing
    // shows where it came from.
    void files(const QString &items)
    {
        for (const QString &item : list(items)) {
            const QString file = item.section(u'@', 0, 0);
            const QString path = file.section(u'=', 0, 0);
            if (item.endsWith(u'/'))
                tree.dir(item);
            else if (item.contains(u" -> "))
                tree.symlink(item.section(u' ', 0, 0), item.section(u' ', 2).toUtf8());
            else
                tree.file(path, (file.contains(u'=') ? file.section(u'=', 1) : path).toUtf8(),
                          T0 + item.section(u'@', 1).toLongLong());
        }
    }
    // Every file as "path" or "path=content", every empty folder as "path/" and every link as
    // "path -> target", sorted; the log folder left out.
    QStringList listing() const
    {
        QStringList out;
        QDirIterator it(tree.root(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QFileInfo info = it.nextFileInfo();
            const QString path = info.filePath().mid(tree.root().size() + 1);
            const QString content = QString::fromUtf8(tree.read(path));
            if (path == u"log" || path.startsWith(u"log/"))
                continue;
            char target[256] = {};
            if (info.isSymLink() && ::readlink(info.filePath().toUtf8(), target, 255) > 0)
                out << path + u" -> " + QString::fromUtf8(target);
            else if (info.isDir() && QDir(info.filePath()).isEmpty())
                out << path + u'/';
            else if (!info.isDir())
                out << (content == path ? path : path + u'=' + content);
        }
        out.sort();
        return out;
    }
    void pair(const QString &source, const QString &destination)
    {
        DirPair pair;
        pair.IncludeDirs = pair.IncludeFiles = u"*"_qs;
        pair.Source = source.isEmpty() ? source : tree.path(source);
        pair.Destination = destination.isEmpty() ? destination : tree.path(destination);
        engine.pairs.append(pair);
    }
    void compare()
    {
        if (engine.pairs.isEmpty())
            pair(u"s"_qs, u"d"_qs);
        QVERIFY(Compare(engine, &unlistedRoots));
    }
    // The row of a file or folder named by its path in the tree, on either side.
    int row(const QString &relative) const
    {
        const QString full = tree.path(relative);
        for (size_t i = 1; i < engine.comparison().rows().size(); ++i) {
            const CompareEntry &e = engine.comparison().rows()[i];
            for (Side side : Sides) {
                // A folder's row has its full path, a file's row its folder and name.
                if (e.path(side) == full ||
                    (e.path(side).endsWith(u'/') && e.path(side) + e.name(side) == full))
                    return int(i);
            }
        }
        return -1;
    }
    void sync(SyncOptions options, int startRow = 0)
    {
        engine.run().setOptions(options);
        QVERIFY(Synchronize(engine, startRow));
    }
    // A row made by hand, as a comparison that could not see everything leaves it; an empty name
    // leaves its side without the entry.
    // `place` follows the side's root: "" the root itself, "/" a file in it, "/u" a folder in it.
    CompareEntry &addRow(const QString &place, const QString &source, const QString &destination,
                         bool directory, int state = Identical)
    {
        CompareEntry e;
        setPaths(e, engine.comparison().texts(), tree.path(u"s"_qs + place),
                 tree.path(u"d"_qs + place));
        setNames(e, engine.comparison().texts(), source, destination);
        const std::uint32_t attributes = directory ? Attr::Directory : 0u;
        e.Attributes = {attributes, attributes};
        e.State = state;
        e.Marked = true;
        engine.comparison().editRows().push_back(e);
        return engine.comparison().editRows().back();
    }
    QString log() const
    {
        QString all;
        for (const QString &f : QDir(tree.path(u"log"_qs)).entryList(QDir::Files))
            all += QString::fromUtf8(tree.read(u"log/" + f));
        return all;
    }
    // The run's failures, and a text its log must hold.
    void failed(int failures, const QString &logged = {}) const
    {
        QCOMPARE(engine.run().stats().failures, failures);
        QVERIFY2(log().contains(logged), qPrintable(log()));
    }
    // The end of a failure's log line.
    QString failureLine(int code, const QString &from, const QString &to) const
    {
        return u"\t\t%1\t%2\t%3\t%4\r\n"_qs.arg(code).arg(
            QString::fromLocal8Bit(std::strerror(code)), tree.path(from), tree.path(to));
    }
};

// Commands run when the test ends, however it ends, last first: unmounts, loop devices let go.
struct Undo
{
    QList<QStringList> commands;
    ~Undo()
    {
        for (auto c = commands.crbegin(); c != commands.crend(); ++c)
            QProcess::execute(c->first(), c->mid(1));
    }
};

// Makes an image with the first command and mounts it at `at` with the rest ("@device" stands for
// its loop device, "@image" for the image); false where this machine cannot (not root, no FUSE,
// no tools, no loop device).
bool mountImage(const QString &image, QStringList mount, const QString &at, Undo &undo)
{
    QFile file(image);
    if (!file.open(QIODevice::WriteOnly) || !file.resize(32 << 20) ||
        QProcess::execute(mount.takeFirst(), {image}) != 0)
        return false;
    QProcess losetup;
    losetup.start(u"losetup"_qs, {u"-f"_qs, u"--show"_qs, image});
    const QString device = losetup.waitForFinished() && losetup.exitCode() == 0
                               ? QString::fromLocal8Bit(losetup.readAllStandardOutput()).trimmed()
                               : QString();
    if (device.isEmpty())
        return false;
    undo.commands << QStringList{u"losetup"_qs, u"-d"_qs, device};
    for (QString &a : mount)
        a = a == u"@device" ? device : a == u"@image" ? image : a;
    if (QProcess::execute(mount.takeFirst(), mount << at) != 0)
        return false;
    undo.commands << QStringList{u"umount"_qs, at};
    return true;
}

const QStringList exfatMount{u"mkfs.exfat"_qs, u"mount.exfat-fuse"_qs, u"@device"_qs};
const QStringList fatMount{u"mkfs.vfat"_qs, u"fusefat"_qs, u"-o"_qs, u"rw+"_qs, u"@image"_qs};

} // namespace

class TestSyncSafety : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Each row builds files, compares the pairs ("pair SOURCE DESTINATION" commands, else s with
    // d), runs commands ("copy ROW" copies the row from its side whichever side is newer, "delete
    // ROW" deletes it on its side; otherwise the directions "s>d", "s<d", "s<>d" or none ("s-d"),
    // with "delete" or "mirror", the row when not the whole list, or "refused") and lists every
    // file there is afterwards, with what failed, was copied and deleted.
    void walks_data()
    {
        QTest::addColumn<QString>("files");
        QTest::addColumn<QString>("commands");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("counts");
        const auto row = [](const char *tag, const char *files, const char *commands,
                            const char *after, const char *counts) {
            QTest::newRow(tag) << QString::fromUtf8(files) << QString::fromUtf8(commands)
                               << QString::fromUtf8(after) << QString::fromUtf8(counts);
        };
        // A file the other side has is never deleted first.
        row("one row synchronized with Delete", "s/a.txt@100, d/a.txt, s/b.txt@100, d/b.txt",
            "s>d delete s/a.txt", "d/a.txt=s/a.txt, d/b.txt, s/a.txt, s/b.txt",
            "0 failed, 1 copied, 0 deleted");
        row("a file paired across case is replaced under its name", "s/b.txt@100, d/B.TXT",
            "s>d delete", "d/B.TXT=s/b.txt, s/b.txt", "0 failed, 1 copied, 0 deleted");
        // The receiving side decides which names exist: the sending side loses what it lacks,
        // only files on both sides are brought up to date, nothing is created on the receiving
        // side, and the progress counts only what is copied.
        row("to the destination with Delete",
            "s/newer@100, d/newer, s/older, d/older@100, s/gone, s/same=same, d/same=same, "
            "d/fresh, s/dir/inner",
            "s>d delete",
            "d/fresh, d/newer=s/newer, d/older, d/same=same, s/dir/, s/newer, s/older, "
            "s/same=same",
            "0 failed, 1 copied, 2 deleted, 7 bytes");
        // A run with nothing to do in its directions is refused: nothing changes, nothing is
        // logged, and the person is told why.
        row("no direction", "s/x@100, d/x", "s-d refused", "d/x, s/x", "0 failed, 0 copied");
        row("nothing to do", "s/x=x, d/x=x", "s<>d refused", "d/x=x, s/x=x", "0 failed, 0 copied");
        row("to the destination, only the destination newer", "s/x, d/x@100", "s>d refused",
            "d/x, s/x", "0 failed, 0 copied");
        row("to the source, only the source newer", "s/x@100, d/x", "s<d refused", "d/x, s/x",
            "0 failed, 0 copied");
        row("both ways, only the destination newer", "s/x, d/x@100", "s<>d", "d/x, s/x=d/x",
            "0 failed, 1 copied");
        // A selected folder's walk ends at the first folder that is not deeper than it.
        row("a folder's walk ends with it", "s/a/x, s/a/b/y, s/c/z, s/top, d/",
            "copy s/a; delete s/c", "d/a/b/y=s/a/b/y, d/a/x=s/a/x, s/a/b/y, s/a/x, s/c/, s/top",
            "0 failed, 2 copied, 1 deleted");
        // Deleting a folder removes only its marked files; a file selected alone goes regardless,
        // and so does an empty folder selected alone. Subfolders stay, the other side is never
        // touched.
        row("deleting keeps unmarked files",
            "s/dir/identical=same, d/dir/identical=same, s/dir/changed@100, d/dir/changed, "
            "s/dir/readonly, s/dir/sub/deep, s/single=same, d/single=same, s/empty/",
            "delete s/dir; delete s/single; delete s/empty",
            "d/dir/changed, d/dir/identical=same, d/single=same, s/dir/identical=same, "
            "s/dir/sub/",
            "0 failed, 0 copied, 4 deleted");
        // Shapes of names that Linux allows: the comparison pairs them and folder walks keep them
        // apart exactly.
        row("folders paired across case", "s/Sub/new.txt, d/SUB/old.txt", "s<>d",
            "d/SUB/new.txt=s/Sub/new.txt, d/SUB/old.txt, s/Sub/new.txt, "
            "s/Sub/old.txt=d/SUB/old.txt",
            "0 failed, 2 copied, 0 deleted");
        row("delete one of two case twin folders", "s/SUB/x, s/Sub/x, s/Sub/y, d/keep",
            "delete s/Sub", "d/keep, s/SUB/x, s/Sub/", "0 failed, 0 copied, 2 deleted");
        row("copy one of two case twin folders", "s/SUB/x, s/Sub/x, s/Sub/y, d/keep", "copy s/SUB",
            "d/SUB/x=s/SUB/x, d/keep, s/SUB/x, s/Sub/x, s/Sub/y", "0 failed, 1 copied, 0 deleted");
        row("names holding the key's marks", "s/a/b\x01\x02c, d/a/\x02b/c", "s<>d",
            "d/a/\x02b/c, d/a/b\x01\x02c=s/a/b\x01\x02c, s/a/\x02b/c=d/a/\x02b/c, "
            "s/a/b\x01\x02c",
            "0 failed, 2 copied, 0 deleted");
        // The folders the sending side lacks go once empty, deepest first; one that still holds
        // a file the comparison left out stays, and so does the pair's root.
        row("a mirror removes only emptied folders",
            "s/keep, d/keep=s/keep, d/gone/deeper/x, d/held/y, d/held/excluded.tmp", "s>d mirror",
            "d/held/excluded.tmp, d/keep=s/keep, s/keep",
            "0 failed, 0 copied, 2 deleted, 0 bytes, 2 folders removed");
        // A folder chosen in the list is walked to its end and no further: the next pair's rows
        // follow it, and a root that lies deeper than the folder is no part of it.
        const char *twoPairs = "s1/sub/a, d1/, deep/er/x/s2/only, deep/er/x/s2/b, d2/b@100";
        row("a folder synchronized with Delete stays in its pair", twoPairs,
            "pair s1 d1; pair deep/er/x/s2 d2; s>d delete s1/sub",
            "d1/, s1/sub/a, d2/b, deep/er/x/s2/b, deep/er/x/s2/only", "0 failed");
        row("a folder copied stays in its pair", twoPairs,
            "pair s1 d1; pair deep/er/x/s2 d2; copy s1/sub",
            "d1/sub/a=s1/sub/a, s1/sub/a, d2/b, deep/er/x/s2/b, deep/er/x/s2/only", "0 failed");
        // A link on the receiving side where the other side has a folder: nothing goes through
        // it, whichever way the copy runs; the folder is reported once.
        row("no copy through a link to the destination",
            "outside/a.txt=precious, s/sub/a.txt@100, s/sub/b.txt@100, d/, d/sub -> ../outside",
            "s>d", "outside/a.txt=precious, s/sub/a.txt, s/sub/b.txt, d/sub -> ../outside",
            "1 failed, 0 copied");
        row("no copy through a link to the source",
            "outside/a.txt=precious, d/sub/a.txt@100, d/sub/b.txt@100, s/, s/sub -> ../outside",
            "s<d", "outside/a.txt=precious, d/sub/a.txt, d/sub/b.txt, s/sub -> ../outside",
            "1 failed, 0 copied");
        // A source that cannot be listed (missing, or a file) is compared as empty, so every
        // destination file looks missing in the source. Whatever the directions and Delete, the
        // destination keeps every file; copies towards the source fail, reported, as there is no
        // folder to take them (a walk makes no root). A second, healthy pair is synchronized.
        for (const QString &gone : {QString(), u"gone, "_qs}) {
            for (const QString &dirs :
                 {u"s<>d"_qs, u"s<d delete"_qs, u"s>d delete"_qs, u"s<d"_qs}) {
                const bool src = dirs.contains(u'>'), dest = dirs.contains(u'<');
                const bool del = dirs.contains(u"delete");
                QString after = gone + u"d1/kept, d1/sub/deep, s2/new, d2/new"_qs;
                after += src ? u"=s2/new"_qs : QString();
                after += dest && del ? QString() : u", d2/only-d"_qs;
                after += dest && !del ? u", s2/only-d=d2/only-d"_qs : QString();
                QTest::addRow("unlisted source%s, %s", gone.isEmpty() ? "" : " is a file",
                              qPrintable(dirs))
                    << gone + u"d1/kept, d1/sub/deep, s2/new@100, d2/new, d2/only-d"_qs
                    << u"pair gone d1; pair s2 d2; "_qs + dirs << after
                    << (dest && !del ? u"1 failed"_qs : u"0 failed"_qs);
            }
        }
    }
    void walks()
    {
        QFETCH(QString, files);
        QFETCH(QString, commands);
        QFETCH(QString, after);
        QFETCH(QString, counts);
        Fixture f;
        f.files(files);
        f.engine.settings.MaxDeletePercent = 100;
        for (const QString &command : commands.split(u"; "_qs)) {
            const QString verb = command.section(u' ', 0, 0);
            const QString place = command.section(u' ', -1);
            if (verb == u"pair") {
                f.pair(command.section(u' ', 1, 1), place);
                continue;
            }
            if (f.engine.comparison().rows().size() == 1) {
                if (f.engine.pairs.isEmpty())
                    f.pair(u"s"_qs, u"d"_qs);
                f.engine.pairs[1].ExcludeFiles = u"*.tmp"_qs;
                f.compare();
            }
            const int row = place.contains(u'/') ? f.row(place) : 0;
            QVERIFY(row >= 0);
            const Side side = place.startsWith(u"d/") ? Side::Destination : Side::Source;
            if (verb == u"copy")
                CopySelected(f.engine, side, row);
            else if (verb == u"delete")
                DeleteEntries(f.engine.comparison(), f.engine.run(), f.engine.reporter(), side,
                              row);
            else {
                // A refusal's message waits for the person.
                const bool refused = command.endsWith(u" refused");
                f.engine.DontAsk = !refused;
                f.engine.run().setOptions({verb.contains(u'>'), verb.contains(u'<'), false,
                                           command.contains(u" delete"),
                                           command.contains(u" mirror")});
                QCOMPARE(Synchronize(f.engine, row), !refused);
                QCOMPARE(f.ui.shown.size() == 1 && f.log().isEmpty(), refused);
            }
        }
        const SyncStats &done = f.engine.run().stats();
        const QString seen =
            u"%1 failed, %2 copied, %3 deleted, %4 bytes, %5 folders removed"_qs.arg(done.failures)
                .arg(done.filesCopied)
                .arg(done.filesDeleted)
                .arg(f.engine.run().byteTotal())
                .arg(done.folderRemovals[1]);
        QCOMPARE(seen.left(counts.size()), counts);
        QCOMPARE(f.listing(), list(after));
        // The root of the unlisted rows counts as one that could not be listed.
        QCOMPARE(f.unlistedRoots, commands.contains(u"pair gone") ? 1 : 0);
    }

    // Changes made after the comparison are kept, and reported: a receiving file edited while
    // the run goes on, a sending file put back from an older backup, a receiving name taken. A
    // folder swapped for a link between the comparison and the change (made certain through the
    // file layer's hook): neither a deletion nor a copy reaches the folder it names.
    void changesDuringTheRun_data()
    {
        QTest::addColumn<QString>("files");
        // "edit PATH" or "swap FOLDER", when a.txt or sub/ is next
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("deletion");
        QTest::addColumn<QString>("log");
        const QString edits = u"s/a.txt@100, s/b.txt@100, s/c.txt@100, d/a.txt, d/b.txt"_qs;
        const QString changed = u"changed since the comparison"_qs;
        QTest::newRow("receiving file edited") << edits << u"edit d/b.txt"_qs << false << changed;
        QTest::newRow("sending file put back older")
            << edits << u"edit s/b.txt"_qs << false << changed;
        QTest::newRow("name taken on the receiving side")
            << edits << u"edit d/c.txt"_qs << false
            << u"exists on the receiving side but was not seen"_qs;
        const QString gone = u"s/sub/x.txt, s/keep=, d/keep="_qs;
        const QString copied = gone + u", d/sub/x.txt@-100"_qs;
        const QString swapped = u"no longer the one the comparison saw"_qs;
        QTest::newRow("deletion on the sending side")
            << gone << u"swap s/sub"_qs << true << swapped;
        QTest::newRow("copy into the receiving side")
            << copied << u"swap d/sub"_qs << false << swapped;
        QTest::newRow("deletion, the sending root swapped")
            << gone << u"swap s"_qs << true << swapped;
        QTest::newRow("copy, the receiving root swapped")
            << copied << u"swap d"_qs << false << swapped;
    }
    void changesDuringTheRun()
    {
        QFETCH(QString, files);
        QFETCH(QString, change);
        QFETCH(bool, deletion);
        QFETCH(QString, log);
        Fixture f;
        f.files(files);
        f.compare();
        const bool swap = change.startsWith(u"swap");
        const QString victim = change.section(u' ', 1);
        // Outside the pair, a copy of what the swapped folder held: the same names, sizes and
        // times, so that only the place tells them apart.
        if (swap)
            QCOMPARE(QProcess::execute(u"cp"_qs,
                                       {u"-a"_qs, f.tree.path(victim), f.tree.path(u"outside"_qs)}),
                     0);
        const QStringList outside = f.tree.snapshot(u"outside"_qs);
        bool done = false;
        f.ops.onResolve = [&](const TreePath &place) {
            if (done || !place.relative.startsWith(swap ? u"sub"_qs : u"a.txt"_qs))
                return;
            done = true;
            if (!swap)
                return f.tree.file(victim, "edited since", T0 + 50);
            QVERIFY(QDir().rename(f.tree.path(victim), f.tree.path(victim + u".moved"_qs)));
            f.tree.symlink(victim, QFile::encodeName(f.tree.path(u"outside"_qs)));
        };
        f.sync({true, false, false, deletion});
        QCOMPARE(f.tree.snapshot(u"outside"_qs), outside);
        f.failed(1, log);
        if (!swap) {
            QCOMPARE(f.tree.read(victim), QByteArray("edited since"));
            QCOMPARE(f.tree.read(u"d/a.txt"_qs), QByteArray("s/a.txt"));
        }
    }

    // On a case-blind receiving file system the second of two case twins cannot be placed: it
    // is reported, the first is not overwritten, and later two-way runs never send the wrong
    // twin back over a source file. Through the file layer's seam, and on a real exFAT image
    // where this machine can mount one.
    void caseTwinsOnACaseBlindReceiver_data()
    {
        QTest::addColumn<QStringList>("mount");
        QTest::newRow("seam") << QStringList();
        QTest::newRow("FUSE exFAT") << exfatMount;
    }
    void caseTwinsOnACaseBlindReceiver()
    {
        QFETCH(QStringList, mount);
        Fixture f;
        f.files(u"s/a.txt@0, s/A.TXT@10, s/D/x, s/d/x, d/"_qs);
        Undo undo;
        f.ops.caseBlind = mount.isEmpty();
        if (!mount.isEmpty() &&
            !mountImage(f.tree.path(u"image"_qs), mount, f.tree.path(u"d"_qs), undo))
            QSKIP("no exFAT image can be mounted here");
        const QStringList source = f.tree.snapshot(u"s"_qs);
        for (int run = 0; run < 3; ++run) {
            f.compare();
            f.engine.run().setOptions({true, true});
            Synchronize(f.engine, 0);
            QCOMPARE(f.tree.snapshot(u"s"_qs), source);
            QVERIFY2(f.engine.run().stats().failures == 2,
                     qPrintable(f.log())); // one file twin, one folder twin
        }
        QCOMPARE(f.tree.snapshot(u"d"_qs).size(), 3); // one file, one folder and its file
    }

    // FAT and exFAT sticks keep times to two seconds: a file copied there compares as identical
    // afterwards, so the next run copies nothing; three seconds still count as newer.
    void stickComparesWithinTwoSeconds_data()
    {
        QTest::addColumn<QStringList>("mount");
        QTest::newRow("exFAT through FUSE") << exfatMount;
        QTest::newRow("FAT through FUSE") << fatMount;
    }
    void stickComparesWithinTwoSeconds()
    {
        QFETCH(QStringList, mount);
        Fixture f;
        f.tree.dir(u"stick"_qs);
        Undo undo;
        if (!mountImage(f.tree.path(u"stick.img"_qs), mount, f.tree.path(u"stick"_qs), undo))
            QSKIP("no such stick can be mounted here");
        const int stickFd = ::open(f.tree.nativePath("stick").constData(), O_RDONLY | O_DIRECTORY);
        QVERIFY(keepsCoarseTimes(stickFd));
        ::close(stickFd);
        f.files(u"s/odd@1, s/later@3, stick/later=s/later"_qs);
        const struct timespec halfPast[2] = {{T0 + 1, 500'000'000}, {T0 + 1, 500'000'000}};
        QVERIFY(::utimensat(AT_FDCWD, f.tree.nativePath("s/odd").constData(), halfPast, 0) == 0);
        f.pair(u"s"_qs, u"stick"_qs);
        f.compare();
        f.sync({true, false});
        QCOMPARE(f.engine.run().stats().filesCopied, 2);
        f.compare();
        QCOMPARE(f.engine.comparison().counters()[0], 0);
        QCOMPARE(f.engine.comparison().counters()[2], 0);
    }

    // The deletion guard: a deletion step that would take more than the limit of a pair's files,
    // or finds the receiving side empty, is asked about, and without a person not run at all.
    void deletionGuard_data()
    {
        // Files the other side keeps of the losing side's ten (-1: not even its folder), the limit
        // in percent, "nobody" (DontAsk) or the person's answer, the files deleted, and
        // "delete" or "mirror" (the receiving side loses what the sending one lacks).
        QTest::addColumn<QString>("row");
        QTest::newRow("empty receiving side, no share limit") << u"-1 100 nobody 0 delete"_qs;
        QTest::newRow("60 % refused") << u"4 50 nobody 0 delete"_qs;
        QTest::newRow("40 % allowed") << u"6 50 nobody 4 delete"_qs;
        QTest::newRow("60 %, the person says yes") << u"4 50 yes 6 delete"_qs;
        QTest::newRow("60 %, the person says no") << u"4 50 no 0 delete"_qs;
        QTest::newRow("mirror from an empty sending side") << u"-1 100 nobody 0 mirror"_qs;
        QTest::newRow("mirror, 40 % allowed") << u"6 50 nobody 4 mirror"_qs;
    }
    void deletionGuard()
    {
        QFETCH(QString, row);
        const QStringList c = row.split(u' ');
        const int deleted = c[3].toInt();
        const bool mirror = c[4] == u"mirror", held = deleted == 0;
        Fixture f;
        const QString losing = mirror ? u"d"_qs : u"s"_qs, other = mirror ? u"s"_qs : u"d"_qs;
        f.tree.dir(other);
        for (int i = 0; i < 10; ++i) {
            f.tree.file(losing + u"/f%1"_qs.arg(i), "x", T0);
            if (i < c[0].toInt())
                f.tree.file(other + u"/f%1"_qs.arg(i), "x", T0);
        }
        f.compare();
        f.engine.settings.MaxDeletePercent = c[1].toInt();
        f.engine.DontAsk = c[2] == u"nobody";
        f.ui.answers = {c[2] == u"yes" ? Interaction::Answer::Yes : Interaction::Answer::No};
        f.sync({true, false, false, !mirror, mirror});
        QCOMPARE(QDir(f.tree.path(losing)).entryList(QDir::Files).size(), 10 - deleted);
        QCOMPARE(f.engine.DeletionsRefused, held ? 1 : 0);
        QCOMPARE(RunExitStatus(f.engine), held ? ExitDeletionRefused : ExitOk);
        QCOMPARE(f.log().contains(u"DeletionRefused"_qs), held);
    }

    // With a versions folder, a run keeps what it deletes and replaces under its start time,
    // removes the run folders older than the days to keep, and never compares the folder itself.
    // With every change logged, the runs can be read afterwards: one line per expired run folder,
    // deletion, replacement, copy and new folder, in the failure lines' columns, and the totals on
    // the End line.
    void versionsFolderAndActionLog()
    {
        Fixture f;
        f.files(u"s/a@100, d/a, s/sub/gone, d/sub/kept, s/Old/2026-10-25 135959/x, "
                u"s/Old/2026-10-25 140001/y, s/Old/notes/z, d/Old/2020-01-01 000000/w"_qs);
        f.engine.settings.Versioning = Settings::ToVersionsFolder;
        f.engine.settings.VersionsFolder = u"Old/"_qs;
        f.engine.settings.KeepVersionsDays = 30;
        f.engine.settings.MaxDeletePercent = 100;
        f.engine.settings.LogActions = true;
        f.engine.clock = [] { return QDateTime(QDate(2026, 11, 24), QTime(14, 0)); };
        f.compare();
        f.sync({true, false, false, true});
        QCOMPARE(f.listing(), list(u"d/Old/2026-11-24 140000/a=d/a, d/a=s/a, d/sub/kept, "
                                   u"s/Old/2026-10-25 140001/y, "
                                   u"s/Old/2026-11-24 140000/sub/gone=s/sub/gone, s/Old/notes/z, "
                                   u"s/a, s/sub/"_qs));
        f.compare();
        for (const CompareEntry &e : f.engine.comparison().rows())
            for (Side side : Sides)
                QVERIFY2(!e.path(side).contains(u"/Old"_qs), qPrintable(e.path(side)));

        // No days to keep means every run folder stays, however old.
        f.engine.settings.KeepVersionsDays = 0;
        f.engine.clock = [] { return QDateTime(QDate(2027, 11, 24), QTime(14, 0)); };
        f.files(u"s/b, s/new/c"_qs);
        f.compare();
        f.sync({true, false});
        QVERIFY(f.tree.exists(u"s/Old/2026-10-25 140001/y"_qs));
        QStringList actions;
        for (const QString &line : f.log().split(u"\r\n"_qs, Qt::SkipEmptyParts)) {
            const QStringList columns = line.split(u'\t');
            if (columns.size() == 6 && columns[3].isEmpty() && columns[2] != u"Start"_qs &&
                columns[2] != u"End"_qs)
                actions << columns[2] + u' ' + columns[4] + u' ' + columns[5];
        }
        const QString s = f.tree.path(u"s/"_qs), d = f.tree.path(u"d/"_qs);
        QCOMPARE(
            actions,
            (QStringList{u"remove-old-versions  "_qs + s + u"Old/2026-10-25 135959",
                         u"remove-old-versions  "_qs + d + u"Old/2020-01-01 000000",
                         u"delete "_qs + s + u"sub/gone ", u"replace "_qs + s + u"a " + d + u"a",
                         u"copy "_qs + s + u"b " + d + u"b", u"mkdir  "_qs + d + u"new",
                         u"copy "_qs + s + u"new/c " + d + u"new/c"}));
        f.failed(0,
                 u"copied 2 files (10 bytes), created 1 folders, deleted 0 files, 0 failures"_qs);
    }

    // The temporary files of a killed run are never listed as the user's files, and the next run
    // that copies into that side removes them; one a running copy still holds stays.
    void leftoversAreNeitherListedNorKept()
    {
        Fixture f;
        f.files(u"s/a.txt@100, d/sub/.duomir-0123abcd.tmp, d/.duomir-held0000.tmp"_qs);
        f.tree.setMode(u"d/sub/.duomir-0123abcd.tmp"_qs, 0600);
        f.tree.setMode(u"d/.duomir-held0000.tmp"_qs, 0600);
        const int held = ::open(f.tree.nativePath("d/.duomir-held0000.tmp").constData(), O_RDONLY);
        QVERIFY(held >= 0 && ::flock(held, LOCK_EX) == 0);
        f.pair(u"s"_qs, u"d"_qs);
        f.engine.pairs[1].HiddenFiles = true;
        f.compare();
        // Were they listed, the two-way run would copy them to the source.
        f.sync({true, true});
        ::close(held);
        QCOMPARE(f.listing(),
                 list(u"d/.duomir-held0000.tmp, d/a.txt=s/a.txt, d/sub/, s/a.txt, s/sub/"_qs));
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
        f.files(u"s/u/sub/f.txt, d/u/sub/f.txt@100, s/z.txt"_qs);
        f.pair(u"s"_qs, u"d"_qs);
        f.addRow(QString(), QString(), QString(), true);
        f.addRow(u"/u"_qs, u"u"_qs, u"u"_qs, true).Attributes[Side::Destination] |= Attr::Unlisted;
        f.addRow(u"/u/sub"_qs, u"sub"_qs, QString(), true, ModifiedInSource);
        f.addRow(u"/u/sub/"_qs, u"f.txt"_qs, QString(), false, ModifiedInSource).FullSize = {13, 0};
        CompareEntry &after = f.addRow(u"/"_qs, u"z.txt"_qs, QString(), false, ModifiedInSource);
        after.FullSize = {7, 0};
        after.Modified[Side::Source] = FileTimeToDate(T0, f.engine.comparison().utcOffset());
        f.engine.comparison().countStates();
        // The list's plan does not offer to delete what the destination may hold unseen.
        f.engine.run().setOptions({true, false, false, true});
        QCOMPARE(SyncPlanner(f.engine.comparison(), f.engine.run()).action(4), PlannedAction::None);
        if (copyOnly)
            CopySelected(f.engine, Side::Source, row);
        else
            f.sync({true, false, false, true}, row);
        QCOMPARE(f.tree.read(u"s/u/sub/f.txt"_qs), QByteArray("s/u/sub/f.txt"));
        QCOMPARE(f.tree.read(u"d/u/sub/f.txt"_qs), QByteArray("d/u/sub/f.txt"));
        // Past the unseen folder the walk copies again.
        if (row == 0)
            QVERIFY2(f.tree.read(u"d/z.txt"_qs) == "s/z.txt", qPrintable(f.log()));
    }

    // One direction with Delete, or a mirror, for every choice of directions and marks: each
    // row's planned action (the action column) is what the run then does to its files, and the
    // plan's counts are the run's.
    void plannedActionIsWhatRunsDo_data()
    {
        QTest::addColumn<QString>("options"); // "src dest delete mirror", 1 or 0 each
        QTest::addColumn<bool>("marked");
        for (const char *o : {"1100", "0100", "1000", "1010", "0110", "1001", "0101"}) {
            QTest::addRow("%s, marked", o) << QString::fromLatin1(o) << true;
            QTest::addRow("%s, unmarked", o) << QString::fromLatin1(o) << false;
        }
    }
    void plannedActionIsWhatRunsDo()
    {
        QFETCH(QString, options);
        QFETCH(bool, marked);
        Fixture f;
        f.files(u"s/newer-s@100, d/newer-s, s/newer-d, d/newer-d@100, s/only-s, d/only-d, "
                u"s/same=same, d/same=same, s/dir-s/in, d/dir-d/in"_qs);
        f.compare();
        f.engine.run().setOptions({options[0] == u'1', options[1] == u'1', false,
                                   options[2] == u'1', options[3] == u'1'});
        f.engine.settings.MaxDeletePercent = 100;
        for (CompareEntry &e : f.engine.comparison().editRows())
            e.Marked = e.Marked && marked;
        const QStringList names{u"newer-s"_qs, u"newer-d"_qs,  u"only-s"_qs,  u"only-d"_qs,
                                u"same"_qs,    u"dir-s/in"_qs, u"dir-d/in"_qs};
        // Every file's content, source then destination, name by name.
        const auto contents = [&] {
            QByteArrayList all;
            for (const QString &name : names)
                all << f.tree.read(u"s/"_qs + name) << f.tree.read(u"d/"_qs + name);
            return all;
        };
        // What each file pair should hold after the run, by the planned action.
        QByteArrayList expected = contents();
        const SyncPlanner planner(f.engine.comparison(), f.engine.run());
        for (qsizetype i = 0; i < names.size(); ++i) {
            using enum PlannedAction;
            const auto a =
                planner.action(std::max(f.row(u"s/" + names[i]), f.row(u"d/" + names[i])));
            const qsizetype receiving = 2 * i + (a == CopyToSource || a == DeleteInSource ? 0 : 1);
            if (a == CopyToDestination || a == CopyToSource)
                expected[receiving] = expected[receiving ^ 1];
            else if (a == DeleteInSource || a == DeleteInDestination)
                expected[receiving].clear();
        }
        const SyncPlan plan = PlanSynchronize(f.engine);
        Synchronize(f.engine, 0);
        QCOMPARE(contents(), expected);
        const SyncStats &done = f.engine.run().stats();
        QCOMPARE(done.copies, plan.copies);
        QCOMPARE(done.replaces, plan.replaces);
        QCOMPARE(done.deletions, plan.deletions);
        QCOMPARE(done.folderRemovals, plan.folderRemovals);
    }

    // Cancel during a large file: the files before it stay copied, it keeps its old content,
    // nothing after it is touched, no temporary file is left, and the run still ends normally.
    void cancelInTheMiddleOfALargeFile()
    {
        Fixture f;
        CancellingSink sink;
        f.engine.DontAsk = false;
        f.engine.run().progress().setSink(&sink);
        f.files(u"s/a@100, d/b, s/c@100"_qs);
        f.tree.file(u"s/b"_qs, QByteArray(1 << 20, 'b'), T0 + 100);
        f.compare();
        sink.onPercent = [&] {
            if (f.engine.run().progress().lastPercent() >= 10)
                f.engine.run().cancel();
        };
        f.sync({true, true});
        QCOMPARE(f.tree.read(u"d/a"_qs), QByteArray("s/a"));
        QCOMPARE(f.tree.read(u"d/b"_qs), QByteArray("d/b"));
        QVERIFY(!f.tree.exists(u"d/c"_qs));
        QCOMPARE(f.tree.snapshot().filter(u".duomir-"_qs), QStringList());
        QVERIFY(!f.engine.run().progress().isVisible());
        QCOMPARE(f.ui.shown.size(), 1); // the cancelled copy is reported like any failure
        QVERIFY(f.ui.shown[0].text.startsWith(QString::fromLocal8Bit(std::strerror(ECANCELED))));
        QVERIFY(f.log().split(u"\r\n"_qs, Qt::SkipEmptyParts).last().contains(u"\tEnd\t"));
    }

    // A single selected file, unmarked and identical, whose receiving folder is missing: it is
    // copied all the same, and the folder comes first, with the sending folder's mode.
    void missingReceivingRootIsCreated()
    {
        Fixture f;
        f.files(u"s/f, d/"_qs);
        f.tree.setMode(u"s"_qs, 0750);
        f.compare();
        const int row = f.row(u"s/f"_qs);
        QVERIFY(::rmdir(f.tree.nativePath("d").constData()) == 0);
        f.engine.comparison().editRows()[size_t(row)].State = Identical;
        f.engine.comparison().editRows()[size_t(row)].Marked = false;
        CopySelected(f.engine, Side::Source, row);
        QCOMPARE(f.tree.read(u"d/f"_qs), QByteArray("s/f"));
        QCOMPARE(f.tree.mode(u"d"_qs), 0750u);
    }

    // Failures are logged with the system's text and the walk goes on with the next file. A
    // read-only target is made writable before the copy and then takes the source's mode; when the
    // copy fails it keeps its content and every other permission bit.
    void faultsAreLoggedAndTheRunGoesOn()
    {
        Fixture f;
        f.files(u"s/a@100, s/b@100, s/c@100, d/a, d/b, d/c"_qs);
        f.tree.setMode(u"s/c"_qs, 0604);
        f.tree.setMode(u"d/b"_qs, 0454);
        f.tree.setMode(u"d/c"_qs, 0454);
        f.compare();
        f.ops.failWriteAt = 1;
        f.ops.renameErrno = EACCES;
        f.ops.onlyPathsWith = "b";
        f.sync({true, false});
        QCOMPARE(f.listing(), list(u"d/a, d/b, d/c=s/c, s/a, s/b, s/c"_qs));
        QCOMPARE(f.tree.mode(u"d/b"_qs), 0654u);
        QCOMPARE(f.tree.mode(u"d/c"_qs), 0604u);
        f.failed(2, f.failureLine(ENOSPC, u"s/a"_qs, u"d/a"_qs));
        f.failed(2, f.failureLine(EACCES, u"s/b"_qs, u"d/b"_qs));
        QCOMPARE(f.log().count(u"\r\n"_qs), 4); // Start, the two failures, End
    }
};

QTEST_GUILESS_MAIN(TestSyncSafety)
#include "tst_syncsafety.moc"

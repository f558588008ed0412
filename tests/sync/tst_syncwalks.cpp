#include <QDir>
#include <QTest>
#include <cerrno>
#include <cstring>

#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/copyentries.h"
#include "core/deleteentries.h"
#include "core/engine.h"
#include "core/platform/faultyfileops.h"
#include "core/synchronize.h"
#include "rowbuilder.h"

using namespace duomir;
using namespace duomir::test;

namespace {

constexpr qint64 T0 = 1'600'000'000;

// Lets a test act from inside a running copy, as a Cancel button would.
class HookedInteraction : public FakeInteraction
{
public:
    std::function<void()> onYield;
    void yieldEvents() override
    {
        FakeInteraction::yieldEvents();
        if (onYield)
            onYield();
    }
};

class NullSink : public ProgressSink
{
public:
    void setVisible(bool) override {}
    void setPercentText(const QString &) override {}
    void setBarWidth(int) override {}
    void setFrom(const QString &) override {}
    void setTo(const QString &) override {}
    void setFileName(const QString &) override {}
    int fullBarWidth() const override { return 100; }
};

struct Fixture
{
    TempTree tree;
    HookedInteraction ui;
    Engine engine{ui};
    FaultyFileOps ops{64 * 1024};
    NullSink sink;

    Fixture()
    {
        engine.fileOps = &ops;
        engine.DataFolder = tree.path(QStringLiteral("log/"));
        tree.dir(QStringLiteral("log"));
        engine.settings.LogToFile = true;
        engine.DontAsk = true;
    }
    RowBuilder rows() { return RowBuilder(engine, tree.path(u"s"_qs), tree.path(u"d"_qs)); }
    QStringList logLines() const
    {
        QStringList lines;
        const QDir dir(tree.path(QStringLiteral("log")));
        for (const QString &f : dir.entryList(QDir::Files))
            lines += QString::fromUtf8(tree.read(u"log/" + f))
                         .split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        return lines;
    }
    QStringList temporaries() const
    {
        QStringList found;
        for (const QString &line : tree.snapshot())
            if (line.contains(u".duomir-"))
                found << line;
        return found;
    }
};

} // namespace

class TestSyncWalks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // One direction with Delete: the receiving side decides which names exist. The sending side
    // loses what the receiving side lacks; only files on both sides are brought up to date.
    void oneDirectionWithDelete_data()
    {
        QTest::addColumn<bool>("src");
        QTest::newRow("source to destination") << true;
        QTest::newRow("destination to source") << false;
    }
    void oneDirectionWithDelete()
    {
        QFETCH(bool, src);
        Fixture f;
        const QString S = src ? u"s"_qs : u"d"_qs; // sending
        const QString R = src ? u"d"_qs : u"s"_qs; // receiving
        f.tree.file(S + u"/newer", "new", T0 + 100);
        f.tree.file(R + u"/newer", "old", T0);
        f.tree.file(S + u"/older", "older", T0);
        f.tree.file(R + u"/older", "newer", T0 + 100);
        f.tree.file(S + u"/gone", "only sending", T0);
        f.tree.file(S + u"/same", "same", T0);
        f.tree.file(R + u"/same", "same", T0);
        f.tree.file(R + u"/fresh", "only receiving", T0);
        f.tree.file(S + u"/dir/inner", "only sending, below", T0);
        f.tree.dir(R);
        RowBuilder r = f.rows();
        for (const char *name : {"fresh", "gone", "newer", "older", "same"})
            r.file(QString::fromLatin1(name));
        r.dir(u"dir"_qs);
        r.file(u"dir/inner"_qs);
        f.engine.sync = {src, !src, false, true};

        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.tree.snapshot(S),
                 QStringList({u"d dir/"_qs, u"f newer 3 %1"_qs.arg(T0 + 100),
                              u"f older 5 %1"_qs.arg(T0), u"f same 4 %1"_qs.arg(T0)}));
        QCOMPARE(f.tree.snapshot(R),
                 QStringList({u"f fresh 14 %1"_qs.arg(T0), u"f newer 3 %1"_qs.arg(T0 + 100),
                              u"f older 5 %1"_qs.arg(T0 + 100), u"f same 4 %1"_qs.arg(T0)}));
        QCOMPARE(f.engine.syncStats.filesDeleted, 2);
    }

    // A read-only target is made writable before the copy; when the copy then fails, the file
    // keeps its content and every other permission bit.
    void readOnlyTarget()
    {
        for (bool renameFails : {false, true}) {
            Fixture f;
            f.tree.file(u"s/f"_qs, "new", T0 + 100);
            f.tree.setMode(u"s/f"_qs, 0604);
            f.tree.file(u"d/f"_qs, "old", T0);
            f.tree.setMode(u"d/f"_qs, 0454);
            f.rows().file(u"f"_qs);
            f.engine.sync.Dest = false;
            f.ops.renameErrno = renameFails ? EROFS : 0;
            Synchronize(f.engine, 0);
            QCOMPARE(f.tree.read(u"d/f"_qs), renameFails ? QByteArray("old") : QByteArray("new"));
            QCOMPARE(f.tree.mode(u"d/f"_qs), renameFails ? 0654u : 0604u);
            QCOMPARE(f.engine.syncStats.failures, renameFails ? 1 : 0);
        }
    }

    // Cancel during a large file: the files before it stay copied, it keeps its old content,
    // nothing after it is touched, no temporary file is left, and the run still ends normally.
    void cancelInTheMiddleOfALargeFile()
    {
        Fixture f;
        f.engine.DontAsk = false;
        f.engine.progress.setSink(&f.sink);
        f.tree.file(u"s/a"_qs, "first", T0 + 100);
        f.tree.file(u"s/b"_qs, QByteArray(1 << 20, 'b'), T0 + 100);
        f.tree.file(u"d/b"_qs, "old b", T0);
        f.tree.file(u"s/c"_qs, "third", T0 + 100);
        RowBuilder r = f.rows();
        r.file(u"a"_qs);
        r.file(u"b"_qs);
        r.file(u"c"_qs);
        f.ui.onYield = [&] {
            if (f.engine.progress.lastPercent() >= 10)
                f.engine.CancelFlag = true;
        };
        QVERIFY(Synchronize(f.engine, 0));
        QVERIFY(f.engine.CancelFlag);
        QCOMPARE(f.tree.read(u"d/a"_qs), QByteArray("first"));
        QCOMPARE(f.tree.read(u"d/b"_qs), QByteArray("old b"));
        QVERIFY(!f.tree.exists(u"d/c"_qs));
        QCOMPARE(f.temporaries(), QStringList());
        QVERIFY(!f.engine.progress.isVisible());
        QCOMPARE(f.ui.shown.size(), 1); // the cancelled copy is reported like any failure
        QVERIFY(f.ui.shown[0].text.startsWith(QString::fromLocal8Bit(std::strerror(ECANCELED))));
        QVERIFY(f.logLines().last().contains(u"\tEnd\t"));
    }

    // A single selected file whose receiving directory is missing: the directory comes first.
    void missingReceivingRootIsCreated()
    {
        Fixture f;
        f.tree.file(u"s/f"_qs, "x", T0);
        f.tree.setMode(u"s"_qs, 0750);
        const int row = f.rows().file(u"f"_qs, Identical, false);
        QVERIFY(!f.tree.exists(u"d"_qs));
        CopySelected(f.engine, 0, row);
        QCOMPARE(f.tree.read(u"d/f"_qs), QByteArray("x"));
        QCOMPARE(f.tree.mode(u"d"_qs), 0750u);
    }

    // Failures are logged with the system's text and the walk goes on with the next file.
    void faultsAreLoggedAndTheRunGoesOn()
    {
        Fixture f;
        for (const char *name : {"a", "b", "c"})
            f.tree.file(u"s/" + QString::fromLatin1(name), "new", T0 + 100);
        f.tree.file(u"d/a"_qs, "old a", T0);
        f.tree.file(u"d/b"_qs, "old b", T0);
        RowBuilder r = f.rows();
        for (const char *name : {"a", "b", "c"})
            r.file(QString::fromLatin1(name));
        f.engine.sync.Dest = false;
        f.ops.failWriteAt = 1;
        f.ops.renameErrno = EACCES;
        f.ops.onlyPathsWith = "/d/b";
        Synchronize(f.engine, 0);
        QCOMPARE(f.tree.read(u"d/a"_qs), QByteArray("old a"));
        QCOMPARE(f.tree.read(u"d/b"_qs), QByteArray("old b"));
        QCOMPARE(f.tree.read(u"d/c"_qs), QByteArray("new"));
        QCOMPARE(f.temporaries(), QStringList());
        const QStringList log = f.logLines();
        QCOMPARE(log.size(), 4);
        const auto errorLine = [&](int code, const char *name) {
            return u"\t\t%1\t%2\t%3\t%4"_qs.arg(code).arg(
                QString::fromLocal8Bit(std::strerror(code)),
                f.tree.path(u"s/" + QString::fromLatin1(name)),
                f.tree.path(u"d/" + QString::fromLatin1(name)));
        };
        QVERIFY2(log[1].endsWith(errorLine(ENOSPC, "a")), qPrintable(log[1]));
        QVERIFY2(log[2].endsWith(errorLine(EACCES, "b")), qPrintable(log[2]));
    }

    // A selected directory's walk ends at the first directory that is not deeper than it.
    void subtreeEndsAtSeparatorCount()
    {
        Fixture f;
        f.tree.file(u"s/a/x"_qs, "ax", T0);
        f.tree.file(u"s/a/b/y"_qs, "aby", T0);
        f.tree.file(u"s/c/z"_qs, "cz", T0);
        f.tree.file(u"s/top"_qs, "top", T0);
        f.tree.dir(u"d"_qs);
        RowBuilder r = f.rows();
        r.file(u"top"_qs);
        const int a = r.dir(u"a"_qs);
        r.dir(u"a/b"_qs);
        r.file(u"a/b/y"_qs);
        r.file(u"a/x"_qs);
        const int c = r.dir(u"c"_qs);
        r.file(u"c/z"_qs);
        CopyEntries(f.engine, 0, a, 0);
        QCOMPARE(f.tree.snapshot(u"d"_qs),
                 QStringList({u"d a/"_qs, u"d a/b/"_qs, u"f a/b/y 3 %1"_qs.arg(T0),
                              u"f a/x 2 %1"_qs.arg(T0)}));

        DeleteEntries(f.engine, 0, c, 0);
        QVERIFY(f.tree.exists(u"s/c"_qs));
        QVERIFY(!f.tree.exists(u"s/c/z"_qs));
        QVERIFY(f.tree.exists(u"s/top"_qs));
        QVERIFY(f.tree.exists(u"s/a/x"_qs));
    }

    // Mode 2: nothing is counted, created or copied that the receiving side lacks.
    void receivingSideDecides()
    {
        Fixture f;
        f.tree.file(u"s/both"_qs, "12345", T0 + 100);
        f.tree.file(u"d/both"_qs, "1", T0);
        f.tree.file(u"s/only"_qs, "1234567", T0);
        f.tree.file(u"s/dir/x"_qs, "x", T0);
        f.tree.dir(u"d"_qs);
        RowBuilder r = f.rows();
        r.file(u"both"_qs);
        r.file(u"only"_qs);
        r.dir(u"dir"_qs);
        r.file(u"dir/x"_qs);
        const QStringList before = f.tree.snapshot();
        CopyEntries(f.engine, 0, 0, CopyMode::CountOnly | CopyMode::ReceivingDecides);
        QCOMPARE(f.engine.ByteTotal, 5);
        CopyEntries(f.engine, 0, 0, CopyMode::CountOnly);
        QCOMPARE(f.engine.ByteTotal, 5 + 5 + 1 + 7);
        QCOMPARE(f.tree.snapshot(), before);
        CopyEntries(f.engine, 0, 0, CopyMode::ReceivingDecides);
        QCOMPARE(f.tree.snapshot(u"d"_qs), QStringList{u"f both 5 %1"_qs.arg(T0 + 100)});
    }

    // Deleting a subtree removes only marked files; a directly selected file goes regardless, and
    // an already empty selected directory goes too. Subdirectories stay.
    void deletionKeepsUnmarkedFiles()
    {
        Fixture f;
        f.tree.file(u"s/dir/identical"_qs, "same", T0);
        f.tree.file(u"d/dir/identical"_qs, "same", T0);
        f.tree.file(u"s/dir/changed"_qs, "new", T0 + 100);
        f.tree.file(u"d/dir/changed"_qs, "old", T0);
        f.tree.file(u"s/dir/readonly"_qs, "ro", T0);
        f.tree.setMode(u"s/dir/readonly"_qs, 0444);
        f.tree.file(u"s/dir/sub/deep"_qs, "deep", T0);
        f.tree.file(u"s/single"_qs, "same", T0);
        f.tree.file(u"d/single"_qs, "same", T0);
        f.tree.dir(u"s/empty"_qs);
        RowBuilder r = f.rows();
        const int single = r.file(u"single"_qs);
        const int dir = r.dir(u"dir"_qs);
        r.file(u"dir/changed"_qs);
        r.file(u"dir/identical"_qs);
        r.file(u"dir/readonly"_qs);
        r.dir(u"dir/sub"_qs);
        r.file(u"dir/sub/deep"_qs);
        const int empty = r.dir(u"empty"_qs);
        QCOMPARE(f.engine.CompareResults[size_t(single)].Marked, false);

        DeleteEntries(f.engine, 0, dir, 0);
        DeleteEntries(f.engine, 0, single, 0);
        DeleteEntries(f.engine, 0, empty, 0);
        QCOMPARE(f.tree.snapshot(u"s"_qs),
                 QStringList({u"d dir/"_qs, u"d dir/sub/"_qs, u"f dir/identical 4 %1"_qs.arg(T0)}));
        QCOMPARE(f.engine.syncStats.failures, 0);
        QCOMPARE(f.tree.snapshot(u"d"_qs).size(), 4);
    }

    // Refusals leave the disk and the log alone; the message waits for the person unless DontAsk.
    void preconditions_data()
    {
        QTest::addColumn<bool>("src");
        QTest::addColumn<bool>("dest");
        QTest::addColumn<bool>("newerInSource");
        QTest::addColumn<bool>("newerInDestination");
        QTest::addColumn<bool>("runs");
        QTest::newRow("no direction") << false << false << true << true << false;
        QTest::newRow("nothing to do") << true << true << false << false << false;
        QTest::newRow("only Src, only destination newer")
            << true << false << false << true << false;
        QTest::newRow("only Dest, only source newer") << false << true << true << false << false;
        QTest::newRow("both on, one counter") << true << true << false << true << true;
        QTest::newRow("only Src, source newer") << true << false << true << false << true;
    }
    void preconditions()
    {
        QFETCH(bool, src);
        QFETCH(bool, dest);
        QFETCH(bool, newerInSource);
        QFETCH(bool, newerInDestination);
        QFETCH(bool, runs);
        for (bool dontAsk : {false, true}) {
            Fixture f;
            f.engine.DontAsk = dontAsk;
            f.tree.file(u"s/x"_qs, "x", newerInSource ? T0 + 100 : T0);
            f.tree.file(u"d/x"_qs, "x", T0);
            f.tree.file(u"s/y"_qs, "y", T0);
            f.tree.file(u"d/y"_qs, "y", newerInDestination ? T0 + 100 : T0);
            RowBuilder r = f.rows();
            r.file(u"x"_qs);
            r.file(u"y"_qs);
            f.engine.sync = {src, dest, false, false};
            QCOMPARE(Synchronize(f.engine, 0), runs);
            QCOMPARE(f.ui.shown.size(), runs || dontAsk ? 0 : 1);
            if (!runs && !dontAsk)
                QCOMPARE(f.ui.shown[0].icon, Interaction::Icon::Information);
            QCOMPARE(f.logLines().size(), runs ? 2 : 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestSyncWalks)
#include "tst_syncwalks.moc"

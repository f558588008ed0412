#include <QDir>
#include <QTest>
#include <cerrno>
#include <cstring>
#include <map>
#include <unistd.h>

#include "common/fakeinteraction.h"
#include "common/faultyfileops.h"
#include "common/temptree.h"
#include "core/comparecommand.h"
#include "core/copyentries.h"
#include "core/deleteentries.h"
#include "core/engine.h"
#include "core/synchronize.h"
#include "core/syncplan.h"

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
    struct File
    {
        QString path;
        QByteArray content;
        qint64 mtime = T0;
    };

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
    void files(std::initializer_list<File> list)
    {
        for (const File &f : list)
            tree.file(f.path, f.content, f.mtime);
    }
    // Compares s with d, then gives the rows of the named files and directories.
    std::vector<int> compare(std::initializer_list<QString> relatives = {})
    {
        DirPair pair;
        pair.IncludeDirs = pair.IncludeFiles = u"*"_qs;
        pair.Source = tree.path(u"s"_qs);
        pair.Destination = tree.path(u"d"_qs);
        engine.pairs = {};
        engine.pairs.append(pair);
        [&] { QVERIFY(Compare(engine)); }();
        std::vector<int> found;
        for (const QString &relative : relatives)
            found.push_back(row(relative));
        return found;
    }
    int row(const QString &relative) const
    {
        for (size_t i = 2; i < engine.CompareResults.size(); ++i) {
            const CompareEntry &e = engine.CompareResults[i];
            for (int side = 0; side < 2; ++side) {
                // A directory's row has its full path, a file's row its folder and name.
                const QString full = tree.path((side ? u"d/" : u"s/") + relative);
                if (e.path(side) == full ||
                    (e.path(side).endsWith(u'/') && e.path(side) + e.name(side) == full))
                    return int(i);
            }
        }
        return -1;
    }
    QStringList logLines() const
    {
        QStringList lines;
        for (const QString &f : QDir(tree.path(QStringLiteral("log"))).entryList(QDir::Files))
            lines += QString::fromUtf8(tree.read(u"log/" + f))
                         .split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
        return lines;
    }
    QStringList temporaries() const { return tree.snapshot().filter(u".duomir-"_qs); }
};

} // namespace

class TestSyncWalks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // One direction with Delete: the receiving side decides which names exist. The sending side
    // loses what the receiving side lacks; only files on both sides are brought up to date, and
    // nothing is created on the receiving side.
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
        const QString S = src ? u"s/"_qs : u"d/"_qs; // sending
        const QString R = src ? u"d/"_qs : u"s/"_qs; // receiving
        f.files({{S + u"newer", "new", T0 + 100},
                 {R + u"newer", "old"},
                 {S + u"older", "older"},
                 {R + u"older", "newer", T0 + 100},
                 {S + u"gone", "only sending"},
                 {S + u"same", "same"},
                 {R + u"same", "same"},
                 {R + u"fresh", "only receiving"},
                 {S + u"dir/inner", "only sending, below"}});
        f.compare();
        f.engine.sync = {src, !src, false, true};

        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.tree.snapshot(S),
                 QStringList({u"d dir/"_qs, u"f newer 3 %1"_qs.arg(T0 + 100),
                              u"f older 5 %1"_qs.arg(T0), u"f same 4 %1"_qs.arg(T0)}));
        QCOMPARE(f.tree.snapshot(R),
                 QStringList({u"f fresh 14 %1"_qs.arg(T0), u"f newer 3 %1"_qs.arg(T0 + 100),
                              u"f older 5 %1"_qs.arg(T0 + 100), u"f same 4 %1"_qs.arg(T0)}));
        QCOMPARE(f.engine.syncStats.filesDeleted, 2);
        QCOMPARE(f.engine.ByteTotal, 3); // the progress counts only what is copied
    }

    // The action column says what Synchronize will do: for every choice of directions, Delete,
    // Mirror and marks, each row's planned action is what the run then does to its files, and the
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
        f.files({{u"s/newer-s"_qs, "new s", T0 + 100},
                 {u"d/newer-s"_qs, "old"},
                 {u"s/newer-d"_qs, "old"},
                 {u"d/newer-d"_qs, "new d", T0 + 100},
                 {u"s/only-s"_qs, "only s"},
                 {u"d/only-d"_qs, "only d"},
                 {u"s/same"_qs, "same"},
                 {u"d/same"_qs, "same"},
                 {u"s/dir-s/in"_qs, "below s"},
                 {u"d/dir-d/in"_qs, "below d"}});
        f.compare();
        f.engine.sync = {options[0] == u'1', options[1] == u'1', false, options[2] == u'1',
                         options[3] == u'1'};
        f.engine.settings.MaxDeletePercent = 100;
        for (CompareEntry &e : f.engine.CompareResults)
            e.Marked = e.Marked && marked;
        const QStringList names{u"newer-s"_qs, u"newer-d"_qs,  u"only-s"_qs,  u"only-d"_qs,
                                u"same"_qs,    u"dir-s/in"_qs, u"dir-d/in"_qs};
        std::map<QString, PlannedAction> planned;
        {
            const SyncPlanner planner(f.engine);
            for (const QString &name : names)
                planned[name] = planner.action(f.row(name));
        }
        const SyncPlan plan = PlanSynchronize(f.engine);
        std::map<QString, std::array<QByteArray, 2>> before;
        for (const QString &name : names)
            before[name] = {f.tree.read(u"s/"_qs + name), f.tree.read(u"d/"_qs + name)};

        Synchronize(f.engine, 0);
        for (const QString &name : names) {
            const std::array<QByteArray, 2> was = before[name];
            const std::array<QByteArray, 2> now{f.tree.read(u"s/"_qs + name),
                                                f.tree.read(u"d/"_qs + name)};
            std::array<QByteArray, 2> expected = was;
            switch (planned[name]) {
            case PlannedAction::CopyToDestination:
                expected[1] = was[0];
                break;
            case PlannedAction::CopyToSource:
                expected[0] = was[1];
                break;
            case PlannedAction::DeleteInSource:
                expected[0].clear();
                break;
            case PlannedAction::DeleteInDestination:
                expected[1].clear();
                break;
            case PlannedAction::None:
                break;
            }
            QVERIFY2(now == expected, qPrintable(name + u": " + QString::fromUtf8(now[0]) + u" | " +
                                                 QString::fromUtf8(now[1])));
        }
        const SyncStats &done = f.engine.syncStats;
        QCOMPARE(done.copies, plan.copies);
        QCOMPARE(done.replaces, plan.replaces);
        QCOMPARE(done.deletions, plan.deletions);
        QCOMPARE(done.folderRemovals, plan.folderRemovals);
        // A mirror leaves the receiving side with the sending side's names (a file newer there
        // stays newer, as with every copy in that direction).
        const auto namesOf = [&](const QString &side) {
            QStringList out;
            for (const QString &line : f.tree.snapshot(side))
                out << line.section(u' ', 0, 1);
            return out;
        };
        if (options[3] == u'1' && marked)
            QCOMPARE(namesOf(options[0] == u'1' ? u"d"_qs : u"s"_qs),
                     namesOf(options[0] == u'1' ? u"s"_qs : u"d"_qs));
    }

    // Cancel during a large file: the files before it stay copied, it keeps its old content,
    // nothing after it is touched, no temporary file is left, and the run still ends normally.
    void cancelInTheMiddleOfALargeFile()
    {
        Fixture f;
        f.engine.DontAsk = false;
        f.engine.progress.setSink(&f.sink);
        f.files({{u"s/a"_qs, "first", T0 + 100},
                 {u"s/b"_qs, QByteArray(1 << 20, 'b'), T0 + 100},
                 {u"d/b"_qs, "old b"},
                 {u"s/c"_qs, "third", T0 + 100}});
        f.compare();
        f.ui.onYield = [&] {
            if (f.engine.progress.lastPercent() >= 10)
                f.engine.CancelFlag = true;
        };
        QVERIFY(Synchronize(f.engine, 0));
        QCOMPARE(f.tree.read(u"d/a"_qs), QByteArray("first"));
        QCOMPARE(f.tree.read(u"d/b"_qs), QByteArray("old b"));
        QVERIFY(!f.tree.exists(u"d/c"_qs));
        QCOMPARE(f.temporaries(), QStringList());
        QVERIFY(!f.engine.progress.isVisible());
        QCOMPARE(f.ui.shown.size(), 1); // the cancelled copy is reported like any failure
        QVERIFY(f.ui.shown[0].text.startsWith(QString::fromLocal8Bit(std::strerror(ECANCELED))));
        QVERIFY(f.logLines().last().contains(u"\tEnd\t"));
    }

    // A single selected file, unmarked and identical, whose receiving directory is missing: it is
    // copied all the same, and the directory comes first.
    void missingReceivingRootIsCreated()
    {
        Fixture f;
        f.tree.file(u"s/f"_qs, "x", T0);
        f.tree.setMode(u"s"_qs, 0750);
        f.tree.dir(u"d"_qs);
        const int row = f.compare({u"f"_qs})[0];
        QVERIFY(::rmdir(f.tree.nativePath("d").constData()) == 0);
        f.engine.CompareResults[size_t(row)].State = Identical;
        f.engine.CompareResults[size_t(row)].Marked = false;
        CopySelected(f.engine, 0, row);
        QCOMPARE(f.tree.read(u"d/f"_qs), QByteArray("x"));
        QCOMPARE(f.tree.mode(u"d"_qs), 0750u);
    }

    // Failures are logged with the system's text and the walk goes on with the next file. A
    // read-only target is made writable before the copy and then takes the source's mode; when the
    // copy fails it keeps its content and every other permission bit.
    void faultsAreLoggedAndTheRunGoesOn()
    {
        Fixture f;
        f.files({{u"s/a"_qs, "new", T0 + 100},
                 {u"s/b"_qs, "new", T0 + 100},
                 {u"s/c"_qs, "new", T0 + 100},
                 {u"d/a"_qs, "old a"},
                 {u"d/b"_qs, "old b"},
                 {u"d/c"_qs, "old c"}});
        f.tree.setMode(u"s/c"_qs, 0604);
        f.tree.setMode(u"d/b"_qs, 0454);
        f.tree.setMode(u"d/c"_qs, 0454);
        f.compare();
        f.engine.sync.Dest = false;
        f.ops.failWriteAt = 1;
        f.ops.renameErrno = EACCES;
        f.ops.onlyPathsWith = "b";
        Synchronize(f.engine, 0);
        QCOMPARE(f.tree.read(u"d/a"_qs), QByteArray("old a"));
        QCOMPARE(f.tree.read(u"d/b"_qs), QByteArray("old b"));
        QCOMPARE(f.tree.read(u"d/c"_qs), QByteArray("new"));
        QCOMPARE(f.tree.mode(u"d/b"_qs), 0654u);
        QCOMPARE(f.tree.mode(u"d/c"_qs), 0604u);
        QCOMPARE(f.engine.syncStats.failures, 2);
        QCOMPARE(f.temporaries(), QStringList());
        const QStringList log = f.logLines();
        QCOMPARE(log.size(), 4);
        const auto errorLine = [&](int code, const QString &name) {
            return u"\t\t%1\t%2\t%3\t%4"_qs.arg(code).arg(
                QString::fromLocal8Bit(std::strerror(code)), f.tree.path(u"s/" + name),
                f.tree.path(u"d/" + name));
        };
        QVERIFY2(log[1].endsWith(errorLine(ENOSPC, u"a"_qs)), qPrintable(log[1]));
        QVERIFY2(log[2].endsWith(errorLine(EACCES, u"b"_qs)), qPrintable(log[2]));
    }

    // A selected directory's walk ends at the first directory that is not deeper than it.
    void subtreeEndsAtSeparatorCount()
    {
        Fixture f;
        f.files({{u"s/a/x"_qs, "ax"},
                 {u"s/a/b/y"_qs, "aby"},
                 {u"s/c/z"_qs, "cz"},
                 {u"s/top"_qs, "top"}});
        f.tree.dir(u"d"_qs);
        const std::vector<int> r = f.compare({u"a"_qs, u"c"_qs});
        CopyEntries(f.engine, 0, r[0], 0);
        QCOMPARE(f.tree.snapshot(u"d"_qs),
                 QStringList({u"d a/"_qs, u"d a/b/"_qs, u"f a/b/y 3 %1"_qs.arg(T0),
                              u"f a/x 2 %1"_qs.arg(T0)}));
        DeleteEntries(f.engine, 0, r[1], 0);
        QCOMPARE(f.tree.snapshot(u"s"_qs),
                 QStringList({u"d a/"_qs, u"d a/b/"_qs, u"d c/"_qs, u"f a/b/y 3 %1"_qs.arg(T0),
                              u"f a/x 2 %1"_qs.arg(T0), u"f top 3 %1"_qs.arg(T0)}));
    }

    // Deleting a subtree removes only marked files; a directly selected file goes regardless, and
    // an already empty selected directory goes too. Subdirectories stay.
    void deletionKeepsUnmarkedFiles()
    {
        Fixture f;
        f.files({{u"s/dir/identical"_qs, "same"},
                 {u"d/dir/identical"_qs, "same"},
                 {u"s/dir/changed"_qs, "new", T0 + 100},
                 {u"d/dir/changed"_qs, "old"},
                 {u"s/dir/readonly"_qs, "ro"},
                 {u"s/dir/sub/deep"_qs, "deep"},
                 {u"s/single"_qs, "same"},
                 {u"d/single"_qs, "same"}});
        f.tree.setMode(u"s/dir/readonly"_qs, 0444);
        f.tree.dir(u"s/empty"_qs);
        const std::vector<int> r = f.compare({u"single"_qs, u"dir"_qs, u"empty"_qs});
        QCOMPARE(f.engine.CompareResults[size_t(r[0])].Marked, false);
        for (int row : {r[1], r[0], r[2]})
            DeleteEntries(f.engine, 0, row, 0);
        QCOMPARE(f.tree.snapshot(u"s"_qs),
                 QStringList({u"d dir/"_qs, u"d dir/sub/"_qs, u"f dir/identical 4 %1"_qs.arg(T0)}));
        QCOMPARE(f.tree.snapshot(u"d"_qs).size(), 4); // the other side is never touched
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
            f.files({{u"s/x"_qs, "x", newerInSource ? T0 + 100 : T0},
                     {u"d/x"_qs, "x"},
                     {u"s/y"_qs, "y"},
                     {u"d/y"_qs, "y", newerInDestination ? T0 + 100 : T0}});
            f.compare();
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

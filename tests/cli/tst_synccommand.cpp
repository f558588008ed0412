#include <QDate>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>
#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/clirun.h"
#include "common/temptree.h"

using namespace duomir::test;

namespace {

constexpr qint64 T0 = 1'600'000'000;
const QByteArray RawName("caf\xe9 \xff.txt"); // not UTF-8, with a blank

CliRun run(const TempTree &tree, const QStringList &args, const QString &program = {})
{
    return runCli(args, tree.path(u"home"_qs), program);
}

CliRun sync(const TempTree &tree, const QStringList &extra, const QString &program = {})
{
    return run(tree,
               QStringList{u"sync"_qs, u"--source"_qs, tree.path(u"s"_qs), u"--destination"_qs,
                           tree.path(u"d"_qs)} +
                   extra,
               program);
}

// Everything but links (whose snapshot line shows the resolved target, different per side).
QStringList withoutLinks(const QStringList &snapshot)
{
    QStringList out;
    for (const QString &line : snapshot)
        if (!line.startsWith(u"l "))
            out << line;
    return out;
}

// The files of both sides, as "s/name" and "d/name".
QStringList sideFiles(const TempTree &tree)
{
    QStringList out;
    for (const QString &side : {u"s"_qs, u"d"_qs})
        for (const QString &line : tree.snapshot(side))
            if (line.startsWith(u"f "))
                out << side + u'/' + line.section(u' ', 1, 1);
    out.sort();
    return out;
}

void writeProfile(TempTree &tree, const QString &name, const QByteArray &view)
{
    tree.file(name, "[0]\n" + view + "\n[1]\nS=" + QFile::encodeName(tree.path(u"s"_qs)) +
                        "\nD=" + QFile::encodeName(tree.path(u"d"_qs)) + "\nIS=*\nIF=*\n");
}

} // namespace

class TestSyncCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // After a two-way run both trees hold the same names, contents and times; a name that is not
    // UTF-8 and a link arrive as they are; comparing again shows only identical rows.
    void twoWayRunMakesTreesEqual()
    {
        TempTree tree;
        tree.file(u"s/newer-in-s"_qs, "source wins", T0 + 100);
        tree.file(u"d/newer-in-s"_qs, "old", T0);
        tree.file(u"s/newer-in-d"_qs, "old", T0);
        tree.file(u"d/newer-in-d"_qs, "destination wins", T0 + 100);
        tree.file(u"s/with blanks  here/a b"_qs, "blanks", T0);
        tree.file(u"d/only d/deep/x"_qs, "x", T0);
        tree.symlink(u"s/link"_qs, "newer-in-s");
        tree.rawFile("s/" + RawName, "raw", T0);

        const CliRun r = sync(tree, {});
        QVERIFY2(r.code == 0, r.err.constData());
        QVERIFY2(r.out.contains("Copied 6 files") && r.out.contains("0 failures") &&
                     r.out.contains("0 entries still differ"),
                 r.out.constData());
        QCOMPARE(withoutLinks(tree.snapshot(u"d"_qs)), withoutLinks(tree.snapshot(u"s"_qs)));
        QCOMPARE(tree.read(u"s/newer-in-d"_qs), QByteArray("destination wins"));
        QCOMPARE(tree.read(u"d/with blanks  here/a b"_qs), QByteArray("blanks"));
        QVERIFY(::access(tree.nativePath("d/" + RawName).constData(), F_OK) == 0);
        char target[64] = {};
        QCOMPARE(::readlink(tree.nativePath("d/link").constData(), target, sizeof target - 1),
                 ssize_t(10));

        const CliRun again =
            run(tree, {u"compare"_qs, u"--source"_qs, tree.path(u"s"_qs), u"--destination"_qs,
                       tree.path(u"d"_qs), u"--filter"_qs, u"modified"_qs});
        QCOMPARE(again.code, 0);
        QCOMPARE(again.out.count('\n'), 1); // the header alone
        QVERIFY2(again.err.contains("0 newer in source") &&
                     again.err.contains("0 newer in destination"),
                 again.err.constData());
    }

    // Directions come from --direction or a profile's SO0/SO1; deleting needs --delete, and with
    // it the sending side loses what the receiving side lacks.
    void directions_data()
    {
        QTest::addColumn<QByteArray>("view"); // empty: an ad-hoc pair
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QStringList>("files");
        const QStringList all{u"d/only-d"_qs, u"d/only-s"_qs, u"s/only-d"_qs, u"s/only-s"_qs};
        const QStringList toD{u"d/only-d"_qs, u"d/only-s"_qs, u"s/only-s"_qs};
        const QStringList toS{u"d/only-d"_qs, u"s/only-d"_qs, u"s/only-s"_qs};
        QTest::newRow("profile: both") << QByteArray("SO0=1\nSO1=1") << QStringList() << all;
        QTest::newRow("profile: to destination")
            << QByteArray("SO0=1\nSO1=0") << QStringList() << toD;
        QTest::newRow("profile: to source") << QByteArray("SO0=0\nSO1=1") << QStringList() << toS;
        // The guard would hold back deleting the source's one file (100 % of it): these rows
        // raise its limit, the guard's own rows are in exitCodes.
        const QStringList unguarded{u"--max-delete"_qs, u"100"_qs};
        QTest::newRow("profile: delete")
            << QByteArray("SO0=1\nSO1=0\nSO3=1") << unguarded << QStringList{u"d/only-d"_qs};
        QTest::newRow("profile: delete, --no-delete")
            << QByteArray("SO0=1\nSO1=0\nSO3=1") << unguarded + QStringList{u"--no-delete"_qs}
            << toD;
        QTest::newRow("profile: --delete")
            << QByteArray("SO0=1\nSO1=0\nSO3=1") << unguarded + QStringList{u"--delete"_qs}
            << QStringList{u"d/only-d"_qs};
        QTest::newRow("to source")
            << QByteArray() << QStringList{u"--direction"_qs, u"to-source"_qs} << toS;
        QTest::newRow("to destination, --delete")
            << QByteArray()
            << unguarded + QStringList{u"--direction"_qs, u"to-destination"_qs, u"--delete"_qs}
            << QStringList{u"d/only-d"_qs};
        QTest::newRow("to source, --delete")
            << QByteArray()
            << unguarded + QStringList{u"--direction"_qs, u"to-source"_qs, u"--delete"_qs}
            << QStringList{u"s/only-s"_qs};
    }
    void directions()
    {
        QFETCH(QByteArray, view);
        QFETCH(QStringList, args);
        QFETCH(QStringList, files);
        TempTree tree;
        tree.file(u"s/only-s"_qs, "s", T0);
        tree.file(u"d/only-d"_qs, "d", T0);
        CliRun r;
        if (view.isEmpty()) {
            r = sync(tree, args);
        } else {
            writeProfile(tree, u"p.dyp"_qs, view);
            r = run(tree, QStringList{u"sync"_qs, tree.path(u"p.dyp"_qs)} + args);
        }
        QVERIFY2(r.code == 0, r.err.constData());
        QCOMPARE(sideFiles(tree), files);
    }

    // The day's log: date and time, an empty column, then the fields, TAB-separated, CR LF; a
    // FIFO fails with a clear text and the other file still arrives. LogToFile=1 in the settings
    // beside the program does the same as --log; without either nothing is written.
    void logFile_data()
    {
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<bool>("logOption");
        QTest::addColumn<bool>("logged");
        QTest::newRow("--log") << QByteArray() << true << true;
        QTest::newRow("LogToFile=1") << QByteArray("[General]\r\nLogToFile=1\r\n") << false << true;
        QTest::newRow("LogToFile=0")
            << QByteArray("[General]\r\nLogToFile=0\r\n") << false << false;
    }
    void logFile()
    {
        QFETCH(QByteArray, settings);
        QFETCH(bool, logOption);
        QFETCH(bool, logged);
        TempTree tree;
        tree.file(u"s/y"_qs, "y", T0);
        tree.dir(u"d"_qs);
        QVERIFY(::mkfifo(tree.nativePath("s/x").constData(), 0644) == 0);
        // A copy of the program in a folder of its own reads the Duomir.ini beside it.
        tree.dir(u"prog"_qs);
        const QString program = tree.path(u"prog/duomir-cli"_qs);
        QVERIFY(QFile::copy(qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli", program));
        tree.file(u"prog/Duomir.ini"_qs, settings);

        QStringList args{u"--system-files"_qs};
        if (logOption)
            args << u"--log"_qs;
        const CliRun r = sync(tree, args, program);
        QCOMPARE(r.code, 1);
        QCOMPARE(tree.read(u"d/y"_qs), QByteArray("y"));
        QVERIFY2(r.err.contains(tree.nativePath("s/x")) && r.err.contains("FIFO"),
                 r.err.constData());
        QVERIFY(r.out.contains("1 failures"));

        const QString log = QString::fromUtf8(tree.read(
            u"home/data/Duomir/"_qs + QDate::currentDate().toString(u"yyyyMMdd"_qs) + u".log"));
        if (!logged) {
            QCOMPARE(log, QString());
            return;
        }
        const QStringList lines = log.split(u"\r\n"_qs);
        QCOMPARE(lines.size(), 4); // Start, the failure, End, and nothing after the last CR LF
        QCOMPARE(lines.last(), QString());
        QVERIFY(!log.contains(QRegularExpression(u"[^\r]\n"_qs)));
        const QString stamp = u"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\t\t"_qs;
        const QString s = QRegularExpression::escape(tree.path(u"s"_qs));
        const QString d = QRegularExpression::escape(tree.path(u"d"_qs));
        const QStringList expected{
            stamp + u"Start\t\t"_qs + s + u'\t' + d,
            stamp + u"65537\tNot a regular file: sockets, FIFOs and devices are not copied\t"_qs +
                s + u"/x\t"_qs + d + u"/x",
            stamp + u"End\t\t"_qs + s + u'\t' + d,
        };
        for (int i = 0; i < 3; ++i)
            QVERIFY2(QRegularExpression(u'^' + expected[i] + u'$').match(lines[i]).hasMatch(),
                     qPrintable(lines[i]));
    }

    void exitCodes_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("says");
        const QStringList pair{u"--source"_qs, u"@s"_qs, u"--destination"_qs, u"@d"_qs};
        QTest::newRow("delete with both directions")
            << pair + QStringList{u"--delete"_qs} << 2 << QByteArray("exactly one direction");
        QTest::newRow("delete with a profile's both directions")
            << QStringList{u"@p.dyp"_qs, u"--delete"_qs} << 2
            << QByteArray("exactly one direction");
        QTest::newRow("unknown direction")
            << pair + QStringList{u"--direction"_qs, u"up"_qs} << 2 << QByteArray("'up'");
        QTest::newRow("unknown option")
            << pair + QStringList{u"--force"_qs} << 2 << QByteArray("--force");
        QTest::newRow("profile and pair")
            << QStringList{u"@p.dyp"_qs} + pair << 2 << QByteArray("either");
        QTest::newRow("missing profile")
            << QStringList{u"@none.dyp"_qs} << 2 << QByteArray("profile");
        QTest::newRow("missing source")
            << QStringList{u"--source"_qs, u"@nope"_qs, u"--destination"_qs, u"@d"_qs} << 3
            << QByteArray("nope does not exist\n");
        QTest::newRow("missing destination")
            << QStringList{u"--source"_qs, u"@s"_qs, u"--destination"_qs, u"@nope"_qs} << 3
            << QByteArray("nope does not exist (give --create-destination");
        QTest::newRow("a profile that takes nothing")
            << QStringList{u"@noinclude.dyp"_qs} << 0
            << QByteArray("empty include mask for files (IF) nor subdirectories (IS)");
        QTest::newRow("a typo in an option") << QStringList{u"--dest"_qs, u"backup"_qs} << 2
                                             << QByteArray("unknown option '--dest'");
        QTest::newRow("missing destination, dry run") << QStringList{u"--source"_qs,
                                                                     u"@s"_qs,
                                                                     u"--destination"_qs,
                                                                     u"@nope"_qs,
                                                                     u"--create-destination"_qs,
                                                                     u"-n"_qs}
                                                      << 3 << QByteArray("does not exist");
        // An unplugged stick leaves an empty mount point: deleting from the source everything
        // it "lacks" is held back; the run says so with a status of its own.
        QTest::newRow("delete towards an empty destination")
            << QStringList{u"--source"_qs, u"@s"_qs,          u"--destination"_qs,
                           u"@empty"_qs,   u"--direction"_qs, u"to-destination"_qs,
                           u"--delete"_qs}
            << 4 << QByteArray("held back");
        QTest::newRow("delete of most of the source")
            << QStringList{u"--source"_qs, u"@s"_qs,          u"--destination"_qs,
                           u"@d"_qs,       u"--direction"_qs, u"to-destination"_qs,
                           u"--delete"_qs}
            << 4 << QByteArray("held back");
        QTest::newRow("profile without a direction")
            << QStringList{u"@none-chosen.dyp"_qs} << 1 << QByteArray("no direction chosen");
        QTest::newRow("destination inside the source through a link")
            << QStringList{u"--source"_qs, u"@s"_qs, u"--destination"_qs, u"@link"_qs} << 2
            << QByteArray("--allow-nested");
        QTest::newRow("a relative root in a profile")
            << QStringList{u"@relative.dyp"_qs} << 3 << QByteArray("could not be listed");
        QTest::newRow("destination inside the source")
            << QStringList{u"--source"_qs, u"@s"_qs, u"--destination"_qs, u"@s/sub"_qs} << 2
            << QByteArray("--allow-nested");
        QTest::newRow("unknown versioning")
            << pair + QStringList{u"--versioning"_qs, u"bin"_qs} << 2 << QByteArray("'bin'");
        QTest::newRow("dry run") << pair + QStringList{u"--dry-run"_qs} << 0 << QByteArray();
        QTest::newRow("nothing to do") << QStringList{u"--source"_qs, u"@d"_qs, u"--destination"_qs,
                                                      u"@d"_qs, u"--allow-nested"_qs}
                                       << 0 << QByteArray();
    }
    void exitCodes()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QFETCH(QByteArray, says);
        TempTree tree;
        tree.file(u"s/f"_qs, "x", T0);
        tree.file(u"s/sub/g"_qs, "y", T0);
        tree.file(u"d/old"_qs, "z", T0);
        writeProfile(tree, u"p.dyp"_qs, "SO0=1\nSO1=1");
        writeProfile(tree, u"none-chosen.dyp"_qs, {});
        tree.dir(u"empty"_qs);
        tree.symlink(u"link"_qs, QFile::encodeName(tree.path(u"s/sub"_qs)));
        tree.file(u"noinclude.dyp"_qs,
                  "[0]\nSO0=1\nSO1=1\n[1]\nS=" + QFile::encodeName(tree.path(u"s"_qs)) +
                      "\nD=" + QFile::encodeName(tree.path(u"d"_qs)) + "\n");
        tree.file(u"relative.dyp"_qs, "[0]\nSO0=1\n[1]\nS=s\nD=" +
                                          QFile::encodeName(tree.path(u"d"_qs)) + "\nIS=*\nIF=*\n");
        for (QString &a : args)
            if (a.startsWith(u'@'))
                a = tree.path(a.mid(1));
        const QStringList before =
            tree.snapshot(u"s"_qs) + tree.snapshot(u"d"_qs) + tree.snapshot(u"empty"_qs);
        const CliRun r = run(tree, QStringList{u"sync"_qs} + args);
        QCOMPARE(r.code, code);
        QVERIFY2(r.err.contains(says), r.err.constData());
        QCOMPARE(tree.snapshot(u"s"_qs) + tree.snapshot(u"d"_qs) + tree.snapshot(u"empty"_qs),
                 before);
        if (args.contains(u"--dry-run"_qs))
            QVERIFY2(r.out.contains(QByteArray("copy " + tree.nativePath("s/f"))) &&
                         r.out.contains(QByteArray("create " + tree.nativePath("d/sub"))),
                     r.out.constData());
    }

    // -v lists each change as it is made, in the dry run's lines: what the dry run promised is
    // what the run then says it did.
    void verboseListsWhatTheDryRunPromised()
    {
        TempTree tree;
        tree.file(u"s/new"_qs, "n", T0);
        tree.file(u"s/sub/newer"_qs, "newer", T0 + 100);
        tree.file(u"d/sub/newer"_qs, "older", T0);
        tree.file(u"d/gone"_qs, "g", T0);
        const QStringList args{
            u"--direction"_qs, u"to-destination"_qs, u"--mirror"_qs, u"--max-delete"_qs,
            u"100"_qs,         u"--versioning"_qs,   u"none"_qs};
        const CliRun dry = sync(tree, args + QStringList{u"-n"_qs});
        const CliRun done = sync(tree, args + QStringList{u"-v"_qs});
        QCOMPARE(done.code, 0);
        const auto changes = [](const QByteArray &out) {
            QList<QByteArray> lines;
            for (const QByteArray &line : out.split('\n'))
                if (line.startsWith("copy ") || line.startsWith("replace ") ||
                    line.startsWith("delete "))
                    lines << QByteArray(line).replace("replace ", "copy ");
            std::sort(lines.begin(), lines.end());
            return lines;
        };
        QCOMPARE(changes(done.out), changes(dry.out));
        QCOMPARE(changes(done.out).size(), 3);
        QVERIFY(done.out.contains(QByteArray("replace " + tree.nativePath("s/sub/newer"))));
    }

    // A live progress line on a terminal (here a pseudo-terminal through script(1)), none in a
    // pipe unless asked for, none with --quiet; it is cleared before the summary.
    void progressLine_data()
    {
        QTest::addColumn<bool>("terminal");
        QTest::addColumn<QStringList>("extra");
        QTest::addColumn<bool>("shown");
        QTest::newRow("terminal") << true << QStringList() << true;
        QTest::newRow("terminal, --quiet") << true << QStringList{u"--quiet"_qs} << false;
        QTest::newRow("pipe") << false << QStringList() << false;
        QTest::newRow("pipe, --progress") << false << QStringList{u"--progress"_qs} << true;
    }
    void progressLine()
    {
        QFETCH(bool, terminal);
        QFETCH(QStringList, extra);
        QFETCH(bool, shown);
        TempTree tree;
        tree.file(u"s/a"_qs, QByteArray(300000, 'a'), T0);
        tree.file(u"s/b"_qs, "b", T0);
        QStringList args{u"sync"_qs,          u"--source"_qs,     tree.path(u"s"_qs),
                         u"--destination"_qs, tree.path(u"d"_qs), u"--mkdir"_qs};
        args += extra;
        QByteArray err;
        if (terminal) {
            if (QStandardPaths::findExecutable(u"script"_qs).isEmpty())
                QSKIP("script(1) is not here");
            QProcess p;
            p.setProcessEnvironment(environmentIn(tree.path(u"home"_qs)));
            const QString cli = qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli";
            p.start(u"script"_qs, {u"-qec"_qs, cli + u' ' + args.join(u' '), u"/dev/null"_qs});
            QVERIFY(p.waitForFinished(60000));
            err = p.readAllStandardOutput(); // the terminal carries both streams
        } else {
            err = run(tree, args).err;
        }
        QCOMPARE(tree.read(u"d/b"_qs), QByteArray("b"));
        QCOMPARE(err.contains("\r\033[K"), shown);
        if (shown)
            QVERIFY2(err.contains(" files  ") && err.contains(" %") &&
                         err.contains("listed 2 entries in the source"),
                     err.constData());
    }

    // A first backup into a folder that does not exist yet: --create-destination makes it (one
    // level, like mkdir), and says so; a missing parent is not made.
    void createDestination_data()
    {
        QTest::addColumn<QString>("destination");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("says");
        QTest::newRow("parent exists") << u"new"_qs << 0 << QByteArray("created the destination");
        QTest::newRow("parent missing") << u"no/new"_qs << 3 << QByteArray("cannot be created");
    }
    void createDestination()
    {
        QFETCH(QString, destination);
        QFETCH(int, code);
        QFETCH(QByteArray, says);
        TempTree tree;
        tree.file(u"s/f"_qs, "x", T0);
        const CliRun r = run(tree, {u"sync"_qs, u"--source"_qs, tree.path(u"s"_qs),
                                    u"--destination"_qs, tree.path(destination), u"--mkdir"_qs});
        QCOMPARE(r.code, code);
        QVERIFY2(r.err.contains(says), r.err.constData());
        QCOMPARE(tree.read(destination + u"/f"_qs), code == 0 ? QByteArray("x") : QByteArray());
        QCOMPARE(tree.exists(u"no"_qs), false);
    }

    // A replaced file is kept where --versioning (or else the setting, the Trash by default)
    // says; the versions folder is never compared, so it is not copied across either.
    void versioning_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("keptIn"); // a glob below the test's tree; empty: nowhere
        QTest::newRow("default: the Trash") << QStringList() << u"home/data/Trash/files/f"_qs;
        QTest::newRow("none") << QStringList{u"--versioning"_qs, u"none"_qs} << QString();
        QTest::newRow("folder") << QStringList{u"--versioning"_qs, u"folder"_qs}
                                << u"d/Duomir Versions/*/f"_qs;
        QTest::newRow("folder=DIR")
            << QStringList{u"--versioning"_qs, u"folder=.old/runs"_qs} << u"d/.old/runs/*/f"_qs;
    }
    void versioning()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, keptIn);
        TempTree tree;
        tree.file(u"s/f"_qs, "new", T0 + 100);
        tree.file(u"d/f"_qs, "old", T0);
        const CliRun r = sync(tree, args);
        QVERIFY2(r.code == 0, r.err.constData());
        QCOMPARE(tree.read(u"d/f"_qs), QByteArray("new"));
        QStringList kept;
        QDirIterator it(tree.root(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next().mid(tree.root().size() + 1);
            if (path != u"s/f" && path != u"d/f" && !path.startsWith(u"home/data/duomir") &&
                !path.endsWith(u".trashinfo"))
                kept << path;
        }
        if (keptIn.isEmpty()) {
            QCOMPARE(kept, QStringList());
        } else {
            QCOMPARE(kept.size(), 1);
            QVERIFY2(QRegularExpression::fromWildcard(keptIn).match(kept.value(0)).hasMatch(),
                     qPrintable(kept.value(0)));
            QCOMPARE(tree.read(kept.value(0)), QByteArray("old"));
            QVERIFY(!tree.exists(u"s/"_qs + kept.value(0).mid(2)));
        }
    }

    // Ctrl-C in the middle of a large copy: the copy stops, the old target stays whole, no
    // temporary file is left, and the run says it was interrupted.
    void interruptKeepsOldTarget()
    {
        TempTree tree;
        tree.file(u"d/big"_qs, "the old content", T0);
        tree.file(u"s/big"_qs, {}, T0 + 100);
        // Allocated, not sparse: a file of holes would be copied at once.
        {
            const int fd = ::open(tree.nativePath("s/big").constData(), O_WRONLY);
            QVERIFY(fd >= 0);
            const int allocated = ::posix_fallocate(fd, 0, qint64(1) << 30);
            ::close(fd);
            QCOMPARE(allocated, 0);
        }
        tree.setMtime(u"s/big"_qs, T0 + 100);

        const auto p = startCli({u"sync"_qs, u"--source"_qs, tree.path(u"s"_qs),
                                 u"--destination"_qs, tree.path(u"d"_qs)},
                                tree.path(u"home"_qs));
        QVERIFY(p->waitForStarted());
        const QDir d(tree.path(u"d"_qs));
        bool copying = false;
        while (!copying && p->state() == QProcess::Running) {
            copying = !d.entryList({u".big.duomir-*"_qs}, QDir::Files | QDir::Hidden).isEmpty();
            if (!copying)
                p->waitForFinished(1); // also notices a run that has ended
        }
        if (!copying)
            QSKIP("the copy ended before it could be interrupted");
        ::kill(pid_t(p->processId()), SIGINT);
        QVERIFY(p->waitForFinished(60000));
        const QByteArray out = p->readAllStandardOutput();
        QCOMPARE(p->exitStatus(), QProcess::NormalExit);
        QCOMPARE(p->exitCode(), 1);
        QVERIFY2(out.contains("interrupted"), out.constData());
        QCOMPARE(tree.read(u"d/big"_qs), QByteArray("the old content"));
        QCOMPARE(d.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"big"_qs});
    }
};

QTEST_GUILESS_MAIN(TestSyncCommand)
#include "tst_synccommand.moc"

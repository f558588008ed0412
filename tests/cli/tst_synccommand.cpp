#include <QDate>
#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/clitree.h"

using namespace duomir::test;

namespace {

constexpr qint64 T0 = 1'600'000'000;

CliRun sync(const TempTree &tree, const QString &extra, const QString &program = {})
{
    return run(tree, u"sync --source @s --destination @d "_qs + extra, program);
}

// The files of both sides, as "d/name" and "s/name".
QStringList sideFiles(const TempTree &tree)
{
    QStringList out;
    for (const QString &line : tree.snapshot().filter(QRegularExpression(u"^f [ds]/"_qs)))
        out << line.section(u' ', 1, 1);
    return out;
}

} // namespace

class TestSyncCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // After a two-way run both trees hold the same names, contents and times; a name that is not
    // UTF-8 and a link arrive as they are; -v lists each change as the dry run does.
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
        tree.rawFile("s/caf\xe9 \xff.txt", "raw", T0); // not UTF-8, with a blank

        const CliRun r = sync(tree, u"-v"_qs); // each change listed as it is made
        QVERIFY(r.out.contains(QByteArray("replace " + tree.nativePath("d/newer-in-d"))));
        QVERIFY2(r.code == 0 && r.out.contains("Copied 6 files") && r.out.contains("0 failures") &&
                     r.out.contains("0 entries still differ"),
                 r.out.constData());
        // Links aside (their snapshot shows the target each side resolves to), the sides match.
        const QRegularExpression noLink(u"^[^l]"_qs);
        QCOMPARE(tree.snapshot(u"d"_qs).filter(noLink), tree.snapshot(u"s"_qs).filter(noLink));
        QCOMPARE(tree.read(u"s/newer-in-d"_qs), QByteArray("destination wins"));
        char target[64] = {}; // the link as it was, relative
        ::readlink(tree.nativePath("d/link").constData(), target, sizeof target - 1);
        QCOMPARE(QByteArray(target), QByteArray("newer-in-s"));
    }

    // Directions come from --direction or a profile's SO0/SO1; deleting needs --delete, and with
    // it the sending side loses what the receiving side lacks.
    void directions_data()
    {
        QTest::addColumn<QByteArray>("view"); // empty: an ad-hoc pair
        QTest::addColumn<QString>("args");
        QTest::addColumn<QString>("files"); // what is there afterwards, blank-separated
        const auto row = [](const char *tag, const char *view, const char *args, const char *f) {
            QTest::newRow(tag) << QByteArray(view) << QString::fromUtf8(args)
                               << QString::fromUtf8(f);
        };
        const char *all = "d/only-d d/only-s s/only-d s/only-s";
        const char *toD = "d/only-d d/only-s s/only-s";
        const char *toS = "d/only-d s/only-d s/only-s";
        // The guard would hold back deleting the source's one file (100 % of it): these rows
        // raise its limit, the guard's own rows are in exitCodes.
        const char *deletes = "SO0=1\nSO1=0\nSO3=1";
        row("profile: both", "SO0=1\nSO1=1", "", all);
        row("profile: to destination", "SO0=1\nSO1=0", "", toD);
        row("profile: to source", "SO0=0\nSO1=1", "", toS);
        row("profile: delete", deletes, "--max-delete 100", "d/only-d");
        row("profile: delete, --no-delete", deletes, "--max-delete 100 --no-delete", toD);
        row("to source", "", "--direction to-source", toS);
        row("to destination, --mirror", "", "--max-delete 100 --direction to-destination --mirror",
            "d/only-s s/only-s");
        row("to destination, --delete", "", "--max-delete 100 --direction to-destination --delete",
            "d/only-d");
        row("to source, --delete", "", "--max-delete 100 --direction to-source --delete",
            "s/only-s");
    }
    void directions()
    {
        QFETCH(QByteArray, view);
        QFETCH(QString, args);
        QFETCH(QString, files);
        TempTree tree;
        tree.file(u"s/only-s"_qs, "s", T0);
        tree.file(u"d/only-d"_qs, "d", T0);
        writeProfile(tree, u"p.dyp"_qs, view);
        const CliRun r = view.isEmpty() ? sync(tree, args) : run(tree, u"sync @p.dyp "_qs + args);
        QVERIFY2(r.code == 0, r.err.constData());
        QCOMPARE(sideFiles(tree), files.split(u' '));
    }

    // The day's log: date and time, an empty column, then the fields, TAB-separated, CR LF; a
    // FIFO fails with a clear text and the other file still arrives. LogToFile=1 in the settings
    // beside the program does the same as --log; without either nothing is written.
    void logFile_data()
    {
        QTest::addColumn<QByteArray>("settings"); // empty: none, and --log given
        QTest::addColumn<bool>("logged");
        QTest::newRow("--log") << QByteArray() << true;
        QTest::newRow("LogToFile=1") << QByteArray("[General]\r\nLogToFile=1\r\n") << true;
        QTest::newRow("LogToFile=0") << QByteArray("[General]\r\nLogToFile=0\r\n") << false;
    }
    void logFile()
    {
        QFETCH(QByteArray, settings);
        QFETCH(bool, logged);
        TempTree tree;
        tree.file(u"s/y"_qs, "y", T0);
        tree.dir(u"d"_qs);
        QVERIFY(::mkfifo(tree.nativePath("s/x").constData(), 0644) == 0);
        // A copy of the program in a folder of its own reads the Duomir.ini beside it.
        tree.file(u"prog/Duomir.ini"_qs, settings);
        const QString program = tree.path(u"prog/duomir-cli"_qs);
        QVERIFY(QFile::copy(qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli", program));

        const CliRun r = sync(
            tree, settings.isEmpty() ? u"--system-files --log"_qs : u"--system-files"_qs, program);
        QCOMPARE(r.code, 1);
        QCOMPARE(tree.read(u"d/y"_qs), QByteArray("y"));
        QVERIFY2(r.err.contains(tree.nativePath("s/x")) && r.err.contains("FIFO") &&
                     r.out.contains("1 failures"),
                 r.err.constData());

        const QByteArray log = tree.read(u"home/data/Duomir/"_qs +
                                         QDate::currentDate().toString(u"yyyyMMdd"_qs) + u".log");
        // The lines' format is the error log's own test; here: Start, the failure and End.
        const QByteArray failure =
            "\t65537\tNot a regular file: sockets, FIFOs and devices are not copied\t" +
            tree.nativePath("s/x") + '\t' + tree.nativePath("d/x") + "\r\n";
        QVERIFY2(logged ? log.count("\r\n") == 3 && log.count('\n') == 3 && log.contains(failure) &&
                              log.contains("\tStart\t") && log.endsWith("\r\n") &&
                              log.contains("\tEnd\t")
                        : log.isEmpty(),
                 log.constData());
    }

    // Arguments as for run(). Whatever the outcome, neither side is changed.
    void exitCodes_data()
    {
        QTest::addColumn<QString>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("says");
        const auto row = [](const char *tag, const char *args, int code, const char *says = "") {
            QTest::newRow(tag) << QString::fromUtf8(args) << code << QByteArray(says);
        };
        const char *oneDirection = "exactly one direction";
        row("delete with both directions", "--source @s --destination @d --delete", 2,
            oneDirection);
        row("delete with a profile's both directions", "@p.dyp --delete", 2, oneDirection);
        row("unknown direction", "--source @s --destination @d --direction up", 2, "'up'");
        row("profile and pair", "@p.dyp --source @s --destination @d", 2, "either");
        row("missing profile", "@none.dyp", 2, "profile");
        row("missing source", "--source @nope --destination @d", 3, "nope does not exist\n");
        row("missing destination", "--source @s --destination @nope", 3,
            "nope does not exist (give --create-destination");
        row("a profile that takes nothing", "@noinclude.dyp", 0,
            "empty include mask for files (IF) nor subdirectories (IS)");
        row("a typo in an option", "--dest backup", 2, "unknown option '--dest'");
        row("missing destination, dry run",
            "--source @s --destination @nope --create-destination -n", 3, "does not exist");
        // A first backup into a folder that does not exist yet: --mkdir makes it (one level,
        // like mkdir) and says so; a missing parent is not made.
        row("new destination", "--source @s --mkdir --destination @new", 0,
            "created the destination");
        row("new destination, parent missing", "--source @s --mkdir --destination @no/new", 3,
            "cannot be created");
        // An unplugged stick leaves an empty mount point: deleting from the source everything
        // it "lacks" is held back; the run says so with a status of its own.
        row("delete towards an empty destination",
            "--source @s --destination @empty --direction to-destination --delete", 4,
            "Löschen zurückgehalten");
        row("profile without a direction", "@none-chosen.dyp", 1, "no direction chosen");
        row("destination inside the source through a link", "--source @s --destination @link", 2,
            "--allow-nested");
        row("a relative root in a profile", "@relative.dyp", 3, "could not be listed");
        row("unknown versioning", "--source @s --destination @d --versioning bin", 2, "'bin'");
        row("dry run", "--source @s --destination @d --dry-run", 0);
        row("nothing to do", "--source @d --destination @d --allow-nested", 0);
    }
    void exitCodes()
    {
        QFETCH(QString, args);
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
        writeProfile(tree, u"noinclude.dyp"_qs, "SO0=1\nSO1=1", {});
        tree.file(u"relative.dyp"_qs, "[0]\nSO0=1\n[1]\nS=s\nD=" +
                                          QFile::encodeName(tree.path(u"d"_qs)) + "\nIS=*\nIF=*\n");
        // The person chose German: what comes from the language file (the guard's message) is
        // German, the command line's own texts are not.
        tree.file(u"home/config/Duomir/Duomir.ini"_qs, "[General]\nLanguage=Deutsch\n");
        const auto sides = [&] {
            return tree.snapshot(u"s"_qs) + tree.snapshot(u"d"_qs) + tree.snapshot(u"empty"_qs);
        };
        const QStringList before = sides();
        const CliRun r = run(tree, u"sync "_qs + args);
        QCOMPARE(r.code, code);
        QVERIFY2(r.err.contains(says), r.err.constData());
        QCOMPARE(sides(), before);
        QCOMPARE(tree.read(u"new/f"_qs),
                 QByteArray(code == 0 && args.contains(u"@new") ? "x" : ""));
        QVERIFY(!tree.exists(u"no"_qs));
        if (args.contains(u"--dry-run"_qs))
            QVERIFY2(r.out.contains(QByteArray("copy " + tree.nativePath("s/f"))) &&
                         r.out.contains(QByteArray("create " + tree.nativePath("d/sub"))),
                     r.out.constData());
    }

    // A live progress line on a terminal (here a pseudo-terminal through script(1)), none in a
    // pipe unless asked for, none with --quiet; it is cleared before the summary.
    void progressLine_data()
    {
        QTest::addColumn<bool>("terminal");
        QTest::addColumn<QString>("extra");
        QTest::addColumn<bool>("shown");
        QTest::newRow("terminal") << true << QString() << true;
        QTest::newRow("terminal, --quiet") << true << u"--quiet"_qs << false;
        QTest::newRow("pipe") << false << QString() << false;
        QTest::newRow("pipe, --progress") << false << u"--progress"_qs << true;
    }
    void progressLine()
    {
        QFETCH(bool, terminal);
        QFETCH(QString, extra);
        QFETCH(bool, shown);
        TempTree tree;
        tree.file(u"s/a"_qs, QByteArray(300000, 'a'), T0);
        tree.file(u"s/b"_qs, "b", T0);
        if (terminal && QStandardPaths::findExecutable(u"script"_qs).isEmpty())
            QSKIP("script(1) is not here");
        const QString args = u"--mkdir "_qs + extra;
        const QString script = u"%1/duomir-cli sync --source %2 --destination %3 "_qs.arg(
            qEnvironmentVariable("DUOMIR_BIN_DIR"), tree.path(u"s"_qs), tree.path(u"d"_qs));
        // The terminal carries both streams.
        const QByteArray err = terminal ? runCli({u"-qec"_qs, script + args, u"/dev/null"_qs},
                                                 tree.path(u"home"_qs), u"script"_qs)
                                              .out
                                        : sync(tree, args).err;
        QCOMPARE(tree.read(u"d/b"_qs), QByteArray("b"));
        QCOMPARE(err.contains("\r\033[K"), shown);
        if (shown)
            QVERIFY2(err.contains(" files  ") && err.contains(" %") &&
                         err.contains("listed 2 entries in the source"),
                     err.constData());
    }

    // A replaced file is kept where --versioning (or else the setting, the Trash by default)
    // says.
    void versioning_data()
    {
        QTest::addColumn<QString>("args");
        QTest::addColumn<QString>("keptIn"); // a glob below the test's tree; empty: nowhere
        QTest::newRow("default: the Trash") << QString() << u"home/data/Trash/files/f"_qs;
        QTest::newRow("none") << u"--versioning none"_qs << QString();
        QTest::newRow("folder") << u"--versioning folder"_qs << u"d/Duomir Versions/*/f"_qs;
        QTest::newRow("folder=DIR") << u"--versioning folder=.old/runs"_qs << u"d/.old/runs/*/f"_qs;
    }
    void versioning()
    {
        QFETCH(QString, args);
        QFETCH(QString, keptIn);
        TempTree tree;
        tree.file(u"s/f"_qs, "new", T0 + 100);
        tree.file(u"d/f"_qs, "old", T0);
        const CliRun r = sync(tree, args);
        QVERIFY2(r.code == 0, r.err.constData());
        QCOMPARE(tree.read(u"d/f"_qs), QByteArray("new"));
        // Every file but the pair's own and the Trash's notes: where the old one went. The
        // versions folder is never compared, so it is not copied across either.
        const QStringList kept =
            tree.snapshot().filter(QRegularExpression(u"^f (?!s/f |d/f |.*\\.trashinfo )"_qs));
        QCOMPARE(kept.size(), keptIn.isEmpty() ? 0 : 1);
        if (!keptIn.isEmpty()) {
            const QString path = kept.first().section(u' ', 1, -3);
            QVERIFY2(QRegularExpression::fromWildcard(keptIn).match(path).hasMatch(),
                     qPrintable(path));
            QCOMPARE(tree.read(path), QByteArray("old"));
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
        const int fd = ::open(tree.nativePath("s/big").constData(), O_WRONLY);
        QCOMPARE(::posix_fallocate(fd, 0, qint64(1) << 30), 0);
        ::close(fd);
        tree.setMtime(u"s/big"_qs, T0 + 100);

        const auto p = startCli({u"sync"_qs, u"--source"_qs, tree.path(u"s"_qs),
                                 u"--destination"_qs, tree.path(u"d"_qs)},
                                tree.path(u"home"_qs));
        QVERIFY(p->waitForStarted());
        const QDir d(tree.path(u"d"_qs));
        bool copying = false;
        while (!copying && p->state() == QProcess::Running) {
            copying = !d.entryList({u".duomir-*.tmp"_qs}, QDir::Files | QDir::Hidden).isEmpty();
            if (!copying)
                p->waitForFinished(1); // also notices a run that has ended
        }
        if (!copying)
            QSKIP("the copy ended before it could be interrupted");
        ::kill(pid_t(p->processId()), SIGINT);
        QVERIFY(p->waitForFinished(60000));
        QCOMPARE(p->exitStatus(), QProcess::NormalExit);
        QCOMPARE(p->exitCode(), 1);
        QVERIFY(p->readAllStandardOutput().contains("interrupted"));
        QCOMPARE(tree.read(u"d/big"_qs), QByteArray("the old content"));
        QCOMPARE(d.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"big"_qs});
    }
};

QTEST_GUILESS_MAIN(TestSyncCommand)
#include "tst_synccommand.moc"

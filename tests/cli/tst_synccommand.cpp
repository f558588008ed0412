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

// The files of both sides and of the Trash, as "d/name", "s/name" and "home/data/Trash/files/name",
// a run's versions folder as "*".
QStringList sideFiles(const TempTree &tree)
{
    QStringList out;
    for (const QString &line :
         tree.snapshot().filter(QRegularExpression(u"^f ([ds]|home/data/Trash/files)/"_qs)))
        out << line.section(u' ', 1, -3)
                   .replace(QRegularExpression(u"/\\d{4}-\\d\\d-\\d\\d \\d{6}/"_qs), u"/*/"_qs);
    return out;
}

} // namespace

class TestSyncCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // After a two-way run both trees hold the same names, sizes and times, a name that is not
    // UTF-8 among them; -v lists each change as the dry run does.
    void twoWayRunMakesTreesEqual()
    {
        TempTree tree;
        tree.file(u"s/newer-in-s"_qs, "source wins", T0 + 100);
        tree.file(u"d/newer-in-s"_qs, "old", T0);
        tree.file(u"s/newer-in-d"_qs, "old", T0);
        tree.file(u"d/newer-in-d"_qs, "destination wins", T0 + 100);
        tree.file(u"s/with blanks  here/a b"_qs, "blanks", T0);
        tree.file(u"d/only d/deep/x"_qs, "x", T0);
        tree.rawFile("s/caf\xe9 \xff.txt", "raw", T0); // not UTF-8, with a blank

        const CliRun r = sync(tree, u"-v"_qs); // each change listed as it is made
        QVERIFY(r.out.contains(QByteArray("replace " + tree.nativePath("d/newer-in-d"))));
        QVERIFY2(r.code == 0 && r.out.contains("Copied 5 files") && r.out.contains("0 failures") &&
                     r.out.contains("0 entries still differ"),
                 r.out.constData());
        QCOMPARE(tree.snapshot(u"d"_qs), tree.snapshot(u"s"_qs));
    }

    // Directions come from --direction or a profile's SO0/SO1; deleting needs --delete, and with
    // it the sending side loses what the receiving side lacks, to where --versioning says.
    void directions_data()
    {
        QTest::addColumn<QByteArray>("view"); // empty: an ad-hoc pair
        QTest::addColumn<QString>("args");
        QTest::addColumn<QString>("files"); // what is there afterwards, ", " between two
        const auto row = [](const char *tag, const char *view, const QByteArray &args,
                            const char *f) {
            QTest::newRow(tag) << QByteArray(view) << QString::fromUtf8(args)
                               << QString::fromUtf8(f);
        };
        const char *toD = "d/only-d, d/only-s, s/only-s";
        // The guard would hold back deleting a side's one file (100 % of it): these rows raise
        // its limit, the guard's own rows are in exitCodes.
        const char *deletes = "SO0=1\nSO1=0\nSO3=1";
        const char *trashed = "d/only-d, home/data/Trash/files/only-s";
        row("profile: to destination", "SO0=1\nSO1=0", "", toD);
        row("profile: delete", deletes, "--max-delete 100", trashed);
        row("profile: delete, --no-delete", deletes, "--max-delete 100 --no-delete", toD);
        row("to destination, --mirror", "", "--max-delete 100 --direction to-destination --mirror",
            "d/only-s, home/data/Trash/files/only-d, s/only-s");
        row("to source, --delete", "", "--max-delete 100 --direction to-source --delete",
            "home/data/Trash/files/only-d, s/only-s");
        // Where the deleted file goes.
        const QByteArray deleting = "--max-delete 100 --direction to-destination --delete ";
        row("--versioning trash", "", deleting + "--versioning trash", trashed);
        row("--versioning none", "", deleting + "--versioning none", "d/only-d");
        row("--versioning folder", "", deleting + "--versioning folder",
            "d/only-d, s/Duomir Versions/*/only-s");
        row("--versioning folder=DIR", "", deleting + "--versioning folder=.old/runs",
            "d/only-d, s/.old/runs/*/only-s");
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
        QCOMPARE(sideFiles(tree), files.split(u", "_qs));
    }

    // A FIFO fails with a clear text and a failure status. The day's log is written
    // with --log or LogToFile=1 in the settings beside the program; without either it is not.
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
        // One failure is one line: nobody is asked, so no message box's text comes on top.
        QVERIFY2(r.err.count("duomir-cli: ") == 1 && r.err.contains(tree.nativePath("s/x")) &&
                     r.err.contains("FIFO") && r.out.contains("1 failures"),
                 r.err.constData());

        const QByteArray log = tree.read(u"home/data/Duomir/"_qs +
                                         QDate::currentDate().toString(u"yyyyMMdd"_qs) + u".log");
        // The lines' format is the error log's own test; here: Start, the failure and End.
        QVERIFY2(log.count("\r\n") == (logged ? 3 : 0) &&
                     (!logged || log.contains(tree.nativePath("d/x"))),
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
        QCOMPARE(p->exitCode(), 1);
        QVERIFY(p->readAllStandardOutput().contains("interrupted"));
        QCOMPARE(tree.read(u"d/big"_qs), QByteArray("the old content"));
        QCOMPARE(d.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"big"_qs});
    }
};

QTEST_GUILESS_MAIN(TestSyncCommand)
#include "tst_synccommand.moc"

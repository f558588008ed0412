#include <QDate>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QThread>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/temptree.h"

using duomir::test::TempTree;

namespace {

constexpr qint64 T0 = 1'600'000'000;
const QByteArray RawName("caf\xe9 \xff.txt"); // not UTF-8, with a blank

struct Run
{
    int code = -1;
    QString out;
    QString err;
};

// The program runs with its settings and data inside the test's tree; `program` may be a copy of
// the executable in a folder of its own, whose Duomir.ini then holds the settings.
class Cli
{
public:
    explicit Cli(const TempTree &tree, QString program = {})
        : m_tree(tree),
          m_program(program.isEmpty() ? qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli"
                                      : program)
    {}

    QProcess *start(const QStringList &args)
    {
        auto *p = new QProcess;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"HOME"_qs, m_tree.path(u"home"_qs));
        env.insert(u"XDG_CONFIG_HOME"_qs, m_tree.path(u"home/config"_qs));
        env.insert(u"XDG_DATA_HOME"_qs, m_tree.path(u"home/data"_qs));
        p->setProcessEnvironment(env);
        p->start(m_program, args);
        return p;
    }
    Run run(const QStringList &args)
    {
        std::unique_ptr<QProcess> p(start(args));
        if (!p->waitForFinished(60000))
            return {};
        return {p->exitCode(), QString::fromUtf8(p->readAllStandardOutput()),
                QString::fromUtf8(p->readAllStandardError())};
    }
    Run sync(const QStringList &extra)
    {
        return run(QStringList{u"sync"_qs, u"--source"_qs, m_tree.path(u"s"_qs),
                               u"--destination"_qs, m_tree.path(u"d"_qs)} +
                   extra);
    }
    QString logText() const
    {
        const QString file = m_tree.path(u"home/data/Duomir/"_qs) +
                             QDate::currentDate().toString(u"yyyyMMdd"_qs) + u".log";
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }

private:
    const TempTree &m_tree;
    QString m_program;
};

QByteArray native(const TempTree &tree, const QString &relative)
{
    return QFile::encodeName(tree.path(relative));
}

bool rawExists(const TempTree &tree, const QString &dir, const QByteArray &name)
{
    struct stat st;
    const QByteArray path = native(tree, dir) + '/' + name;
    return ::lstat(path.constData(), &st) == 0;
}

void writeRaw(const TempTree &tree, const QString &dir, const QByteArray &name,
              const QByteArray &content, qint64 mtime)
{
    const QByteArray path = native(tree, dir) + '/' + name;
    const int fd = ::open(path.constData(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    QVERIFY(fd >= 0);
    QCOMPARE(::write(fd, content.constData(), size_t(content.size())), ssize_t(content.size()));
    ::close(fd);
    const struct timespec times[2] = {{mtime, 0}, {mtime, 0}};
    QCOMPARE(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
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

void writeProfile(const TempTree &tree, const QString &name, const QByteArray &view)
{
    QFile f(tree.path(name));
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("[0]\n" + view + "\n[1]\nS=" + native(tree, u"s"_qs) + "\nD=" + native(tree, u"d"_qs) +
            "\nIS=*\nIF=*\n");
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
        writeRaw(tree, u"s"_qs, RawName, "raw", T0);

        Cli cli(tree);
        const Run r = cli.sync({});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        QVERIFY2(r.out.contains(u"Copied 6 files") && r.out.contains(u"0 failures") &&
                     r.out.contains(u"0 entries still differ"),
                 qPrintable(r.out));
        QCOMPARE(withoutLinks(tree.snapshot(u"d"_qs)), withoutLinks(tree.snapshot(u"s"_qs)));
        QCOMPARE(tree.read(u"s/newer-in-d"_qs), QByteArray("destination wins"));
        QCOMPARE(tree.read(u"d/with blanks  here/a b"_qs), QByteArray("blanks"));
        QVERIFY(rawExists(tree, u"d"_qs, RawName));
        QCOMPARE(QFile::symLinkTarget(tree.path(u"d/link"_qs)), tree.path(u"d/newer-in-s"_qs));
        char target[64] = {};
        QCOMPARE(::readlink(native(tree, u"d/link"_qs).constData(), target, sizeof target - 1),
                 ssize_t(10));

        const Run again =
            cli.run({u"compare"_qs, u"--source"_qs, tree.path(u"s"_qs), u"--destination"_qs,
                     tree.path(u"d"_qs), u"--filter"_qs, u"modified"_qs});
        QCOMPARE(again.code, 0);
        QCOMPARE(again.out.count(u'\n'), 1); // the header alone
        QVERIFY2(again.err.contains(u"0 newer in source") &&
                     again.err.contains(u"0 newer in destination"),
                 qPrintable(again.err));
    }

    // One direction with --delete: the sending side loses exactly the files that the receiving
    // side lacks; files on both sides go the sending way only when newer there; the receiving
    // side's own files and everything else stay.
    void oneDirectionWithDelete_data()
    {
        QTest::addColumn<QString>("direction");
        QTest::addColumn<QString>("sending");
        QTest::addColumn<QString>("receiving");
        QTest::newRow("to destination") << u"to-destination"_qs << u"s"_qs << u"d"_qs;
        QTest::newRow("to source") << u"to-source"_qs << u"d"_qs << u"s"_qs;
    }
    void oneDirectionWithDelete()
    {
        QFETCH(QString, direction);
        QFETCH(QString, sending);
        QFETCH(QString, receiving);
        TempTree tree;
        tree.file(sending + u"/newer-here"_qs, "new", T0 + 100);
        tree.file(receiving + u"/newer-here"_qs, "old", T0);
        tree.file(sending + u"/older-here"_qs, "old", T0);
        tree.file(receiving + u"/older-here"_qs, "new", T0 + 100);
        tree.file(sending + u"/only-sending"_qs, "goes", T0);
        tree.file(sending + u"/sub/only-sending"_qs, "goes too", T0);
        tree.file(receiving + u"/only-receiving"_qs, "stays", T0);
        tree.file(receiving + u"/sub/same"_qs, "same", T0);
        tree.file(sending + u"/sub/same"_qs, "same", T0);
        const QStringList receivingBefore = tree.snapshot(receiving);

        const Run r = Cli(tree).sync({u"--direction"_qs, direction, u"--delete"_qs});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        QVERIFY2(r.out.contains(u"Copied 1 files") && r.out.contains(u"deleted 2 files"),
                 qPrintable(r.out));
        QCOMPARE(tree.snapshot(sending),
                 (QStringList{u"d sub/"_qs, u"f newer-here 3 %1"_qs.arg(T0 + 100),
                              u"f older-here 3 %1"_qs.arg(T0), u"f sub/same 4 %1"_qs.arg(T0)}));
        QStringList receivingAfter = receivingBefore;
        receivingAfter.replaceInStrings(u"f newer-here 3 %1"_qs.arg(T0),
                                        u"f newer-here 3 %1"_qs.arg(T0 + 100));
        QCOMPARE(tree.snapshot(receiving), receivingAfter);
        QCOMPARE(tree.read(receiving + u"/newer-here"_qs), QByteArray("new"));
    }

    // A profile run takes its directions from SO0/SO1; its delete option needs --delete.
    void profileDirections_data()
    {
        QTest::addColumn<QByteArray>("view");
        QTest::addColumn<bool>("toDestination");
        QTest::addColumn<bool>("toSource");
        QTest::newRow("both") << QByteArray("SO0=1\nSO1=1") << true << true;
        QTest::newRow("source to destination") << QByteArray("SO0=1\nSO1=0") << true << false;
        QTest::newRow("destination to source") << QByteArray("SO0=0\nSO1=1") << false << true;
        QTest::newRow("none") << QByteArray("SO0=0\nSO1=0") << false << false;
        QTest::newRow("delete without --delete")
            << QByteArray("SO0=1\nSO1=0\nSO3=1") << true << false;
    }
    void profileDirections()
    {
        QFETCH(QByteArray, view);
        QFETCH(bool, toDestination);
        QFETCH(bool, toSource);
        TempTree tree;
        tree.file(u"s/only-s"_qs, "s", T0);
        tree.file(u"d/only-d"_qs, "d", T0);
        writeProfile(tree, u"p.dyp"_qs, view);
        const Run r = Cli(tree).run({u"sync"_qs, tree.path(u"p.dyp"_qs)});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        QCOMPARE(tree.exists(u"d/only-s"_qs), toDestination);
        QCOMPARE(tree.exists(u"s/only-d"_qs), toSource);
        QVERIFY(tree.exists(u"s/only-s"_qs) && tree.exists(u"d/only-d"_qs));
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
        QVERIFY(::mkfifo(native(tree, u"s/x"_qs).constData(), 0644) == 0);
        // A copy of the program in a folder of its own reads the Duomir.ini beside it.
        tree.dir(u"prog"_qs);
        const QString program = tree.path(u"prog/duomir-cli"_qs);
        QVERIFY(QFile::copy(qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli", program));
        tree.file(u"prog/Duomir.ini"_qs, settings);

        Cli cli(tree, program);
        QStringList args{u"--system-files"_qs};
        if (logOption)
            args << u"--log"_qs;
        const Run r = cli.sync(args);
        QCOMPARE(r.code, 1);
        QCOMPARE(tree.read(u"d/y"_qs), QByteArray("y"));
        QVERIFY2(r.err.contains(tree.path(u"s/x"_qs)) && r.err.contains(u"FIFO"),
                 qPrintable(r.err));
        QVERIFY(r.out.contains(u"1 failures"));

        const QString log = cli.logText();
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
        QTest::addColumn<QString>("says");
        const QString src = u"@s"_qs;
        const QString dst = u"@d"_qs;
        const QStringList pair{u"--source"_qs, src, u"--destination"_qs, dst};
        QTest::newRow("delete with both directions")
            << pair + QStringList{u"--delete"_qs} << 2 << u"exactly one direction"_qs;
        QTest::newRow("delete with a profile's both directions")
            << QStringList{u"@p.dyp"_qs, u"--delete"_qs} << 2 << u"exactly one direction"_qs;
        QTest::newRow("unknown direction")
            << pair + QStringList{u"--direction"_qs, u"up"_qs} << 2 << u"'up'"_qs;
        QTest::newRow("unknown option") << pair + QStringList{u"--force"_qs} << 2 << u"--force"_qs;
        QTest::newRow("profile and pair") << QStringList{u"@p.dyp"_qs} + pair << 2 << u"either"_qs;
        QTest::newRow("missing profile") << QStringList{u"@none.dyp"_qs} << 2 << u"profile"_qs;
        QTest::newRow("missing source")
            << QStringList{u"--source"_qs, u"@nope"_qs, u"--destination"_qs, dst} << 3
            << u"left out"_qs;
        QTest::newRow("missing destination")
            << QStringList{u"--source"_qs, src, u"--destination"_qs, u"@nope"_qs} << 3
            << u"cannot"_qs;
        QTest::newRow("dry run") << pair + QStringList{u"--dry-run"_qs} << 0 << QString();
        QTest::newRow("nothing to do")
            << QStringList{u"--source"_qs, dst, u"--destination"_qs, dst} << 0 << QString();
    }
    void exitCodes()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QFETCH(QString, says);
        TempTree tree;
        tree.file(u"s/f"_qs, "x", T0);
        tree.file(u"s/sub/g"_qs, "y", T0);
        tree.file(u"d/old"_qs, "z", T0);
        writeProfile(tree, u"p.dyp"_qs, "SO0=1\nSO1=1");
        for (QString &a : args)
            if (a.startsWith(u'@'))
                a = tree.path(a.mid(1));
        const QStringList before = tree.snapshot(u"s"_qs) + tree.snapshot(u"d"_qs);
        const Run r = Cli(tree).run(QStringList{u"sync"_qs} + args);
        QCOMPARE(r.code, code);
        QVERIFY2(r.err.contains(says), qPrintable(r.err));
        QCOMPARE(tree.snapshot(u"s"_qs) + tree.snapshot(u"d"_qs), before);
        if (args.contains(u"--dry-run"_qs))
            QVERIFY2(r.out.contains(u"copy " + tree.path(u"s/f"_qs)) &&
                         r.out.contains(u"create " + tree.path(u"d/sub"_qs)),
                     qPrintable(r.out));
    }

    // Ctrl-C in the middle of a large copy: the copy stops, the old target stays whole, no
    // temporary file is left, and the run says it was interrupted.
    void interruptKeepsOldTarget()
    {
        TempTree tree;
        tree.file(u"d/big"_qs, "the old content", T0);
        tree.file(u"s/big"_qs, {}, T0 + 100);
        QVERIFY(::truncate(native(tree, u"s/big"_qs).constData(), qint64(1) << 30) == 0);
        tree.setMtime(u"s/big"_qs, T0 + 100);

        Cli cli(tree);
        std::unique_ptr<QProcess> p(cli.start({u"sync"_qs, u"--source"_qs, tree.path(u"s"_qs),
                                               u"--destination"_qs, tree.path(u"d"_qs)}));
        QVERIFY(p->waitForStarted());
        const QDir d(tree.path(u"d"_qs));
        bool copying = false;
        while (!copying && p->state() == QProcess::Running) {
            copying = !d.entryList({u".big.duomir-*"_qs}, QDir::Files | QDir::Hidden).isEmpty();
            if (!copying)
                QThread::yieldCurrentThread();
        }
        if (!copying)
            QSKIP("the copy ended before it could be interrupted");
        ::kill(pid_t(p->processId()), SIGINT);
        QVERIFY(p->waitForFinished(60000));
        const QString out = QString::fromUtf8(p->readAllStandardOutput());
        QCOMPARE(p->exitStatus(), QProcess::NormalExit);
        QCOMPARE(p->exitCode(), 1);
        QVERIFY2(out.contains(u"interrupted"), qPrintable(out));
        QCOMPARE(tree.read(u"d/big"_qs), QByteArray("the old content"));
        QCOMPARE(d.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"big"_qs});
    }
};

QTEST_GUILESS_MAIN(TestSyncCommand)
#include "tst_synccommand.moc"

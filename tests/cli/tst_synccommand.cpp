#include <QFile>
#include <QProcess>
#include <QTest>
#include <sys/stat.h>

#include "common/temptree.h"

using duomir::test::TempTree;

class TestSyncCommand : public QObject
{
    Q_OBJECT

private:
    struct Run
    {
        int code;
        QString out;
        QString err;
    };
    static Run run(const QStringList &args)
    {
        QProcess p;
        p.start(qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli",
                QStringList{QStringLiteral("sync")} + args);
        p.waitForFinished(60000);
        return {p.exitCode(), QString::fromUtf8(p.readAllStandardOutput()),
                QString::fromUtf8(p.readAllStandardError())};
    }

private Q_SLOTS:
    void exitCodes_data()
    {
        QTest::addColumn<QStringList>("extra");
        QTest::addColumn<bool>("missingSource");
        QTest::addColumn<int>("code");
        QTest::newRow("delete with both directions")
            << QStringList{QStringLiteral("--delete")} << false << 2;
        QTest::newRow("unknown direction")
            << QStringList{QStringLiteral("--direction"), QStringLiteral("up")} << false << 2;
        QTest::newRow("missing root") << QStringList{} << true << 3;
        QTest::newRow("dry run") << QStringList{QStringLiteral("--dry-run")} << false << 0;
    }
    void exitCodes()
    {
        QFETCH(QStringList, extra);
        QFETCH(bool, missingSource);
        QFETCH(int, code);
        TempTree tree;
        tree.file(QStringLiteral("s/f"), "x");
        tree.dir(QStringLiteral("d"));
        const QStringList before = tree.snapshot();
        const Run r =
            run(QStringList{QStringLiteral("--source"),
                            tree.path(missingSource ? QStringLiteral("nope") : QStringLiteral("s")),
                            QStringLiteral("--destination"), tree.path(QStringLiteral("d"))} +
                extra);
        QCOMPARE(r.code, code);
        QCOMPARE(tree.snapshot(), before);
    }

    // One direction with delete, then a failure that the run reports and survives.
    void oneWayWithDeleteAndAFailure()
    {
        TempTree tree;
        tree.file(QStringLiteral("s/keep"), "new", 1'600'000'100);
        tree.file(QStringLiteral("d/keep"), "old", 1'600'000'000);
        tree.file(QStringLiteral("s/gone"), "only in source", 1'600'000'000);
        tree.file(QStringLiteral("d/only-d"), "d", 1'600'000'000);
        Run r = run({QStringLiteral("--source"), tree.path(QStringLiteral("s")),
                     QStringLiteral("--destination"), tree.path(QStringLiteral("d")),
                     QStringLiteral("--direction"), QStringLiteral("to-destination"),
                     QStringLiteral("--delete")});
        QCOMPARE(r.code, 0);
        QVERIFY(!tree.exists(QStringLiteral("s/gone")));
        QCOMPARE(tree.read(QStringLiteral("d/keep")), QByteArray("new"));
        QVERIFY(!tree.exists(QStringLiteral("s/only-d")));
        QVERIFY(r.out.contains(u"Copied 1 files"));

        // A FIFO is never opened: the copy fails with a clear text, the other file still goes.
        tree.dir(QStringLiteral("s/sub"));
        QVERIFY(::mkfifo(QFile::encodeName(tree.path(QStringLiteral("s/sub/x"))).constData(),
                         0644) == 0);
        tree.file(QStringLiteral("s/sub/y"), "y");
        r = run({QStringLiteral("--source"), tree.path(QStringLiteral("s")),
                 QStringLiteral("--destination"), tree.path(QStringLiteral("d")),
                 QStringLiteral("--system-files")});
        QCOMPARE(tree.read(QStringLiteral("d/sub/y")), QByteArray("y"));
        QCOMPARE(r.code, 1);
        QVERIFY2(r.err.contains(tree.path(QStringLiteral("d/sub/x"))) && r.err.contains(u"FIFO"),
                 qPrintable(r.err));
        QVERIFY(r.out.contains(u"1 failures"));
    }
};

QTEST_GUILESS_MAIN(TestSyncCommand)
#include "tst_synccommand.moc"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>
#include <sys/stat.h>

#include "common/clirun.h"
#include "common/temptree.h"

using namespace duomir::test;

// The real program, started the way a launcher or cron starts it, with no display and a home of
// its own: whatever is wrong, it ends by itself within seconds, with the exit status a script can
// act on, its messages on standard error and in the log, and nothing else there.
class TestAutoRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void automaticRunEndsByItself_data()
    {
        QTest::addColumn<QString>("trouble");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("logged"); // empty: no log expected
        QTest::newRow("one file fails") << u"fifo"_qs << 1 << QByteArray("pipe");
        QTest::newRow("profile missing")
            << u"no profile"_qs << 2 << QByteArray("could not be loaded");
        QTest::newRow("destination unplugged")
            << u"no destination"_qs << 3 << QByteArray("destination directory cannot be read");
        QTest::newRow("first start, no settings") << u"first start"_qs << 0 << QByteArray();
    }

    void automaticRunEndsByItself()
    {
        QFETCH(QString, trouble);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, logged);
        TempTree t;
        t.file(u"src/a.txt"_qs, "alpha", 1700000000);
        t.file(u"src/sub/b.txt"_qs, "bravo", 1700000000);
        t.dir(u"dst"_qs);
        // A named pipe cannot be copied: the one failure of the run, which goes to the log.
        if (trouble == u"fifo")
            QCOMPARE(::mkfifo(QFile::encodeName(t.path(u"src/pipe"_qs)).constData(), 0600), 0);

        // An installed layout of its own: bin/duomir and share/duomir/*.lang, so that the settings
        // file lands beside the copy and the build tree stays untouched.
        const QString shareDir = qEnvironmentVariable("DUOMIR_SHARE_DIR");
        t.dir(u"inst/bin"_qs);
        t.dir(u"inst/share/duomir"_qs);
        QVERIFY(QFile::copy(qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir"_qs,
                            t.path(u"inst/bin/duomir"_qs)));
        for (const QString &lang : QDir(shareDir).entryList({u"*.lang"_qs}))
            QVERIFY(QFile::copy(shareDir + u'/' + lang, t.path(u"inst/share/duomir/"_qs + lang)));
        if (trouble != u"first start")
            t.file(u"inst/bin/Duomir.ini"_qs,
                   "[General]\nLanguage=English\nLogToFile=1\nDontShowHint=1\n");

        const QString destination = t.path(trouble == u"no destination" ? u"stick"_qs : u"dst"_qs);
        if (trouble != u"no profile")
            t.file(u"profiles/my list.dyp"_qs,
                   "[0]\nSO0=1\nSO1=0\n[1]\nS=" + QFile::encodeName(t.path(u"src"_qs)) +
                       "\nD=" + QFile::encodeName(destination) + "\nIS=*\nIF=*\n");

        // What cron gives a program: no display, no runtime folder.
        QProcessEnvironment env = environmentIn(t.path(u"home"_qs));
        for (const char *name :
             {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "XDG_RUNTIME_DIR"})
            env.remove(QLatin1StringView(name));

        QProcess duomir;
        duomir.setProcessEnvironment(env);
        duomir.start(t.path(u"inst/bin/duomir"_qs), {t.path(u"profiles/my list.dyp"_qs),
                                                     u"-auto"_qs, u"-dontask"_qs, u"-hide"_qs});
        QVERIFY2(duomir.waitForFinished(20000),
                 "the automatic run did not start, or did not end by itself");
        const QByteArray err = duomir.readAllStandardError();
        QVERIFY2(duomir.exitStatus() == QProcess::NormalExit && duomir.exitCode() == exitCode,
                 err.constData());
        // Only the program's own lines: no toolkit warning for cron to mail.
        for (const QByteArray &line : err.split('\n'))
            QVERIFY2(line.isEmpty() || line.startsWith("duomir: "), line.constData());

        if (exitCode <= 1) {
            QCOMPARE(t.read(u"dst/a.txt"_qs), QByteArray("alpha"));
            QCOMPARE(t.read(u"dst/sub/b.txt"_qs), QByteArray("bravo"));
            QCOMPARE(t.mtime(u"dst/a.txt"_qs), 1700000000);
        }
        if (logged.isEmpty())
            return;
        QVERIFY2(err.contains(logged), err.constData());
        QVERIFY(t.read(u"home/data/Duomir/"_qs + QDate::currentDate().toString(u"yyyyMMdd"_qs) +
                       u".log"_qs)
                    .contains(logged));
    }
};

QTEST_GUILESS_MAIN(TestAutoRun)
#include "tst_autorun.moc"

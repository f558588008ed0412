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
// its own: it must synchronize, log its failures and end by itself.
class TestAutoRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void automaticRunSynchronizesLogsAndExits();
};

void TestAutoRun::automaticRunSynchronizesLogsAndExits()
{
    TempTree t;
    t.file(u"src/a.txt"_qs, "alpha", 1700000000);
    t.file(u"src/sub/b.txt"_qs, "bravo", 1700000000);
    t.dir(u"dst"_qs);
    // A named pipe cannot be copied: the one failure of the run, which goes to the log.
    QCOMPARE(::mkfifo(QFile::encodeName(t.path(u"src/pipe"_qs)).constData(), 0600), 0);

    // An installed layout of its own: bin/duomir and share/duomir/*.lang, so that the settings file
    // lands beside the copy and the build tree stays untouched.
    const QString binDir = qEnvironmentVariable("DUOMIR_BIN_DIR");
    const QString shareDir = qEnvironmentVariable("DUOMIR_SHARE_DIR");
    t.dir(u"inst/bin"_qs);
    t.dir(u"inst/share/duomir"_qs);
    QVERIFY(QFile::copy(binDir + u"/duomir"_qs, t.path(u"inst/bin/duomir"_qs)));
    QVERIFY(QFile::setPermissions(t.path(u"inst/bin/duomir"_qs),
                                  QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    for (const QString &lang : QDir(shareDir).entryList({u"*.lang"_qs}))
        QVERIFY(QFile::copy(shareDir + u'/' + lang, t.path(u"inst/share/duomir/"_qs + lang)));
    t.file(u"inst/bin/Duomir.ini"_qs, "[General]\nLanguage=English\nLogToFile=1\nDontShowHint=1\n");

    t.file(u"profiles/my list.dyp"_qs,
           "[0]\nSO0=1\nSO1=0\n[1]\nS=" + QFile::encodeName(t.path(u"src"_qs)) +
               "\nD=" + QFile::encodeName(t.path(u"dst"_qs)) + "\nIS=*\nIF=*\n");

    QProcessEnvironment env = environmentIn(t.path(u"home"_qs));
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        env.remove(QString::fromLatin1(name));

    QProcess duomir;
    duomir.setProcessEnvironment(env);
    duomir.start(t.path(u"inst/bin/duomir"_qs),
                 {t.path(u"profiles/my list.dyp"_qs), u"-auto"_qs, u"-dontask"_qs, u"-hide"_qs});
    QVERIFY(duomir.waitForStarted());
    if (!duomir.waitForFinished(60000)) {
        duomir.kill();
        QFAIL("the automatic run did not end by itself");
    }
    QCOMPARE(duomir.exitStatus(), QProcess::NormalExit);
    QCOMPARE(duomir.exitCode(), 0);

    QCOMPARE(t.read(u"dst/a.txt"_qs), QByteArray("alpha"));
    QCOMPARE(t.read(u"dst/sub/b.txt"_qs), QByteArray("bravo"));
    QCOMPARE(t.mtime(u"dst/a.txt"_qs), 1700000000);

    const QString log = t.path(u"home/data/Duomir/"_qs) +
                        QDate::currentDate().toString(u"yyyyMMdd"_qs) + u".log"_qs;
    QFile logFile(log);
    QVERIFY2(logFile.open(QIODevice::ReadOnly), qPrintable(log));
    QVERIFY(logFile.readAll().contains("pipe"));
}

QTEST_GUILESS_MAIN(TestAutoRun)
#include "tst_autorun.moc"

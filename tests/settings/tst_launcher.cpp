#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "settings/launcher.h"

using namespace duomir;

namespace {

// The reading side of the desktop-entry format, written from the format's rules rather than from
// the writer: undo the string escapes of a value, then split Exec into arguments.
QString unescapeValue(const QString &value)
{
    QString out;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != u'\\' || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const QChar next = value[++i];
        if (next == u's')
            out += u' ';
        else if (next == u'n')
            out += u'\n';
        else if (next == u't')
            out += u'\t';
        else if (next == u'r')
            out += u'\r';
        else
            out += next;
    }
    return out;
}

QStringList splitExec(const QString &exec)
{
    QStringList args;
    QString cur;
    bool quoted = false, inArg = false;
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const QChar c = exec[i];
        if (quoted) {
            if (c == u'\\' && i + 1 < exec.size()) {
                cur += exec[++i];
            } else if (c == u'"') {
                quoted = false;
            } else {
                cur += c;
            }
        } else if (c == u'"') {
            quoted = inArg = true;
        } else if (c == u' ') {
            if (inArg)
                args.append(cur);
            cur.clear();
            inArg = false;
        } else if (c == u'%' && i + 1 < exec.size() && exec[i + 1] == u'%') {
            cur += u'%';
            ++i;
            inArg = true;
        } else {
            cur += c;
            inArg = true;
        }
    }
    if (inArg)
        args.append(cur);
    return args;
}

QString valueOf(const QString &entry, const QString &key)
{
    for (const QString &line : entry.split(u'\n')) {
        if (line.startsWith(key + u'='))
            return line.mid(key.size() + 1);
    }
    return {};
}

} // namespace

class TestLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arguments_data();
    void arguments();
    void execRoundTrip_data();
    void execRoundTrip();
    void entryForAutomaticRun();
    void writesExecutableFile();
    void refusesWhatCannotBeWritten();
};

void TestLauncher::arguments_data()
{
    QTest::addColumn<QString>("profile");
    QTest::addColumn<bool>("autoRun");
    QTest::addColumn<bool>("dontAsk");
    QTest::addColumn<bool>("hide");
    QTest::addColumn<QString>("expected");

    QTest::newRow("blanks, all switches in fixed order")
        << u"/home/a b/my list.dyp"_qs << true << true << true
        << u"\"/home/a b/my list.dyp\" -auto -dontask -hide"_qs;
    QTest::newRow("no profile, switches keep their blank")
        << QString() << false << true << true << u" -dontask -hide"_qs;
    QTest::newRow("nothing at all") << QString() << false << false << false << QString();
    QTest::newRow("profile only") << u"/p/l.dyp"_qs << false << false << false
                                  << u"\"/p/l.dyp\""_qs;
}

void TestLauncher::arguments()
{
    QFETCH(QString, profile);
    QFETCH(bool, autoRun);
    QFETCH(bool, dontAsk);
    QFETCH(bool, hide);
    QFETCH(QString, expected);
    QCOMPARE(launcherArguments(profile, autoRun, dontAsk, hide), expected);
}

void TestLauncher::execRoundTrip_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("profile");

    QTest::newRow("plain") << u"/usr/bin/duomir"_qs << u"/home/u/list.dyp"_qs;
    QTest::newRow("blanks") << u"/opt/my apps/duomir"_qs << u"/home/u/my lists/a b.dyp"_qs;
    QTest::newRow("shell characters")
        << u"/usr/bin/duomir"_qs << u"/home/u/$HOME `x` & (y);z.dyp"_qs;
    QTest::newRow("quote and backslash") << u"/usr/bin/duomir"_qs << u"/home/u/it's \\ a.dyp"_qs;
    QTest::newRow("percent is no field code") << u"/usr/bin/duomir"_qs << u"/home/u/100%f.dyp"_qs;
    QTest::newRow("non-ASCII") << u"/usr/bin/duomir"_qs << u"/home/u/Übersicht ß.dyp"_qs;
}

// Whatever the path holds, a desktop that follows the format starts exactly the program with the
// profile and the three switches as separate arguments.
void TestLauncher::execRoundTrip()
{
    QFETCH(QString, program);
    QFETCH(QString, profile);
    Launcher l;
    l.program = program;
    l.name = u"Sync"_qs;
    l.arguments = launcherArguments(profile, true, true, true);
    const QString exec = unescapeValue(valueOf(desktopEntryText(l), u"Exec"_qs));
    const QStringList expected{program, profile, u"-auto"_qs, u"-dontask"_qs, u"-hide"_qs};
    QCOMPARE(splitExec(exec), expected);
}

void TestLauncher::entryForAutomaticRun()
{
    Launcher l;
    l.program = u"/usr/bin/duomir"_qs;
    l.workingFolder = u"/usr/bin"_qs;
    l.arguments = launcherArguments(u"/home/u/my list.dyp"_qs, true, true, true);
    l.icon = u"duomir"_qs;
    l.name = u"Nightly backup"_qs;
    l.description = u" Line one\nline two"_qs;
    const QString text = desktopEntryText(l);

    QVERIFY(text.startsWith(u"[Desktop Entry]\n"_qs));
    QCOMPARE(valueOf(text, u"Type"_qs), u"Application"_qs);
    QCOMPARE(valueOf(text, u"Name"_qs), u"Nightly backup"_qs);
    QCOMPARE(valueOf(text, u"Exec"_qs),
             u"/usr/bin/duomir \"/home/u/my list.dyp\" -auto -dontask -hide"_qs);
    QCOMPARE(valueOf(text, u"Path"_qs), u"/usr/bin"_qs);
    QCOMPARE(valueOf(text, u"Icon"_qs), u"duomir"_qs);
    // A line break or leading blank in the description must not end or trim the value.
    QCOMPARE(valueOf(text, u"Comment"_qs), u"\\sLine one\\nline two"_qs);
}

void TestLauncher::writesExecutableFile()
{
    QTemporaryDir dir;
    const QString path = launcherFilePath(dir.path(), u"My sync"_qs);
    QCOMPARE(path, dir.path() + u"/My sync.desktop"_qs);
    {
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("stale content that is longer than the new file will be, by quite a lot......");
    }
    Launcher l;
    l.program = u"/usr/bin/duomir"_qs;
    l.name = u"My sync"_qs;
    QVERIFY(CreateShortcut(path, l));
    QFile f(path);
    QVERIFY(f.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(f.readAll()), desktopEntryText(l));
    QVERIFY(f.permissions() & QFileDevice::ExeOwner);
}

void TestLauncher::refusesWhatCannotBeWritten()
{
    QTemporaryDir dir;
    Launcher l;
    l.program = u"/usr/bin/duomir"_qs;
    QVERIFY(!CreateShortcut(QString(), l));
    QVERIFY(!CreateShortcut(dir.path() + u"/missing/folder/x.desktop"_qs, l));
    l.program.clear();
    QVERIFY(!CreateShortcut(dir.path() + u"/x.desktop"_qs, l));
    QVERIFY(!QFile::exists(dir.path() + u"/x.desktop"_qs));
}

QTEST_GUILESS_MAIN(TestLauncher)
#include "tst_launcher.moc"

#include <QFile>
#include <QFileInfo>
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
        const qsizetype code = QStringView(u"sntr").indexOf(next);
        out += code < 0 ? next : QStringView(u" \n\t\r")[code];
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
        if (!quoted && c == u' ') {
            if (inArg)
                args.append(cur);
            cur.clear();
            inArg = false;
            continue;
        }
        inArg = true;
        if (c == u'"')
            quoted = !quoted;
        else if (quoted && c == u'\\' && i + 1 < exec.size())
            cur += exec[++i];
        else if (!quoted && c == u'%' && exec.mid(i + 1, 1) == u"%")
            cur += exec[++i];
        else
            cur += c;
    }
    if (inArg)
        args.append(cur);
    return args;
}

QString valueOf(const QString &entry, const QString &key)
{
    // Blanks after '=' belong to the syntax, not to the value.
    for (const QString &line : entry.split(u'\n')) {
        if (line.startsWith(key + u'=')) {
            qsizetype start = key.size() + 1;
            while (start < line.size() && line[start] == u' ')
                ++start;
            return line.mid(start);
        }
    }
    return {};
}

} // namespace

class TestLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arguments_data()
    {
        QTest::addColumn<QString>("profile");
        QTest::addColumn<bool>("autoRun");
        QTest::addColumn<bool>("dontAsk");
        QTest::addColumn<bool>("hide");
        QTest::addColumn<QString>("expected");

        QTest::newRow("no profile, switches keep their blank")
            << QString() << false << true << true << u" -dontask -hide"_qs;
        QTest::newRow("nothing at all") << QString() << false << false << false << QString();
        QTest::newRow("profile only")
            << u"/p/l.dyp"_qs << false << false << false << u"\"/p/l.dyp\""_qs;
    }

    void arguments()
    {
        QFETCH(QString, profile);
        QFETCH(bool, autoRun);
        QFETCH(bool, dontAsk);
        QFETCH(bool, hide);
        QFETCH(QString, expected);
        QCOMPARE(launcherArguments(profile, autoRun, dontAsk, hide), expected);
    }

    void entryRoundTrip_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("profile");

        QTest::newRow("plain") << u"/usr/bin/duomir"_qs << u"/home/u/list.dyp"_qs;
        QTest::newRow("blanks") << u"/opt/my apps/duomir"_qs << u"/home/u/my lists/a b.dyp"_qs;
        QTest::newRow("shell characters")
            << u"/usr/bin/duomir"_qs << u"/home/u/$HOME `x` & (y);z.dyp"_qs;
        QTest::newRow("quote and backslash")
            << u"/usr/bin/duomir"_qs << u"/home/u/it's \\ a.dyp"_qs;
        QTest::newRow("percent is no field code")
            << u"/usr/bin/duomir"_qs << u"/home/u/100%f.dyp"_qs;
        QTest::newRow("non-ASCII") << u"/usr/bin/duomir"_qs << u"/home/u/Übersicht ß.dyp"_qs;
    }

    // Whatever the texts hold, a desktop that follows the format reads back exactly the program,
    // the profile and the three switches as separate arguments, and every other value unchanged.
    void entryRoundTrip()
    {
        QFETCH(QString, program);
        QFETCH(QString, profile);
        Launcher l;
        l.program = program;
        l.workingFolder = QFileInfo(program).path();
        l.arguments = launcherArguments(profile, true, true, true);
        l.icon = u"duomir"_qs;
        l.name = u"Nightly "_qs + QFileInfo(profile).fileName();
        l.description = u" Line one\nline two for "_qs + profile;
        const QString text = desktopEntryText(l);
        QVERIFY(text.startsWith(u"[Desktop Entry]\n"_qs));
        const auto value = [&](const QString &key) { return unescapeValue(valueOf(text, key)); };
        QCOMPARE(value(u"Type"_qs), u"Application"_qs);
        QCOMPARE(splitExec(value(u"Exec"_qs)),
                 QStringList({program, profile, u"-auto"_qs, u"-dontask"_qs, u"-hide"_qs}));
        QCOMPARE(value(u"Name"_qs), l.name);
        QCOMPARE(value(u"Path"_qs), l.workingFolder);
        QCOMPARE(value(u"Icon"_qs), l.icon);
        QCOMPARE(value(u"Comment"_qs), l.description);
    }

    // A stale file of the same name is replaced whole; what cannot be written leaves no file.
    void writesExecutableFileOrNothing()
    {
        QTemporaryDir dir;
        const QString path = launcherFilePath(dir.path(), u"My sync"_qs);
        QCOMPARE(path, dir.path() + u"/My sync.desktop"_qs);
        {
            QFile old(path);
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write(
                "stale content that is longer than the new file will be, by quite a lot......");
        }
        Launcher l;
        l.program = u"/usr/bin/duomir"_qs;
        l.name = u"My sync"_qs;
        QVERIFY(CreateShortcut(path, l));
        QFile f(path);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(f.readAll()), desktopEntryText(l));
        QVERIFY(f.permissions() & QFileDevice::ExeOwner);

        QVERIFY(!CreateShortcut(QString(), l));
        QVERIFY(!CreateShortcut(dir.path() + u"/missing/folder/x.desktop"_qs, l));
        l.program.clear();
        QVERIFY(!CreateShortcut(dir.path() + u"/x.desktop"_qs, l));
        QVERIFY(!QFile::exists(dir.path() + u"/x.desktop"_qs));
    }
};

QTEST_GUILESS_MAIN(TestLauncher)
#include "tst_launcher.moc"

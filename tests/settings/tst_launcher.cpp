#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

#include "common/temptree.h"
#include "settings/commandline.h"
#include "settings/launcher.h"

using namespace duomir;
using duomir::test::TempTree;

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

// The value of `key`, unescaped; blanks after '=' belong to the syntax, not to the value.
QString valueOf(const QString &entry, const QString &key)
{
    for (const QString &line : entry.split(u'\n')) {
        if (line.startsWith(key + u'='))
            return unescapeValue(line.mid(key.size() + 1).remove(QRegularExpression(u"^ +"_qs)));
    }
    return {};
}

} // namespace

class TestLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entryRoundTrip_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("profile");
        QTest::addColumn<QStringList>("switches"); // of an automatic run, as Exec must hold them

        const QString bin = u"/usr/bin/duomir"_qs;
        const QStringList all{u"-auto"_qs, u"-dontask"_qs, u"-hide"_qs};
        QTest::newRow("blanks") << u"/opt/my apps/duomir"_qs << u"/home/u/my lists/a b.dyp"_qs
                                << all;
        QTest::newRow("shell characters, quote and backslash")
            << bin << u"/home/u/$HOME `x` & (y);it's \\ z.dyp"_qs << all;
        QTest::newRow("percent is no field code") << bin << u"/home/u/100%f.dyp"_qs << all;
        QTest::newRow("non-ASCII") << bin << u"/home/u/Übersicht ß.dyp"_qs << all;
        QTest::newRow("no profile, two switches")
            << bin << QString() << QStringList{u"-dontask"_qs, u"-hide"_qs};
        QTest::newRow("profile only") << bin << u"/p/l.dyp"_qs << QStringList();
        QTest::newRow("nothing at all") << bin << QString() << QStringList();
    }

    // Whatever the texts hold, a desktop that follows the format reads back exactly the program,
    // the profile and the switches as separate arguments, and every other value unchanged.
    void entryRoundTrip()
    {
        QFETCH(QString, program);
        QFETCH(QString, profile);
        QFETCH(QStringList, switches);
        Launcher l;
        l.program = program;
        l.workingFolder = QFileInfo(program).path();
        l.arguments =
            launcherArguments(profile, switches.contains(u"-auto"), switches.contains(u"-dontask"),
                              switches.contains(u"-hide"));
        l.icon = u"duomir"_qs;
        l.name = u"Nightly "_qs + QFileInfo(profile).fileName();
        l.description = u" Line one\nline two for "_qs + profile;
        const QString text = desktopEntryText(l);
        QVERIFY(text.startsWith(u"[Desktop Entry]\n"_qs));
        QCOMPARE(valueOf(text, u"Type"_qs), u"Application"_qs);
        QCOMPARE(splitExec(valueOf(text, u"Exec"_qs)),
                 QStringList{program} + (profile.isEmpty() ? QStringList() : QStringList{profile}) +
                     switches);
        QCOMPARE(valueOf(text, u"Name"_qs), l.name);
        QCOMPARE(valueOf(text, u"Path"_qs), l.workingFolder);
        QCOMPARE(valueOf(text, u"Icon"_qs), l.icon);
        QCOMPARE(valueOf(text, u"Comment"_qs), l.description);
    }

    // A stale file of the same name is replaced whole; what cannot be written leaves no file.
    void writesExecutableFileOrNothing()
    {
        TempTree tree;
        const QString path = launcherFilePath(tree.root(), u"My sync"_qs);
        QCOMPARE(path, tree.path(u"My sync.desktop"_qs));
        tree.file(u"My sync.desktop"_qs, "stale content, longer than the new file by quite a lot"
                                         "................................................");
        Launcher l;
        l.program = u"/usr/bin/duomir"_qs;
        l.name = u"My sync"_qs;
        QVERIFY(CreateShortcut(path, l));
        QCOMPARE(QString::fromUtf8(tree.read(u"My sync.desktop"_qs)), desktopEntryText(l));
        QVERIFY(QFile::permissions(path) & QFileDevice::ExeOwner);

        QVERIFY(!CreateShortcut(QString(), l));
        QVERIFY(!CreateShortcut(tree.path(u"missing/folder/x.desktop"_qs), l));
        l.program.clear();
        QVERIFY(!CreateShortcut(tree.path(u"x.desktop"_qs), l));
        QVERIFY(!tree.exists(u"x.desktop"_qs));
    }

    void parseCommandLine_data()
    {
        // argv as the program receives it; the flags as "dontask hide auto" in 0/1.
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("profile");
        QTest::addColumn<QString>("flags");

        QTest::newRow("shortcut run")
            << QStringList{u"/p/my list.dyp"_qs, u"-auto"_qs, u"-dontask"_qs, u"-hide"_qs}
            << u"/p/my list.dyp"_qs << u"111"_qs;
        QTest::newRow("switch in capitals")
            << QStringList{u"/p/list.dyp"_qs, u"-AUTO"_qs} << u"/p/list.dyp"_qs << u"001"_qs;
        QTest::newRow("switch only names itself")
            << QStringList{u"-hide"_qs} << u"-hide"_qs << u"010"_qs;
        QTest::newRow("switches first")
            << QStringList{u"-DontAsk"_qs, u"/p/a.dyp"_qs} << u"/p/a.dyp"_qs << u"100"_qs;
        QTest::newRow("nothing") << QStringList{} << QString() << u"000"_qs;
        QTest::newRow("empty arguments dropped")
            << QStringList{QString(), u"/p/a.dyp"_qs} << u"/p/a.dyp"_qs << u"000"_qs;
        // A switch counts only as a whole argument: a file named like one is just a file.
        QTest::newRow("switches inside names")
            << QStringList{u"/p/x-dontask-hide.dyp"_qs, u"-auto-x"_qs}
            << u"/p/x-dontask-hide.dyp"_qs << u"000"_qs;
    }

    void parseCommandLine()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, profile);
        QFETCH(QString, flags);
        const CommandLine cl = parseArguments(arguments);
        QCOMPARE(cl.ProfilePath, profile);
        QCOMPARE(cl.hasProfile(), !profile.isEmpty());
        const auto b = [](bool v) { return v ? u'1' : u'0'; };
        QCOMPARE(QString(b(cl.DontAsk)) + b(cl.Hide) + b(cl.AutoRequested), flags);
    }

    void emptyProfileFile()
    {
        TempTree tree;
        tree.file(u"empty.dyp"_qs);
        tree.file(u"full.dyp"_qs, "[Pairs]\n");
        tree.dir(u"folder.dyp"_qs);
        QVERIFY(isEmptyProfileFile(tree.path(u"empty.dyp"_qs)));
        for (const QString &other : {u"full.dyp"_qs, u"missing.dyp"_qs, u"folder.dyp"_qs})
            QVERIFY(!isEmptyProfileFile(tree.path(other)));
    }
};

QTEST_GUILESS_MAIN(TestLauncher)
#include "tst_launcher.moc"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include "common/temptree.h"
#include "settings/commandline.h"
#include "settings/launcher.h"

using namespace duomir;
using duomir::test::TempTree;

namespace {

// The reading side of the desktop-entry format, written from the format's rules rather than from
// the writer: the string escapes of a value are undone, blanks after '=' belong to the syntax.
QString valueOf(const QString &entry, const QString &key)
{
    QString value = entry.section(u'\n' + key + u'=', 1).section(u'\n', 0, 0);
    value.remove(QRegularExpression(u"^ +"_qs));
    for (qsizetype i = 0; i + 1 < value.size(); ++i) {
        if (value[i] != u'\\')
            continue;
        value.remove(i, 1); // and the loop steps over the escaped character
        if (const qsizetype code = QStringView(u"sntr").indexOf(value[i]); code >= 0)
            value[i] = QStringView(u" \n\t\r")[code];
    }
    return value;
}

// Exec's quoting is the shell's double-quote rule, so the shell splits it; "%%" is the only
// percent sign that is no field code.
QStringList splitExec(const QString &exec)
{
    if (QString(exec).remove(u"%%"_qs).contains(u'%'))
        return {u"a field code in "_qs + exec};
    QProcess sh;
    sh.start(u"/bin/sh"_qs, {u"-c"_qs, u"eval \"set -- $1\"; printf '%s\\n' \"$@\""_qs, u"sh"_qs,
                             QString(exec).replace(u"%%"_qs, u"%"_qs)});
    sh.waitForFinished();
    return QString::fromUtf8(sh.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
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
            << bin << u"/home/u/$HOME `x` & (y);it's \\ \"z\".dyp"_qs << all;
        QTest::newRow("percent is no field code") << bin << u"/home/u/100%f.dyp"_qs << all;
        QTest::newRow("non-ASCII") << bin << u"/home/u/Übersicht ß.dyp"_qs << all;
        QTest::newRow("no profile, two switches")
            << bin << QString() << QStringList{u"-dontask"_qs, u"-hide"_qs};
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

    // A stale file of the same name is replaced whole; what cannot be written leaves no file. A
    // zero-byte profile is a new list, a folder of that name is not.
    void writesExecutableFileOrNothing()
    {
        TempTree tree;
        tree.file(u"empty.dyp"_qs);
        tree.dir(u"folder.dyp"_qs);
        QVERIFY(isEmptyProfileFile(tree.path(u"empty.dyp"_qs)));
        QVERIFY(!isEmptyProfileFile(tree.path(u"folder.dyp"_qs)));
        const QString path = launcherFilePath(tree.root(), u"My sync"_qs);
        QCOMPARE(path, tree.path(u"My sync.desktop"_qs));
        tree.file(u"My sync.desktop"_qs, QByteArray(500, '.')); // longer than the new content
        Launcher l;
        l.program = u"/usr/bin/duomir"_qs;
        l.name = u"My sync"_qs;
        QVERIFY(CreateShortcut(path, l));
        QCOMPARE(QString::fromUtf8(tree.read(u"My sync.desktop"_qs)), desktopEntryText(l));
        QVERIFY(QFile::permissions(path) & QFileDevice::ExeOwner);

        QVERIFY(!CreateShortcut(tree.path(u"missing/x.desktop"_qs), l));
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

        // The start-up test runs the common ones (capitals, a profile with switches, a switch word
        // inside a file name); these are the odd ones.
        QTest::newRow("switch only names itself")
            << QStringList{u"-hide"_qs} << u"-hide"_qs << u"010"_qs;
        QTest::newRow("switches first")
            << QStringList{u"-DontAsk"_qs, u"/p/a.dyp"_qs} << u"/p/a.dyp"_qs << u"100"_qs;
        QTest::newRow("empty arguments dropped")
            << QStringList{QString(), u"/p/a.dyp"_qs, u"-auto-x"_qs} << u"/p/a.dyp"_qs << u"000"_qs;
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
};

QTEST_GUILESS_MAIN(TestLauncher)
#include "tst_launcher.moc"

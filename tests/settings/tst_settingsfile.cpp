#include <QTest>

#include "base/inifile.h"
#include "base/timelag.h"
#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/engine.h"
#include "settings/settingsfile.h"

using namespace duomir;
using duomir::test::TempTree;

namespace {

// A null content stands for no file at all.
Settings loadFrom(TempTree &tree, const QByteArray &content)
{
    if (!content.isNull())
        tree.file(u"Duomir.ini"_qs, content);
    return LoadSettings(IniFile(tree.path(u"Duomir.ini"_qs)));
}

// The record as text, the switches of a group as 0/1 digits in the order of Settings.
QMap<QString, QString> fields(const Settings &s)
{
    const auto b = [](bool v) { return v ? u"1"_qs : u"0"_qs; };
    return {{u"Include"_qs,
             b(s.SubDirs) + b(s.SysDirs) + b(s.SysFiles) + b(s.HiddenDirs) + b(s.HiddenFiles)},
            {u"General"_qs,
             b(s.LogToFile) + b(s.LogActions) + b(s.DontShowHint) + b(s.ButtonBarsWithText)},
            {u"Keeping"_qs,
             u"%1 %2 %3"_qs.arg(s.Versioning).arg(s.VersionsFolder).arg(s.KeepVersionsDays)},
            {u"Form"_qs, s.FormPos + u' ' + QString::number(s.FormState)},
            {u"Language"_qs, s.Language},
            {u"Exclude"_qs, s.ExcludeDirs + u' ' + s.ExcludeFiles},
            {u"TimeLag"_qs, timeLagToText(s.TimeLag)}};
}

} // namespace

class TestSettingsFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("expected"); // "field=value" of fields()
        const auto row = [](const char *name, const QByteArray &content, const QString &expected) {
            QTest::newRow(name) << content << expected.split(u'|');
        };
        row("no file", QByteArray(), u"Include=10000|General=0000|Keeping=1 Duomir Versions 30"_qs);
        row("switches, any case, any number",
            "[include]\nsubdirs=abc\nSysDirs=7\nHIDDENFILES=-1\n"
            "[General]\nLogToFile=1\nDontShowHint=1\n",
            u"Include=01001|General=1010"_qs);
        // A long TimeLag text is cut to 19 characters before it is converted: this one then reads.
        // The file is longer than one read of the disk.
        row("values cut as the read buffers did",
            "[Form]\nPos=" + QByteArray(150, '1') +
                "\nState=2\n[General]\nLanguage=" + QByteArray(300, 'L') +
                "\nTimeLag=00:00:05           junk\n[Exclude]\nDirs=" + QByteArray(70000, 'd') +
                "\nFiles=*.tmp\n",
            u"Form=%1 2|Language=%2|TimeLag=00:00:05|Exclude=%3 *.tmp"_qs.arg(
                QString(99, u'1'), QString(254, u'L'), QString(32766, u'd')));
        row("versions folder, kept forever",
            "[General]\nVersioning=2\nVersionsFolder=Old\nKeepVersionsDays=0\n",
            u"Keeping=2 Old 0"_qs);
        row("unknown mode and empty folder: the defaults' nearest",
            "[General]\nVersioning=9\nVersionsFolder=\nKeepVersionsDays=-4\n",
            u"Keeping=2 Duomir Versions 0"_qs);
        // The options dialog's test has the time lag's other forms.
        row("time lag without seconds, beyond a day", "[General]\nTimeLag= 26:30 \n",
            u"TimeLag=26:30:00"_qs);
        row("time lag unreadable", "[General]\nTimeLag=1:75\n", u"TimeLag=00:00:00"_qs);
    }

    void values()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, expected);
        TempTree tree;
        const QMap<QString, QString> actual = fields(loadFrom(tree, content));
        for (const QString &field : expected)
            QCOMPARE(actual.value(field.section(u'=', 0, 0)), field.section(u'=', 1));
        QCOMPARE(tree.exists(u"Duomir.ini"_qs), !content.isNull()); // loading never creates it
    }

    // What the options dialog and the language and hint choices write reads back as it was set.
    void writersRoundTrip()
    {
        TempTree tree;
        IniFile ini(tree.path(u"Duomir.ini"_qs));
        Settings s = LoadSettings(ini);
        s.ExcludeDirs = u"Temp;Recycled"_qs;
        s.ExcludeFiles = u"*.tmp;*.bak"_qs;
        s.TimeLag = 2.0 / 86400;
        s.LogToFile = s.ButtonBarsWithText = s.HiddenDirs = s.SysFiles = true;
        s.SubDirs = false;
        s.Versioning = Settings::ToVersionsFolder;
        s.VersionsFolder = u"Old"_qs;
        WriteOptions(ini, s);
        WriteLanguage(ini, s.Language = u"English"_qs);
        WriteDontShowHint(ini, s.DontShowHint = true);
        QCOMPARE(fields(loadFrom(tree, QByteArray())), fields(s));
    }

    void placementOnClose_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("geometry"); // window placement at close, as "l;t;w;h"
        QTest::addColumn<QByteArray>("after");
        const auto row = [](const char *name, const QByteArray &before, int state,
                            const char *geometry, const QByteArray &after) {
            QTest::newRow(name) << before << state << QString::fromLatin1(geometry) << after;
        };
        const QByteArray stored("[Form]\nPos=10;20\nState=0\n[General]\nFilesColWidth=1;2\n");
        row("same place: only FilesColWidth goes", stored, 0, "10;20;0;0",
            "[Form]\nPos=10;20\nState=0\n[General]\n");
        row("moved", stored, 0, "10;21.5;300;200",
            "[Form]\nPos=10;21.5;300;200\nState=0\n[General]\n");
        row("maximized: no Pos, new State", stored, 2, "0;0;9000;7000",
            "[Form]\nPos=10;20\nState=2\n[General]\n");
        row("minimized: neither", stored, 1, "1;1;1;1", "[Form]\nPos=10;20\nState=0\n[General]\n");
        row("maximized at start and close", "[Form]\nState=2\n", 2, "5;5;5;5", "[Form]\nState=2\n");
        row("first close writes a file", QByteArray(), 0, "-120;0;1e6;0.1",
            "[Form]\nPos=-120;0;1000000;0.1\n");
        row("garbage Pos reads as zeros", "[Form]\nPos=a;;b\n", 0, "0;0;0;0", "[Form]\nPos=a;;b\n");
    }

    void placementOnClose()
    {
        QFETCH(QByteArray, before);
        QFETCH(int, state);
        QFETCH(QString, geometry);
        QFETCH(QByteArray, after);
        TempTree tree;
        const Settings startup = loadFrom(tree, before);
        IniFile ini(tree.path(u"Duomir.ini"_qs));
        WritePlacementOnClose(ini, startup, WindowState(state), parsePlacement(geometry));
        QCOMPARE(tree.read(u"Duomir.ini"_qs), after);
    }

    // A writable program folder alone is no reason to keep the settings there: only a Duomir.ini
    // already beside the program makes a portable install, and then the settings stay there.
    void folders_data()
    {
        QTest::addColumn<QString>("dataHome"); // empty: no home either
        QTest::addColumn<bool>("portable");
        QTest::addColumn<QString>("dataFolder");
        QTest::newRow("xdg data home not made yet")
            << u"missing/share"_qs << false << u"missing/share/Duomir/"_qs;
        QTest::newRow("relative xdg ignored")
            << u"rel"_qs << false << u"home/.local/share/Duomir/"_qs;
        QTest::newRow("portable, with a home") << u"xdg"_qs << true << u"xdg/Duomir/"_qs;
        QTest::newRow("no home") << QString() << true << u"bin/"_qs;
    }

    void folders()
    {
        QFETCH(QString, dataHome);
        QFETCH(bool, portable);
        QFETCH(QString, dataFolder);
        TempTree tree;
        tree.dir(u"bin"_qs);
        tree.dir(u"xdg"_qs);
        tree.dir(u"home/.local/share"_qs);
        if (portable)
            tree.file(u"bin/Duomir.ini"_qs, "[General]\nLanguage=Deutsch\n");
        SettingsEnvironment env;
        env.programFolder = tree.path(u"bin"_qs);
        env.home = dataHome.isEmpty() ? QString() : tree.path(u"home"_qs);
        env.dataHome = dataHome == u"rel"   ? dataHome
                       : dataHome.isEmpty() ? QString()
                                            : tree.path(dataHome);
        test::FakeInteraction ui;
        Engine engine(ui);
        InitSettings(engine, env);
        QCOMPARE(engine.DataFolder, tree.path(dataFolder));
        QVERIFY(QFileInfo(engine.DataFolder).isDir());
        QCOMPARE(engine.SettingsFile,
                 tree.path(portable ? u"bin/Duomir.ini"_qs : u"home/.config/Duomir/Duomir.ini"_qs));
        QCOMPARE(engine.settings.Language, portable ? u"Deutsch"_qs : QString());
    }
};

QTEST_GUILESS_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"

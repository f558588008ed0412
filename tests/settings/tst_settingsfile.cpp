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

} // namespace

class TestSettingsFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void values_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("expected");

        QTest::newRow("no file: SubDirs on") << QByteArray() << u"SubDirs"_qs << u"1"_qs;
        QTest::newRow("no file: HiddenFiles off") << QByteArray() << u"HiddenFiles"_qs << u"0"_qs;
        QTest::newRow("no file: flags of General off")
            << QByteArray() << u"General"_qs << u"000"_qs;
        QTest::newRow("SubDirs 0 off")
            << QByteArray("[Include]\nSubDirs=0\n") << u"SubDirs"_qs << u"0"_qs;
        QTest::newRow("SubDirs 7 on")
            << QByteArray("[Include]\nSubDirs=7\n") << u"SubDirs"_qs << u"1"_qs;
        QTest::newRow("SubDirs abc off")
            << QByteArray("[Include]\nSubDirs=abc\n") << u"SubDirs"_qs << u"0"_qs;
        QTest::newRow("HiddenFiles -1 on")
            << QByteArray("[include]\nhiddenfiles=-1\n") << u"HiddenFiles"_qs << u"1"_qs;
        QTest::newRow("State kept as is")
            << QByteArray("[Form]\nState=2\n") << u"FormState"_qs << u"2"_qs;
        QTest::newRow("Pos cut at 99") << "[Form]\nPos=" + QByteArray(150, '1') + "\n"
                                       << u"FormPos"_qs << QString(99, u'1');
        QTest::newRow("Language cut at 254") << "[General]\nLanguage=" + QByteArray(300, 'L') + "\n"
                                             << u"Language"_qs << QString(254, u'L');
        QTest::newRow("Dirs cut at 32766") << "[Exclude]\nDirs=" + QByteArray(40000, 'd') + "\n"
                                           << u"ExcludeDirs"_qs << QString(32766, u'd');
        // A long TimeLag text is cut to 19 characters before it is converted: this one then reads.
        QTest::newRow("TimeLag cut before conversion")
            << QByteArray("[General]\nTimeLag=00:00:05           junk\n") << u"TimeLag"_qs
            << u"00:00:05"_qs;
        QTest::newRow("no file: the Trash keeps files for 30 days")
            << QByteArray() << u"Keeping"_qs << u"1 Duomir Versions 30"_qs;
        QTest::newRow("versions folder, kept forever")
            << QByteArray("[General]\nVersioning=2\nVersionsFolder=Old\nKeepVersionsDays=0\n")
            << u"Keeping"_qs << u"2 Old 0"_qs;
        QTest::newRow("unknown mode and empty folder: the defaults' nearest")
            << QByteArray("[General]\nVersioning=9\nVersionsFolder=\nKeepVersionsDays=-4\n")
            << u"Keeping"_qs << u"2 Duomir Versions 0"_qs;
        QTest::newRow("flags of General")
            << QByteArray("[General]\nLogToFile=1\nDontShowHint=1\n") << u"General"_qs << u"110"_qs;
    }

    void values()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, field);
        QFETCH(QString, expected);
        TempTree tree;
        const Settings s = loadFrom(tree, content);
        const auto b = [](bool v) { return v ? u"1"_qs : u"0"_qs; };
        const QMap<QString, QString> fields{
            {u"SubDirs"_qs, b(s.SubDirs)},
            {u"HiddenFiles"_qs, b(s.HiddenFiles)},
            {u"FormState"_qs, QString::number(s.FormState)},
            {u"FormPos"_qs, s.FormPos},
            {u"Language"_qs, s.Language},
            {u"ExcludeDirs"_qs, s.ExcludeDirs},
            {u"TimeLag"_qs, timeLagToText(s.TimeLag)},
            {u"Keeping"_qs,
             u"%1 %2 %3"_qs.arg(s.Versioning).arg(s.VersionsFolder).arg(s.KeepVersionsDays)},
            {u"General"_qs, b(s.LogToFile) + b(s.DontShowHint) + b(s.ButtonBarsWithText)}};
        QCOMPARE(fields.value(field), expected);
        QCOMPARE(tree.exists(u"Duomir.ini"_qs), !content.isNull()); // loading never creates it
    }

    void timeLag_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("written"); // how the value is written back

        QTest::newRow("five seconds") << u"00:00:05"_qs << 5 << u"00:00:05"_qs;
        QTest::newRow("one hour, short hour") << u"1:00:00"_qs << 3600 << u"01:00:00"_qs;
        QTest::newRow("hours and minutes") << u"2:30"_qs << 9000 << u"02:30:00"_qs;
        QTest::newRow("not a time") << u"x"_qs << 0 << u"00:00:00"_qs;
        QTest::newRow("minutes out of range") << u"00:75:00"_qs << 0 << u"00:00:00"_qs;
        QTest::newRow("empty") << QString() << 0 << u"00:00:00"_qs;
        QTest::newRow("a day and more") << u"25:00:01"_qs << 90001 << u"25:00:01"_qs;
        QTest::newRow("blanks") << u" 00:01:00 "_qs << 60 << u"00:01:00"_qs;
    }

    void timeLag()
    {
        QFETCH(QString, text);
        QFETCH(int, seconds);
        QFETCH(QString, written);
        const double days = timeLagFromText(text);
        QCOMPARE(qRound64(days * 86400), qint64(seconds));
        QCOMPARE(timeLagToText(days), written);
        QCOMPARE(timeLagFromText(written), days);
    }

    // The options dialog writes every key it owns in a fixed order.
    void optionsRoundTrip()
    {
        TempTree tree;
        IniFile ini(tree.path(u"Duomir.ini"_qs));
        Settings s;
        s.ExcludeDirs = u"Temp;Recycled"_qs;
        s.ExcludeFiles = u"*.tmp;*.bak"_qs;
        s.TimeLag = 2.0 / 86400;
        s.LogToFile = true;
        s.SubDirs = true;
        s.HiddenDirs = true;
        s.Versioning = Settings::ToVersionsFolder;
        s.VersionsFolder = u"Old"_qs;
        WriteOptions(ini, s);
        WriteLanguage(ini, u"English"_qs);
        WriteDontShowHint(ini, true);
        QCOMPARE(tree.read(u"Duomir.ini"_qs),
                 QByteArray("[Exclude]\nDirs=Temp;Recycled\nFiles=*.tmp;*.bak\n"
                            "[General]\nTimeLag=00:00:02\nLogToFile=1\nLogActions=0\nVersioning=2\n"
                            "VersionsFolder=Old\nButtonBarsWithText=0\n"
                            "Language=English\nDontShowHint=1\n"
                            "[Include]\nSubDirs=1\nSysDirs=0\nSysFiles=0\nHiddenDirs=1\n"
                            "HiddenFiles=0\n"));
    }

    void placementOnClose_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("geometry"); // window placement at close, as "l;t;w;h"
        QTest::addColumn<QByteArray>("after");

        const QByteArray stored("[Form]\nPos=10;20\nState=0\n[General]\nFilesColWidth=1;2\n");
        QTest::newRow("same place: only FilesColWidth goes")
            << stored << 0 << u"10;20;0;0"_qs
            << QByteArray("[Form]\nPos=10;20\nState=0\n[General]\n");
        QTest::newRow("moved") << stored << 0 << u"10;21.5;300;200"_qs
                               << QByteArray("[Form]\nPos=10;21.5;300;200\nState=0\n[General]\n");
        QTest::newRow("maximized: no Pos, new State")
            << stored << 2 << u"0;0;9000;7000"_qs
            << QByteArray("[Form]\nPos=10;20\nState=2\n[General]\n");
        QTest::newRow("minimized: neither")
            << stored << 1 << u"1;1;1;1"_qs
            << QByteArray("[Form]\nPos=10;20\nState=0\n[General]\n");
        QTest::newRow("maximized at start and close")
            << QByteArray("[Form]\nState=2\n") << 2 << u"5;5;5;5"_qs
            << QByteArray("[Form]\nState=2\n");
        QTest::newRow("first close writes a file")
            << QByteArray() << 0 << u"-120;0;1e6;0.1"_qs
            << QByteArray("[Form]\nPos=-120;0;1000000;0.1\n");
        QTest::newRow("garbage Pos reads as zeros")
            << QByteArray("[Form]\nPos=a;;b\n") << 0 << u"0;0;0;0"_qs
            << QByteArray("[Form]\nPos=a;;b\n");
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
        const Placement p = parsePlacement(geometry);
        WritePlacementOnClose(ini, startup, WindowState(state), p);
        QCOMPARE(tree.read(u"Duomir.ini"_qs), after);
    }

    void folders_data()
    {
        QTest::addColumn<QString>("dataHome");
        QTest::addColumn<bool>("withHome");
        QTest::addColumn<bool>("portable"); // a Duomir.ini already beside the executable
        QTest::addColumn<QString>("dataFolder");
        QTest::addColumn<QString>("settingsFile");

        // A writable program folder alone is no reason to keep the settings there: only a
        // Duomir.ini already beside the program makes a portable install.
        const QString config = u"home/.config/Duomir/Duomir.ini"_qs;
        QTest::newRow("xdg data home") << u"xdg"_qs << true << false << u"xdg/Duomir/"_qs << config;
        QTest::newRow("xdg data home not made yet")
            << u"missing/share"_qs << true << false << u"missing/share/Duomir/"_qs << config;
        QTest::newRow("relative xdg ignored")
            << u"rel"_qs << true << false << u"home/.local/share/Duomir/"_qs << config;
        QTest::newRow("portable, with a home")
            << u"xdg"_qs << true << true << u"xdg/Duomir/"_qs << u"bin/Duomir.ini"_qs;
        QTest::newRow("no home") << QString() << false << true << u"bin/"_qs
                                 << u"bin/Duomir.ini"_qs;
    }

    void folders()
    {
        QFETCH(QString, dataHome);
        QFETCH(bool, withHome);
        QFETCH(bool, portable);
        QFETCH(QString, dataFolder);
        QFETCH(QString, settingsFile);
        TempTree tree;
        tree.dir(u"bin"_qs);
        tree.dir(u"xdg"_qs);
        tree.dir(u"home/.local/share"_qs);
        if (portable)
            tree.file(u"bin/Duomir.ini"_qs, "[General]\nLanguage=Deutsch\n");
        SettingsEnvironment env;
        env.programFolder = tree.path(u"bin"_qs);
        env.home = withHome ? tree.path(u"home"_qs) : QString();
        env.dataHome = dataHome == u"rel"   ? dataHome
                       : dataHome.isEmpty() ? QString()
                                            : tree.path(dataHome);

        test::FakeInteraction ui;
        Engine engine(ui);
        InitSettings(engine, env);
        QCOMPARE(engine.DataFolder, tree.path(dataFolder));
        QVERIFY(QFileInfo(engine.DataFolder).isDir());
        QCOMPARE(engine.SettingsFile, tree.path(settingsFile));
        QCOMPARE(engine.ProgramFolder, env.programFolder);
        QCOMPARE(engine.settings.Language, portable ? u"Deutsch"_qs : QString());
    }

    void shareFolder()
    {
        TempTree tree;
        tree.dir(u"prefix/bin"_qs);
        tree.file(u"prefix/share/duomir/English.lang"_qs, "1=x\n");
        QCOMPARE(findShareFolder(tree.path(u"prefix/bin"_qs)),
                 tree.path(u"prefix/share/duomir"_qs));
        // A build that keeps its language files beside the executable uses those.
        tree.dir(u"prefix/bin/Help"_qs);
        QCOMPARE(findShareFolder(tree.path(u"prefix/bin"_qs)), tree.path(u"prefix/bin"_qs));
        QCOMPARE(findShareFolder(tree.path(u"none"_qs)), tree.path(u"none"_qs));

        // Without a usable program folder the settings go to the configuration folder.
        SettingsEnvironment env;
        env.programFolder = tree.path(u"gone/bin"_qs);
        env.configHome = tree.path(u"cfg"_qs);
        QCOMPARE(settingsFilePath(env), tree.path(u"cfg/Duomir/Duomir.ini"_qs));
        QVERIFY(tree.exists(u"cfg/Duomir"_qs));
    }
};

QTEST_GUILESS_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"

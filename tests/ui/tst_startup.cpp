#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QMainWindow>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "base/inifile.h"
#include "common/fakeinteraction.h"
#include "core/engine.h"
#include "ui/dlglanguage.h"
#include "ui/modal.h"
#include "ui/startup.h"

using namespace duomir;

// Start-up and shut-down around a bare main window: what the real one adds (profiles, Compare,
// Synchronize) is reached through the hooks, which here record what they are asked to do.
class TestStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        const QDir share(qEnvironmentVariable("DUOMIR_SHARE_DIR"));
        for (const QString &lang : {u"English.lang"_qs, u"Deutsch.lang"_qs})
            QVERIFY(QFile::copy(share.filePath(lang), m_dir->filePath(lang)));
        m_ui = test::FakeInteraction();
        m_engine = std::make_unique<Engine>(m_ui);
        m_window = std::make_unique<QMainWindow>();
        m_window->setWindowTitle(u"Duomir"_qs);
        m_events.clear();
        m_chooseLanguage.clear();
        m_loadResult = true;
        m_hooks = ShellHooks();
        m_hooks.localize = [this] { m_events << u"localize"_qs; };
        m_hooks.loadProfile = [this](const QString &path) {
            m_events << u"load " + path;
            m_engine->ProfilePath = path;
            return m_loadResult;
        };
        m_hooks.synchronize = [this] {
            m_events << (m_engine->Auto ? u"synchronize auto"_qs : u"synchronize"_qs);
        };
        m_startup = std::make_unique<Startup>(*m_engine, m_window.get(), m_hooks);
        setBeeper([this] { m_events << u"beep"_qs; });
        setModalRunner([this](QDialog &dlg) {
            m_events << dlg.objectName() + (m_window->isVisible() ? u" over window"_qs : QString());
            if (auto *combo = dlg.findChild<QComboBox *>(u"cboLanguage"_qs))
                combo->setCurrentIndex(combo->findData(m_chooseLanguage));
            if (!m_chooseLanguage.isEmpty() || !qobject_cast<dlgLanguage *>(&dlg))
                dlg.findChild<QPushButton *>(u"cmdOK"_qs)->click();
            return int(dlg.result());
        });
    }

    void cleanup()
    {
        setModalRunner({});
        setBeeper({});
        m_startup.reset();
        m_window.reset();
    }

    void firstStart_data()
    {
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("title");
        QTest::newRow("language chosen") << u"Deutsch"_qs << u"Deutsch"_qs << u"Sprache"_qs;
        // English only for this run: the next start asks again.
        QTest::newRow("no choice runs in English") << QString() << u"<none>"_qs << u"Language"_qs;
    }

    void firstStart()
    {
        QFETCH(QString, chosen);
        QFETCH(QString, stored);
        QFETCH(QString, title);
        m_chooseLanguage = chosen;
        QVERIFY(start({}));
        QCOMPARE(m_events, QStringList({u"beep"_qs, u"dlgLanguage"_qs, u"localize"_qs,
                                        u"dlgHint over window"_qs}));
        QCOMPARE(m_engine->language.FormatMsg(u"30000"_qs), title);
        QCOMPARE(setting(u"General"_qs, u"Language"_qs), stored);
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    }

    // An unattended first start asks nothing: it must not wait on a dialog nobody sees.
    void firstStartUnattended()
    {
        QVERIFY(start({u"-dontask"_qs, u"-hide"_qs}));
        QVERIFY2(!m_events.contains(u"dlgLanguage"_qs), qPrintable(m_events.join(u", ")));
        QVERIFY(!m_events.contains(u"beep"_qs));
        QCOMPARE(m_engine->language.FormatMsg(u"30000"_qs), u"Language"_qs);
    }

    void commandLine_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<bool>("emptyProfile");
        QTest::addColumn<bool>("loads");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<bool>("minimized");
        QTest::addColumn<bool>("dontAsk");

        // The first switch stands in for the missing profile; its load reports that.
        QTest::newRow("-hide alone")
            << QStringList{u"-hide"_qs} << false << false
            << QStringList{u"localize"_qs, u"load -hide"_qs} << true << false;
        QTest::newRow("automatic run")
            << QStringList{u"@/my list.dyp"_qs, u"-AUTO"_qs, u"-dontask"_qs} << false << true
            << QStringList{u"localize"_qs, u"load @/my list.dyp"_qs, u"synchronize auto"_qs}
            << false << true;
        QTest::newRow("zero-byte profile ignored with -auto")
            << QStringList{u"@/empty.dyp"_qs, u"-auto"_qs} << true << true
            << QStringList{u"localize"_qs} << false << false;
        QTest::newRow("profile that fails to load is not synchronized")
            << QStringList{u"@/broken.dyp"_qs, u"-auto"_qs} << false << false
            << QStringList{u"localize"_qs, u"load @/broken.dyp"_qs} << false << false;
        QTest::newRow("unattended, profile fails to load: ends anyway")
            << QStringList{u"@/broken.dyp"_qs, u"-auto"_qs, u"-dontask"_qs} << false << false
            << QStringList{u"localize"_qs, u"load @/broken.dyp"_qs} << false << true;
        QTest::newRow("a switch word inside a file name is no switch")
            << QStringList{u"@/my-automatic.dyp"_qs} << false << true
            << QStringList{u"localize"_qs, u"load @/my-automatic.dyp"_qs} << false << false;
    }

    void commandLine()
    {
        QFETCH(QStringList, args);
        QFETCH(bool, emptyProfile);
        QFETCH(bool, loads);
        QFETCH(QStringList, expected);
        QFETCH(bool, minimized);
        QFETCH(bool, dontAsk);

        writeSettings("[General]\nLanguage=English\nDontShowHint=1\n");
        for (QString &a : args)
            a.replace(u'@', m_dir->path());
        for (QString &e : expected)
            e.replace(u'@', m_dir->path());
        if (emptyProfile)
            QVERIFY(QFile(args[0]).open(QIODevice::WriteOnly));
        m_loadResult = loads;

        // An automatic run that nobody watches ends the program whatever the hooks did.
        const bool unattendedAuto =
            dontAsk && args.join(u' ').contains(u"-auto"_qs, Qt::CaseInsensitive);
        QCOMPARE(start(args), !unattendedAuto);
        QCOMPARE(m_events, expected);
        QCOMPARE(m_window->isMinimized(), minimized);
        QCOMPARE(m_engine->DontAsk, dontAsk);
        if (emptyProfile)
            QVERIFY(m_engine->ProfilePath.isEmpty());
    }

    // The run closes the program; the hint belongs to a start that goes on.
    void automaticRunThatClosesSkipsHint()
    {
        writeSettings("[General]\nLanguage=English\n");
        m_hooks.synchronize = [this] { m_window->close(); };
        QVERIFY(
            !start({m_dir->filePath(u"list.dyp"_qs), u"-auto"_qs, u"-dontask"_qs, u"-hide"_qs}));
        QVERIFY(!m_events.contains(u"dlgHint"_qs));
    }

    void placementRestoredAndStoredOnClose()
    {
        writeSettings("[General]\nLanguage=English\nDontShowHint=1\nFilesColWidth=5\n"
                      "[Form]\nPos=1500;1500;12000;9000\nState=0\n");
        QVERIFY(start({}));
        QCOMPARE(m_window->size(), QSize(800, 600));

        m_window->resize(900, 600);
        QVERIFY(m_window->close());
        const QStringList pos = setting(u"Form"_qs, u"Pos"_qs).split(u';');
        QCOMPARE(pos.size(), 4);
        QCOMPARE(pos[2], u"13500"_qs);
        QCOMPARE(setting(u"Form"_qs, u"State"_qs), u"0"_qs);
        QCOMPARE(setting(u"General"_qs, u"FilesColWidth"_qs), u"<none>"_qs);
    }

    void infoScriptStarted()
    {
        writeSettings("[General]\nLanguage=English\nDontShowHint=1\n");
        QFile script(m_dir->filePath(u"DMInfo.sh"_qs));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("pwd > ran.txt\n");
        script.close();
        QVERIFY(start({}));
        QTRY_VERIFY(QFile::exists(m_dir->filePath(u"ran.txt"_qs)));
    }

private:
    QString setting(const QString &section, const QString &key) const
    {
        return IniFile(m_engine->SettingsFile).readString(section, key, u"<none>"_qs);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    test::FakeInteraction m_ui;
    std::unique_ptr<Engine> m_engine;
    std::unique_ptr<QMainWindow> m_window;
    ShellHooks m_hooks;
    std::unique_ptr<Startup> m_startup;
    QStringList m_events;
    QString m_chooseLanguage; // what the scripted language dialog picks; empty = nothing
    bool m_loadResult = true;

    void writeSettings(const QByteArray &ini)
    {
        QFile f(m_dir->filePath(u"Duomir.ini"_qs));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(ini);
    }

    bool start(const QStringList &args)
    {
        SettingsEnvironment env;
        env.programFolder = m_dir->path();
        env.home = m_dir->filePath(u"home"_qs);
        env.dataHome = m_dir->filePath(u"data"_qs);
        env.configHome = m_dir->filePath(u"config"_qs);
        return m_startup->run(env, args);
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"

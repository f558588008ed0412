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
        m_events.clear();
        m_hooks = ShellHooks();
        m_hooks.localize = [this] { m_events << u"localize"_qs; };
        m_hooks.loadProfile = [this](const QString &path) {
            m_events << u"load " + path;
            m_engine->ProfilePath = path;
            return !path.contains(u"broken"_qs);
        };
        // As the real one, an automatic run closes the program when done.
        m_hooks.synchronize = [this] {
            m_events << (m_engine->Auto ? u"synchronize auto"_qs : u"synchronize"_qs);
            if (m_engine->Auto)
                m_window->close();
        };
        m_startup = std::make_unique<Startup>(*m_engine, m_window.get(), m_hooks);
        setBeeper([this] { m_events << u"beep"_qs; });
        // The language dialog picks what the row says (nothing: it is left open); others say OK.
        setModalRunner([this](QDialog &dlg) {
            m_events << dlg.objectName() + (m_window->isVisible() ? u" over window"_qs : QString());
            const QString chosen = QString::fromUtf8(QTest::currentDataTag()).section(u' ', 0, 0);
            auto *combo = dlg.findChild<QComboBox *>(u"cboLanguage"_qs);
            if (combo)
                combo->setCurrentIndex(combo->findData(chosen));
            if (!combo || combo->currentIndex() >= 0)
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

    // The first start asks for a language over the bare window (no choice: English for this run,
    // asked again next time), then shows the hint over the window. Unattended (-dontask), nothing
    // waits for a person: no dialog, and an automatic run ends the program whatever the hooks did.
    // The first switch stands in for a missing profile; its load reports that.
    void startUp_data()
    {
        QTest::addColumn<QString>("args");     // split at '|'; '@' is the test's folder
        QTest::addColumn<QString>("language"); // stored; "English" also written before the start
        QTest::addColumn<QString>("events");
        QTest::addColumn<bool>("goesOn");
        const QString asked = u"beep; dlgLanguage; localize; dlgHint over window"_qs;
        QTest::newRow("Deutsch chosen") << u""_qs << u"Deutsch"_qs << asked << true;
        QTest::newRow("none chosen") << u""_qs << u"<none>"_qs << asked << true;
        QTest::newRow("first start, -dontask -hide")
            << u"-dontask|-hide"_qs << u"<none>"_qs << u"localize; load -dontask"_qs << true;
        QTest::newRow("-hide alone") << u"-hide"_qs << u"English"_qs
                                     << u"localize; load -hide; dlgHint over window"_qs << true;
        QTest::newRow("automatic run")
            << u"@/my list.dyp|-AUTO|-dontask"_qs << u"English"_qs
            << u"localize; load @/my list.dyp; synchronize auto"_qs << false;
        QTest::newRow("zero-byte profile ignored with -auto")
            << u"@/empty.dyp|-auto"_qs << u"English"_qs << u"localize; dlgHint over window"_qs
            << true;
        QTest::newRow("profile that fails to load is not synchronized")
            << u"@/broken.dyp|-auto"_qs << u"English"_qs
            << u"localize; load @/broken.dyp; dlgHint over window"_qs << true;
        QTest::newRow("unattended, profile fails to load: ends anyway")
            << u"@/broken.dyp|-auto|-dontask"_qs << u"English"_qs
            << u"localize; load @/broken.dyp"_qs << false;
        QTest::newRow("a switch word inside a file name is no switch")
            << u"@/my-automatic.dyp"_qs << u"English"_qs
            << u"localize; load @/my-automatic.dyp; dlgHint over window"_qs << true;
    }
    void startUp()
    {
        QFETCH(QString, args);
        QFETCH(QString, language);
        QFETCH(bool, goesOn);
        if (language == u"English")
            write(u"Duomir.ini"_qs, "[General]\nLanguage=English\n[Form]\nPos=0;0;12000;9000\n");
        write(u"DMInfo.sh"_qs, "pwd > ran.txt\n");
        args.replace(u'@', m_dir->path());
        const QStringList argv = args.split(u'|', Qt::SkipEmptyParts);
        if (args.endsWith(u"empty.dyp|-auto"))
            QVERIFY(QFile(argv[0]).open(QIODevice::WriteOnly));
        QCOMPARE(start(argv), goesOn);
        QFETCH(QString, events);
        QCOMPARE(m_events.join(u"; "), events.replace(u'@', m_dir->path()));
        QCOMPARE(setting(u"General"_qs, u"Language"_qs), language);
        QCOMPARE(m_engine->language.FormatMsg(u"30000"_qs),
                 language == u"Deutsch" ? u"Sprache"_qs : u"Language"_qs);
        QCOMPARE(m_engine->DontAsk, argv.contains(u"-dontask"_qs));
        QCOMPARE(m_window->isMinimized(), argv.contains(u"-hide"_qs));
        if (language == u"English") // the placement of the last close, in twips
            QCOMPARE(m_window->size(), QSize(800, 600));
        QCOMPARE(m_engine->ProfilePath.isEmpty(), argv.isEmpty() || args.contains(u"empty"_qs));
        // Unattended, the hint is a message that waits for nobody; a run that ended gives none.
        QCOMPARE(m_ui.shown.size(), int(goesOn && m_engine->DontAsk));
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
        // DMInfo.sh beside the program runs in a start that goes on.
        QTRY_COMPARE(QFile::exists(m_dir->filePath(u"ran.txt"_qs)), goesOn);
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    test::FakeInteraction m_ui;
    std::unique_ptr<Engine> m_engine;
    std::unique_ptr<QMainWindow> m_window;
    ShellHooks m_hooks;
    std::unique_ptr<Startup> m_startup;
    QStringList m_events;

    QString setting(const QString &section, const QString &key) const
    {
        return IniFile(m_engine->SettingsFile).readString(section, key, u"<none>"_qs);
    }
    void write(const QString &name, const QByteArray &content)
    {
        QFile f(m_dir->filePath(name));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(content);
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

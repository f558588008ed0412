#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QMainWindow>
#include <QPushButton>
#include <QScopeGuard>
#include <QTest>

#include "base/inifile.h"
#include "common/fakeinteraction.h"
#include "common/temptree.h"
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
    // The first start asks for a language over the bare window (no choice: English for this run,
    // asked again next time), then shows the hint over the window. Unattended (-dontask), nothing
    // waits for a person: no dialog, and an automatic run ends the program whatever the hooks did.
    // The first switch stands in for a missing profile; its load reports that.
    void startUp_data()
    {
        QTest::addColumn<QString>("args");     // split at '|'; '@' is the test's folder
        QTest::addColumn<QString>("language"); // stored; "English" also written before the start
        QTest::addColumn<QString>("expected"); // the events
        QTest::addColumn<bool>("goesOn");
        const QString asked = u"beep; dlgLanguage; localize; dlgHint over window"_qs;
        const auto row = [](const char *tag, const QString &args, const QString &language,
                            bool goesOn, const QString &expected) {
            QTest::newRow(tag) << args << language << expected << goesOn;
        };
        row("Deutsch chosen", u""_qs, u"Deutsch"_qs, true, asked);
        row("none chosen", u""_qs, u"<none>"_qs, true, asked);
        row("first start, -dontask -hide", u"-dontask|-hide"_qs, u"<none>"_qs, true,
            u"localize; load -dontask"_qs);
        row("automatic run", u"@/my list.dyp|-AUTO|-dontask"_qs, u"English"_qs, false,
            u"localize; load @/my list.dyp; synchronize auto"_qs);
        row("zero-byte profile ignored with -auto", u"@/empty.dyp|-auto"_qs, u"English"_qs, true,
            u"localize; dlgHint over window"_qs);
        row("profile that fails to load is not synchronized", u"@/broken.dyp|-auto"_qs,
            u"English"_qs, true, u"localize; load @/broken.dyp; dlgHint over window"_qs);
        row("unattended, profile fails to load: ends anyway", u"@/broken.dyp|-auto|-dontask"_qs,
            u"English"_qs, false, u"localize; load @/broken.dyp"_qs);
        row("a switch word inside a file name is no switch", u"@/my-automatic.dyp"_qs,
            u"English"_qs, true, u"localize; load @/my-automatic.dyp; dlgHint over window"_qs);
    }
    void startUp()
    {
        QFETCH(QString, args);
        QFETCH(QString, language);
        QFETCH(bool, goesOn);
        QStringList events;
        test::TempTree dir;
        const QDir share(qEnvironmentVariable("DUOMIR_SHARE_DIR"));
        for (const QString &lang : {u"English.lang"_qs, u"Deutsch.lang"_qs})
            QVERIFY(QFile::copy(share.filePath(lang), dir.path(lang)));
        if (language == u"English")
            dir.file(u"Duomir.ini"_qs, "[General]\nLanguage=English\n[Form]\nPos=0;0;12000;9000\n");
        dir.file(u"DMInfo.sh"_qs, "pwd > ran.txt\n");
        dir.file(u"empty.dyp"_qs);
        test::FakeInteraction ui;
        Engine engine(ui);
        QMainWindow window;
        ShellHooks hooks;
        hooks.localize = [&] { events << u"localize"_qs; };
        hooks.loadProfile = [&](const QString &path) {
            events << u"load " + path;
            engine.ProfilePath = path;
            return !path.contains(u"broken"_qs);
        };
        // As the real one, an automatic run closes the program when done.
        hooks.synchronize = [&] {
            events << (engine.Auto ? u"synchronize auto"_qs : u"synchronize"_qs);
            if (engine.Auto)
                window.close();
        };
        Startup startup(engine, &window, hooks);
        setBeeper([&] { events << u"beep"_qs; });
        // The language dialog picks what the row says (nothing: it is left open); others say OK.
        setModalRunner([&](QDialog &dlg) {
            events << dlg.objectName() + (window.isVisible() ? u" over window"_qs : QString());
            const QString chosen = QString::fromUtf8(QTest::currentDataTag()).section(u' ', 0, 0);
            auto *combo = dlg.findChild<QComboBox *>(u"cboLanguage"_qs);
            if (combo)
                combo->setCurrentIndex(combo->findData(chosen));
            if (!combo || combo->currentIndex() >= 0)
                dlg.findChild<QPushButton *>(u"cmdOK"_qs)->click();
            return int(dlg.result());
        });
        const auto reset = qScopeGuard([] {
            setModalRunner({});
            setBeeper({});
        });

        const QString d = dir.root();
        args.replace(u'@', d);
        const QStringList argv = args.split(u'|', Qt::SkipEmptyParts);
        QCOMPARE(startup.run({d, d + u"/home", d + u"/data", d + u"/config"}, argv), goesOn);
        QFETCH(QString, expected);
        QCOMPARE(events.join(u"; "), expected.replace(u'@', d));
        QCOMPARE(
            IniFile(engine.SettingsFile).readString(u"General"_qs, u"Language"_qs, u"<none>"_qs),
            language);
        QCOMPARE(engine.language.FormatMsg(u"30000"_qs),
                 language == u"Deutsch" ? u"Sprache"_qs : u"Language"_qs);
        QCOMPARE(window.isMinimized(), argv.contains(u"-hide"_qs));
        if (language == u"English") // the placement of the last close, in twips
            QCOMPARE(window.size(), QSize(800, 600));
        QCOMPARE(engine.ProfilePath.isEmpty(), argv.isEmpty() || args.contains(u"empty"_qs));
        // Unattended, the hint is a message that waits for nobody; a run that ended gives none.
        QCOMPARE(ui.shown.size(), int(goesOn && engine.DontAsk));
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
        // DMInfo.sh beside the program runs in a start that goes on.
        QTRY_COMPARE(dir.exists(u"ran.txt"_qs), goesOn);
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"

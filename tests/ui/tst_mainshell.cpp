#include <QCheckBox>
#include <QComboBox>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include "base/inifile.h"
#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/engine.h"
#include "ui/dlglanguage.h"
#include "ui/frmmain.h"
#include "ui/localizecontrols.h"
#include "ui/mainhooks.h"
#include "ui/modal.h"
#include "ui/optionsmenu.h"
#include "ui/startup.h"

using namespace duomir;

// The shell around the real main window: the options menu, a language switch and the close.
class TestMainShell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_ui = test::FakeInteraction();
        m_engine = std::make_unique<Engine>(m_ui);
        m_engine->ShareFolder = qEnvironmentVariable("DUOMIR_SHARE_DIR");
        m_engine->SettingsFile = m_dir.filePath(u"Duomir.ini"_qs);
        m_engine->settings.Language = u"English"_qs;
        m_engine->language =
            Language::load(Language::filePath(m_engine->ShareFolder, u"English"_qs), &m_ui);
        m_window = std::make_unique<frmMain>(*m_engine);
        m_hooks = ShellHooks();
        m_hooks.localize = [this] { m_window->localize(); };
        m_window->localize();
    }

    void cleanup()
    {
        setModalRunner({});
        m_window.reset();
    }

    void languageSwitchRelocalizesAtOnce()
    {
        OptionsMenu menu(*m_engine, m_window.get(), m_hooks);
        auto *compare = m_window->findChild<QPushButton *>(u"cmdCompare"_qs);
        QVERIFY(compare);
        const QString key = QString::number(helpId(compare));
        const Language german =
            Language::load(Language::filePath(m_engine->ShareFolder, u"Deutsch"_qs), nullptr);
        QVERIFY(german.text(key) != m_engine->language.text(key));

        switchToGerman(menu);
        QCOMPARE(compare->text(), german.text(key));
        QCOMPARE(menu.menu()->actions().first()->text(), german.text(u"1901"_qs));
        QCOMPARE(IniFile(m_engine->SettingsFile).readString(u"General"_qs, u"Language"_qs),
                 u"Deutsch"_qs);
    }

    // The status row shows counts after a compare; a new language formats them again and does not
    // bring back "Not yet compared".
    void languageSwitchKeepsTheCountsOfACompare()
    {
        test::TempTree tree;
        tree.file(u"src/a.txt"_qs, "a");
        tree.file(u"src/sub/b.txt"_qs, "b");
        tree.dir(u"dst"_qs);
        DirPair pair = DirPair::newFromSettings(m_engine->settings);
        pair.Source = tree.path(u"src"_qs);
        pair.Destination = tree.path(u"dst"_qs);
        pair.SubDirs = true;
        pair.IncludeDirs = pair.IncludeFiles = u"*"_qs;
        m_engine->pairs.append(pair);
        QVERIFY(m_window->runCompare());
        // The program's interaction hands the engine's status texts to the window.
        for (int i = 0; i < 3; ++i)
            m_window->setStatusLabel(i, m_ui.statusLabels[i]);
        m_engine->language =
            Language::load(Language::filePath(m_engine->ShareFolder, u"Deutsch"_qs), &m_ui);
        m_window->localize();
        QCOMPARE(m_window->statusLabel(0), m_engine->FormatMsg(703, {u"2"_qs}));
        QVERIFY(m_window->statusLabel(0).startsWith(u"2 Dateien"_qs));
        QCOMPARE(m_window->statusLabel(1), QString());
        QCOMPARE(m_window->statusLabel(2), m_engine->FormatMsg(712, {u"1"_qs}));
    }

    void backgroundRightClickOpensOptionsMenu_data()
    {
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<bool>("opens");
        QTest::newRow("right") << Qt::RightButton << Qt::KeyboardModifiers() << true;
        QTest::newRow("right with Shift")
            << Qt::RightButton << Qt::KeyboardModifiers(Qt::ShiftModifier) << false;
        QTest::newRow("left") << Qt::LeftButton << Qt::KeyboardModifiers() << false;
    }

    void backgroundRightClickOpensOptionsMenu()
    {
        QFETCH(Qt::MouseButton, button);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(bool, opens);
        OptionsMenu menu(*m_engine, m_window.get(), m_hooks);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTest::mouseClick(m_window.get(), button, modifiers, QPoint(2, 2));
        QCOMPARE(menu.menu()->isVisible(), opens);
        menu.menu()->close();
    }

    // The placement is stored only by a close that goes through the save question.
    void closeStoresPlacementOnlyWhenItCloses()
    {
        Startup startup(*m_engine, m_window.get(), m_hooks);
        m_window->chooseProfileFile = [](bool) { return QString(); };
        m_window->show();
        m_engine->ProfileModified = true;
        const auto stored = [this] {
            return IniFile(m_engine->SettingsFile).contains(u"Form"_qs, u"Pos"_qs);
        };
        m_ui.answers = {Interaction::Answer::Cancel};
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isVisible());
        QVERIFY(!stored());
        m_ui.answers = {Interaction::Answer::No};
        QVERIFY(m_window->close());
        QVERIFY(stored());
    }

    void buttonBarTextFollowsTheOption_data()
    {
        QTest::addColumn<bool>("before");
        QTest::newRow("switched on") << false;
        QTest::newRow("switched off") << true;
    }

    // Apply in the options dialog lays the toolbars out again at once: text under the icons when
    // the option is on, icons alone when it is off; buttons without a caption of their own stay
    // icons.
    void buttonBarTextFollowsTheOption()
    {
        QFETCH(bool, before);
        const bool after = !before;
        m_engine->settings.ButtonBarsWithText = before;
        m_hooks = mainWindowHooks(*m_window, *m_engine);
        m_hooks.localize();
        auto styleOf = [this](int bar, int key) {
            auto *tb = m_window->findChild<QToolBar *>(u"tbar%1"_qs.arg(bar));
            auto *button =
                qobject_cast<QToolButton *>(tb->widgetForAction(m_window->toolbarButton(bar, key)));
            return button->toolButtonStyle();
        };
        const auto textStyle = [](bool on) {
            return on ? Qt::ToolButtonTextUnderIcon : Qt::ToolButtonIconOnly;
        };
        QCOMPARE(styleOf(1, 3), textStyle(before));

        OptionsMenu menu(*m_engine, m_window.get(), m_hooks);
        setModalRunner([](QDialog &dlg) {
            dlg.findChild<QCheckBox *>(u"chkButtonBarsWithText"_qs)->click();
            dlg.findChild<QPushButton *>(u"cmdApply"_qs)->click();
            return int(QDialog::Rejected);
        });
        menu.showOptions();
        QCOMPARE(m_engine->settings.ButtonBarsWithText, after);
        for (const auto &[bar, key] : {std::pair{0, 0}, {1, 3}, {1, 4}, {2, 1}, {2, 2}})
            QCOMPARE(styleOf(bar, key), textStyle(after));
        for (const auto &[bar, key] : {std::pair{1, 0}, {2, 0}, {3, 0}, {3, 3}})
            QCOMPARE(styleOf(bar, key), Qt::ToolButtonIconOnly);

        // A new language brings new captions and keeps the style.
        switchToGerman(menu);
        QCOMPARE(styleOf(1, 3), textStyle(after));
    }

private:
    // Picks German in the language dialog the options menu opens.
    static void switchToGerman(OptionsMenu &menu)
    {
        setModalRunner([](QDialog &dlg) {
            auto *combo = dlg.findChild<QComboBox *>(u"cboLanguage"_qs);
            combo->setCurrentIndex(combo->findData(u"Deutsch"_qs));
            dlg.findChild<QPushButton *>(u"cmdOK"_qs)->click();
            return int(dlg.result());
        });
        menu.showLanguage();
    }

    QTemporaryDir m_dir;
    test::FakeInteraction m_ui;
    std::unique_ptr<Engine> m_engine;
    std::unique_ptr<frmMain> m_window;
    ShellHooks m_hooks;
};

QTEST_MAIN(TestMainShell)
#include "tst_mainshell.moc"

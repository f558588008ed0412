#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

#include "base/inifile.h"
#include "common/fakeinteraction.h"
#include "common/rowbuilder.h"
#include "common/temptree.h"
#include "core/engine.h"
#include "localization/language.h"
#include "ui/dirpairmodel.h"
#include "ui/filelistmodel.h"
#include "ui/frmmain.h"
#include "ui/localizecontrols.h"
#include "ui/modal.h"
#include "ui/optionsmenu.h"
#include "ui/startup.h"

using namespace duomir;
using namespace duomir::test;
using namespace Qt::StringLiterals;
using Answer = Interaction::Answer;
// Watches the file list through a Compare, a filter change and a Synchronize.
using Tester = QAbstractItemModelTester::FailureReportingMode;

// Pairs name their two folders only: every other field keeps its default.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace {

// A hand-made file row, marked unless identical.
CompareEntry fileRow(TextStore &texts, const QString &name, std::int16_t state, int size = 10)
{
    CompareEntry e;
    e.State = state;
    e.Marked = state != Identical;
    setPaths(e, texts, u"/s/"_s, u"/d/"_s);
    setNames(e, texts, state == ModifiedInDestination ? QString() : name,
             state == ModifiedInSource ? QString() : name);
    e.FullSize = {size, size};
    return e;
}

// A window over an engine with a scripted person and a settings file of its own; the pair dialog
// is replaced by one that changes nothing.
struct Fixture
{
    FakeInteraction ui;
    Engine engine{ui};
    frmMain window{engine};
    QTemporaryDir home;
    FileListModel &model = *window.fileModel();

    explicit Fixture(int pairs = 0)
    {
        engine.ShareFolder = qEnvironmentVariable("DUOMIR_SHARE_DIR");
        engine.SettingsFile = home.filePath(u"Duomir.ini"_s);
        for (int i = 1; i <= pairs; ++i)
            engine.pairs.append(DirPair{u"/src%1"_s.arg(i), u"/dst%1"_s.arg(i)});
        static_cast<DirPairModel *>(window.pairGrid()->model())->reload();
        window.runDirsDialog = [](int) {};
    }
    // One real pair in English, compared: a file new in the source, one only in the destination,
    // one alike on both sides in a subdirectory.
    void compare(TempTree &t)
    {
        engine.language = Language::load(Language::filePath(engine.ShareFolder, u"English"_s), &ui);
        window.localize();
        t.file(u"src/new.txt"_s, "new");
        t.file(u"dst/old.txt"_s, "old");
        t.file(u"src/sub/same.txt"_s, "same", 1700000000);
        t.file(u"dst/sub/same.txt"_s, "same", 1700000000);
        DirPair p{t.path(u"src"_s), t.path(u"dst"_s)};
        p.IncludeDirs = p.IncludeFiles = u"*"_s;
        engine.pairs.append(p);
        QVERIFY(window.runCompare());
    }
    QString names()
    {
        QStringList shown;
        for (int row = 0; row < model.rowCount(); ++row)
            shown << QFileInfo(model.index(row, FileListModel::NameColumn).data().toString())
                         .fileName();
        return shown.join(u' ');
    }
    QList<bool> marks()
    {
        QList<bool> m;
        for (size_t i = 1; i < engine.comparison().rows().size(); ++i)
            m.append(engine.comparison().rows()[i].Marked);
        return m;
    }
};

} // namespace

class TestFrmMain : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Edit marks the list changed even when cancelled: the dialog cannot tell the list which
    // button ended it. The outcome: the slot the dialog was shown for, the pairs, the current
    // slot, whether the list is changed and whether it is grey.
    void pairListCommands_data()
    {
        QTest::addColumn<int>("command"); // Add, Edit, Remove
        QTest::addColumn<int>("pairs");
        QTest::addColumn<bool>("dialogFills");
        QTest::addColumn<QString>("outcome");
        const auto row = [](const char *tag, int command, int pairs, bool fills,
                            const QString &outcome) {
            QTest::newRow(tag) << command << pairs << fills << outcome;
        };
        row("add cancelled", 0, 1, false, u"dialog 2, pairs 1, slot 1"_s);
        row("add accepted", 0, 1, true, u"dialog 2, pairs 2, slot 2, changed, grey"_s);
        row("edit cancelled", 1, 2, false, u"dialog 2, pairs 2, slot 2, changed, grey"_s);
        row("remove the only pair", 2, 1, false, u"dialog -1, pairs 0, slot 0, grey"_s);
        row("remove moves later pairs up", 2, 3, false, u"dialog -1, pairs 2, slot 2, grey"_s);
    }
    void pairListCommands()
    {
        QFETCH(int, command);
        QFETCH(int, pairs);
        QFETCH(bool, dialogFills);
        Fixture f(pairs);
        f.window.setCurrentSlot(qMin(pairs, 2));
        int shownFor = -1;
        f.window.runDirsDialog = [&](int slot) {
            shownFor = slot;
            if (dialogFills)
                f.engine.pairs[slot] = DirPair{u"/n"_s, u"/m"_s};
        };
        const std::array commands{&frmMain::cmdAdd_Click, &frmMain::cmdEdit_Click,
                                  &frmMain::cmdRemove_Click};
        (f.window.*commands[size_t(command)])();
        const int count = f.engine.pairs.count();
        QString outcome =
            u"dialog %1, pairs %2, slot %3"_s.arg(shownFor).arg(count).arg(f.window.currentSlot());
        outcome += (f.engine.ProfileModified ? u", changed"_s : u""_s);
        outcome += (f.window.isStale() ? u", grey"_s : u""_s);
        QTEST(outcome, "outcome");
        if (pairs == 3)
            QCOMPARE(f.engine.pairs[2].Source, u"/src3"_s);
    }

    // Synchronize says what it will do and touches nothing unless the answer is Yes; a list that
    // no longer matches the pairs is not acted on at all, not even from a row's popup menu.
    void synchronizeAfterItsQuestion_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<bool>("copied");
        QTest::newRow("answered Yes") << u"click"_s << Answer::Yes << true;
        QTest::newRow("answered No") << u"click"_s << Answer::No << false;
        QTest::newRow("-dontask asks nothing") << u"dontask"_s << Answer::No << true;
        QTest::newRow("grey list") << u"grey"_s << Answer::Yes << false;
        QTest::newRow("grey list, a row's popup menu") << u"popup"_s << Answer::Yes << false;
    }
    void synchronizeAfterItsQuestion()
    {
        QFETCH(QString, how);
        QFETCH(Answer, answer);
        TempTree t;
        Fixture f;
        const QAbstractItemModelTester tester(&f.model, Tester::QtTest);
        f.compare(t);
        f.engine.DontAsk = how == u"dontask";
        if (how == u"grey" || how == u"popup")
            f.window.greyFileList();
        f.ui.answers = {answer};
        QTableView *list = f.window.fileList();
        if (how == u"popup")
            Q_EMIT list->customContextMenuRequested(
                list->visualRect(list->model()->index(1, 0)).center());
        else
            f.window.cmdSynch_Click();
        QTEST(t.exists(u"dst/new.txt"_s), "copied");
        QVERIFY(t.exists(u"dst/old.txt"_s));
        QCOMPARE(f.ui.shown.isEmpty(), how == u"dontask");
        if (how == u"click")
            QVERIFY(f.ui.shown[0].text.startsWith(f.engine.FormatMsg(804) + u"\r\n\r\n"));
    }

    // The filter buttons choose the rows (the pair's root row is "src"); they change a list of
    // pairs, not an empty one. The side filters mean nothing for identical rows.
    void filterButtonsChooseTheRows_data()
    {
        QTest::addColumn<int>("bar");
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("rows");
        const QString all = u"src Case.txt new.txt old.txt sub same.txt"_s;
        QTest::newRow("all") << 1 << 0 << all;
        QTest::newRow("modified") << 1 << 1 << u"src new.txt old.txt"_s;
        QTest::newRow("towards the destination") << 1 << 2 << u"src new.txt"_s;
        QTest::newRow("towards the source") << 1 << 3 << u"src old.txt"_s;
        QTest::newRow("identical") << 1 << 4 << u"src Case.txt sub same.txt"_s;
        QTest::newRow("names alike") << 2 << 1 << u"sub same.txt"_s;
        QTest::newRow("names differ") << 2 << 2 << u"src Case.txt new.txt old.txt"_s;
        QTest::newRow("empty directories")
            << 0 << 0 << u"src Case.txt new.txt old.txt empty sub same.txt"_s;
        QTest::newRow("a direction") << 3 << 1 << all;
    }
    void filterButtonsChooseTheRows()
    {
        QFETCH(int, bar);
        QFETCH(int, key);
        Fixture f;
        for (int i = 0; i < 2; ++i) // twice, so that a switch ends as it began
            f.window.toolbarButton(bar, key)->trigger();
        QVERIFY(!f.engine.ProfileModified);
        TempTree t;
        t.file(u"src/Case.txt"_s, "case", 1700000000);
        t.file(u"dst/case.txt"_s, "case", 1700000000);
        t.dir(u"src/empty"_s);
        t.dir(u"dst/empty"_s);
        const QAbstractItemModelTester tester(&f.model, Tester::QtTest);
        f.compare(t);
        // A list rebuilt by a filter shows the engine's order again, whatever order it had.
        if (bar != 3)
            f.model.sort(FileListModel::NameColumn, Qt::DescendingOrder);
        f.window.toolbarButton(bar, key)->trigger();
        QTEST(f.names(), "rows");
        QVERIFY(f.engine.ProfileModified);
    }

    // Space on a selection sets every selected row as the first one flips. A check mark set in a
    // filtered list reaches the comparison's row that the list row shows, which is what
    // Synchronize reads; marking all leaves the hidden rows alone.
    void checkMarksReachTheRowsShown()
    {
        Fixture f;
        TextStore &texts = f.engine.comparison().texts();
        f.engine.comparison().editRows() = {CompareEntry{},
                                            fileRow(texts, u"a"_s, ModifiedInSource),
                                            fileRow(texts, u"same.txt"_s, Identical),
                                            fileRow(texts, u"new.txt"_s, ModifiedInSource),
                                            fileRow(texts, u"old.txt"_s, ModifiedInDestination)};
        f.engine.comparison().showRows({0, 1, 2, 4});
        QTableView *list = f.window.fileList();
        list->selectRow(0);
        list->selectionModel()->select(list->model()->index(1, 0),
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QTest::keyClick(list, Qt::Key_Space);
        QCOMPARE(f.marks(), (QList<bool>{false, false, true, true}));
        QTest::keyClick(list, Qt::Key_Space);
        QCOMPARE(f.marks(), (QList<bool>{true, true, true, true}));
        // Sorted by name the list reads a, old, same: a mark set on its second row is old's.
        f.model.sort(FileListModel::NameColumn, Qt::AscendingOrder);
        QVERIFY(f.model.setData(f.model.index(1, 0), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(f.marks(), (QList<bool>{true, true, true, false}));
        f.model.markAll(false);
        QCOMPARE(f.marks(), (QList<bool>{false, false, true, false}));
    }

    // The arrow cell shows what Synchronize will do, and changes as soon as a direction or a mark
    // does.
    void theArrowCellFollowsDirectionsAndMarks()
    {
        Fixture f;
        TextStore &texts = f.engine.comparison().texts();
        CompareEntry root;
        setPaths(root, texts, u"/s"_s, u"/d"_s);
        f.engine.comparison().editRows() = {CompareEntry{}, root,
                                            fileRow(texts, u"new"_s, ModifiedInSource)};
        f.engine.comparison().showRows({0, 2});
        f.engine.comparison().countStates();
        const auto button = [&](int key) { f.window.toolbarButton(3, key)->trigger(); };
        const auto tip = [&] {
            return f.model.index(0, FileListModel::StateColumn).data(Qt::ToolTipRole).toString();
        };
        QCOMPARE(tip(), f.engine.FormatMsg(1141)); // copy to the destination
        button(1);                                 // destination to source only
        QCOMPARE(tip(), f.engine.FormatMsg(1140));
        button(1); // both directions
        button(0); // source to destination only
        button(3); // with Delete: the new file goes
        QCOMPARE(tip(), f.engine.FormatMsg(1143));
        QVERIFY(f.model.setData(f.model.index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(tip(), f.engine.FormatMsg(1140));
    }

    // Leaving a changed list asks first (closing may be cancelled); a Save dialog cancelled after
    // Yes keeps everything. The window's placement is stored only by a close that goes through.
    void leavingAChangedList_data()
    {
        QTest::addColumn<bool>("load");
        QTest::addColumn<bool>("modified");
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<QString>("outcome"); // the file dialogs shown are each cancelled
        const auto row = [](const char *tag, bool load, bool modified, Answer answer,
                            const QString &outcome) {
            QTest::newRow(tag) << load << modified << answer << outcome;
        };
        row("close unchanged", false, false, Answer::Cancel, u"closed, placement stored"_s);
        row("close, Cancel", false, true, Answer::Cancel, u"asked; open"_s);
        row("close, No", false, true, Answer::No, u"asked; closed, placement stored"_s);
        row("close, Yes", false, true, Answer::Yes, u"asked; save dialog; open"_s);
        row("load unchanged", true, false, Answer::Cancel, u"load dialog; open, profile let go"_s);
        row("load, Yes", true, true, Answer::Yes, u"asked; save dialog; open"_s);
    }
    void leavingAChangedList()
    {
        QFETCH(bool, load);
        QFETCH(bool, modified);
        QFETCH(Answer, answer);
        Fixture f(2);
        ShellHooks hooks;
        Startup startup(f.engine, &f.window, hooks);
        f.window.show();
        f.engine.ProfilePath = u"/home/u/daily.dyp"_s;
        f.engine.ProfileModified = modified;
        QString outcome;
        f.window.chooseProfileFile = [&](bool save) {
            outcome += save ? u"save dialog; "_s : u"load dialog; "_s;
            return QString();
        };
        f.ui.answers = {answer};
        if (load)
            f.window.mnuPop1_Load_Click();
        else
            f.window.close();
        outcome.prepend(f.ui.shown.isEmpty() ? u""_s : u"asked; "_s);
        outcome += f.window.isVisible() ? u"open"_s : u"closed"_s;
        const bool stored = IniFile(f.engine.SettingsFile).contains(u"Form"_s, u"Pos"_s);
        outcome += stored ? u", placement stored"_s : u""_s;
        outcome += f.engine.ProfilePath.isEmpty() ? u", profile let go"_s : u""_s;
        QTEST(outcome, "outcome");
        QCOMPARE(f.ui.shown.size(), int(modified));
        if (modified && !load)
            QCOMPARE(f.ui.shown[0].buttons, Interaction::Buttons::YesNoCancel);
        QVERIFY(f.engine.pairs.count() == 2 && f.engine.ProfileModified == modified);
    }

    // A language chosen from the options menu shows at once, is stored, and formats the counts of
    // the last Compare again instead of bringing back "Not yet compared"; Qt's own texts follow.
    void languageSwitchRelocalizesAtOnce()
    {
        TempTree t;
        Fixture f;
        f.compare(t);
        // The program's interaction hands the engine's status texts to the window.
        for (int i = 0; i < 3; ++i)
            f.window.setStatusLabel(i, f.ui.statusLabels[i]);
        ShellHooks hooks;
        hooks.localize = [&] { f.window.localize(); };
        OptionsMenu menu(f.engine, &f.window, hooks);
        setModalRunner([](QDialog &dlg) {
            auto *combo = dlg.findChild<QComboBox *>(u"cboLanguage"_s);
            combo->setCurrentIndex(combo->findData(u"Deutsch"_s));
            dlg.findChild<QPushButton *>(u"cmdOK"_s)->click();
            return int(dlg.result());
        });
        menu.showLanguage();
        setModalRunner({});
        const auto reset = qScopeGuard([] { ApplyLanguageLocale(Language()); });
        QCOMPARE(f.window.findChild<QPushButton *>(u"cmdCompare"_s)->text(), u"&Vergleichen"_s);
        QCOMPARE(IniFile(f.engine.SettingsFile).readString(u"General"_s, u"Language"_s),
                 u"Deutsch"_s);
        QCOMPARE(f.window.statusLabel(0) + u", " + f.window.statusLabel(2),
                 u"3 Dateien, 1 Verzeichnis"_s);
        // Qt's own texts: the buttons of every question, dates and numbers.
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "&No"), u"&Nein"_s);
        QCOMPARE(QLocale().name(), u"de_DE"_s);
    }
};

QTEST_MAIN(TestFrmMain)
#include "tst_frmmain.moc"

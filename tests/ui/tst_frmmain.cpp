#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QToolBar>
#include <QtTest>

#include "common/fakeinteraction.h"
#include "common/rowbuilder.h"
#include "core/engine.h"
#include "localization/language.h"
#include "ui/dirpairmodel.h"
#include "ui/dlgdirs.h"
#include "ui/filelistmodel.h"
#include "ui/frmmain.h"
#include "ui/guiinteraction.h"
#include "ui/localizecontrols.h"

using namespace duomir;
using namespace duomir::test;
using namespace Qt::StringLiterals;
using Answer = Interaction::Answer;

namespace {

DirPair pair(const QString &source, const QString &destination)
{
    DirPair p;
    p.Source = source;
    p.Destination = destination;
    return p;
}

// A window over an engine with a scripted person; the pair dialog is replaced by `dialog`.
struct Fixture
{
    test::FakeInteraction ui;
    Engine engine{ui};
    frmMain window{engine};

    explicit Fixture(int pairs = 0)
    {
        for (int i = 1; i <= pairs; ++i)
            engine.pairs.append(pair(u"/src%1"_s.arg(i), u"/dst%1"_s.arg(i)));
        static_cast<DirPairModel *>(window.pairGrid()->model())->reload();
        window.runDirsDialog = [](int) {};
    }
};

} // namespace

class TestFrmMain : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Edit marks the list changed even when cancelled: the dialog cannot tell the list which
    // button ended it.
    void pairListCommands_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("pairs");
        QTest::addColumn<bool>("dialogFills");
        QTest::addColumn<int>("dialogSlot");
        QTest::addColumn<int>("slotAfter");
        QTest::addColumn<bool>("modified");
        QTest::addColumn<bool>("stale");
        QTest::newRow("add cancelled") << u"add"_s << 1 << false << 2 << 1 << false << false;
        QTest::newRow("add accepted") << u"add"_s << 1 << true << 2 << 2 << true << true;
        QTest::newRow("edit cancelled") << u"edit"_s << 2 << false << 2 << 2 << true << true;
        QTest::newRow("remove the only pair")
            << u"remove"_s << 1 << false << -1 << 0 << false << true;
        QTest::newRow("remove moves later pairs up")
            << u"remove"_s << 3 << false << -1 << 2 << false << true;
    }
    void pairListCommands()
    {
        QFETCH(QString, command);
        QFETCH(int, pairs);
        QFETCH(bool, dialogFills);
        QFETCH(int, dialogSlot);
        QFETCH(int, slotAfter);
        QFETCH(bool, modified);
        QFETCH(bool, stale);
        Fixture f(pairs);
        f.window.setCurrentSlot(qMin(pairs, 2));
        int shownFor = -1;
        f.window.runDirsDialog = [&](int slot) {
            shownFor = slot;
            if (dialogFills)
                f.engine.pairs[slot] = pair(u"/n"_s, u"/m"_s);
        };
        if (command == u"add")
            f.window.cmdAdd_Click();
        else if (command == u"edit")
            f.window.cmdEdit_Click();
        else
            f.window.cmdRemove_Click();

        const int count = command == u"remove" ? pairs - 1 : pairs + int(dialogFills);
        QCOMPARE(shownFor, dialogSlot);
        QCOMPARE(f.engine.pairs.count(), count);
        QCOMPARE(f.window.pairGrid()->model()->rowCount(), count);
        QCOMPARE(f.window.currentSlot(), slotAfter);
        QCOMPARE(f.engine.ProfileModified, modified);
        QCOMPARE(f.window.isStale(), stale);
        QCOMPARE(f.window.findChild<QPushButton *>(u"cmdRemove"_s)->isEnabled(), count > 0);
        if (command == u"remove" && count > 1)
            QCOMPARE(f.engine.pairs[2].Source, u"/src3"_s);
    }

    // Columns 2..6 show Su, SD, HD, SF, HF, which is not the record's field order.
    void clickOnSwitchCellToggles_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("changed");
        QTest::newRow("Su") << 2 << int(PairSwitch::SubDirs);
        QTest::newRow("SD") << 3 << int(PairSwitch::SysDirs);
        QTest::newRow("HD") << 4 << int(PairSwitch::HiddenDirs);
        QTest::newRow("SF") << 5 << int(PairSwitch::SysFiles);
        QTest::newRow("HF") << 6 << int(PairSwitch::HiddenFiles);
    }
    void clickOnSwitchCellToggles()
    {
        QFETCH(int, column);
        QFETCH(int, changed);
        Fixture f(2);
        f.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f.window));
        const DirPair before = f.engine.pairs[2];
        QTableView *grid = f.window.pairGrid();
        const QRect cell = grid->visualRect(grid->model()->index(1, column));
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
        for (int s = 0; s < PairSwitchCount; ++s) {
            const auto sw = static_cast<PairSwitch>(s);
            QCOMPARE(switchValue(f.engine.pairs[2], sw), switchValue(before, sw) != (s == changed));
        }
        QVERIFY(f.engine.pairs[1] == DirPair(pair(u"/src1"_s, u"/dst1"_s)));
        QVERIFY(f.window.isStale());
        QVERIFY(!f.engine.ProfileModified);
    }

    void doubleClickBelowRowsAdds()
    {
        Fixture f(1);
        f.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f.window));
        int shownFor = -1;
        f.window.runDirsDialog = [&](int slot) { shownFor = slot; };
        QTableView *grid = f.window.pairGrid();
        QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {},
                           QPoint(20, grid->viewport()->height() - 5));
        QCOMPARE(shownFor, 2);
        const QRect row = grid->visualRect(grid->model()->index(0, 0));
        QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, row.center());
        QCOMPARE(shownFor, 1);
    }

    // Space on a selection sets every selected row as the first one flips; others stay.
    void spaceFlipsSelectedMarks()
    {
        Fixture f;
        f.engine.CompareResults.resize(5);
        for (size_t i = 1; i < 5; ++i) {
            setNames(f.engine.CompareResults[i], f.engine.texts(), u"n%1"_s.arg(i), QString());
            f.engine.CompareResults[i].Marked = i != 2;
        }
        f.engine.VisibleRows = {0, 1, 2, 3, 4};
        f.window.fileModel()->reload();
        QTableView *list = f.window.fileList();
        list->selectRow(0);
        list->selectionModel()->select(list->model()->index(1, 0),
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QTest::keyClick(list, Qt::Key_Space);
        const auto marks = [&] {
            QList<bool> m;
            for (size_t i = 1; i < 5; ++i)
                m.append(f.engine.CompareResults[i].Marked);
            return m;
        };
        QCOMPARE(marks(), (QList<bool>{false, false, true, true}));
        QTest::keyClick(list, Qt::Key_Space);
        QCOMPARE(marks(), (QList<bool>{true, true, true, true}));
    }

    // A list that no longer matches the pairs is not acted on: neither Synchronize nor the
    // commands of a row's popup menu.
    void staleListIsNotActedOn_data()
    {
        QTest::addColumn<bool>("popup");
        QTest::newRow("Synchronize") << false;
        QTest::newRow("a row's popup menu") << true;
    }
    void staleListIsNotActedOn()
    {
        QFETCH(bool, popup);
        Fixture f(1);
        f.engine.CompareResults.resize(3);
        setNames(f.engine.CompareResults[1], f.engine.texts(), u"a"_s, QString());
        setNames(f.engine.CompareResults[2], f.engine.texts(), u"b"_s, QString());
        f.engine.VisibleRows = {0, 1, 2};
        f.window.fileModel()->reload();
        f.window.greyFileList();
        if (popup) {
            QTableView *list = f.window.fileList();
            const QRect row = list->visualRect(list->model()->index(1, 0));
            Q_EMIT list->customContextMenuRequested(row.center());
        } else {
            f.window.cmdSynch_Click();
        }
        QCOMPARE(f.ui.shown.size(), 1);
        QCOMPARE(f.ui.shown[0].icon, Interaction::Icon::Exclamation);
        QCOMPARE(f.ui.shown[0].buttons, Interaction::Buttons::Ok);
    }

    // Delete and Mirror may only go with exactly one direction; otherwise they are released and
    // off. Pressing one releases the other.
    void deleteButtonRule_data()
    {
        QTest::addColumn<bool>("src");
        QTest::addColumn<bool>("dest");
        QTest::addColumn<bool>("deleteEnabled");
        QTest::addColumn<int>("button"); // 3 Delete, 4 Mirror
        for (int button : {3, 4}) {
            const char *name = button == 3 ? "Delete" : "Mirror";
            QTest::addRow("%s, both directions", name) << true << true << false << button;
            QTest::addRow("%s, source only", name) << true << false << true << button;
            QTest::addRow("%s, destination only", name) << false << true << true << button;
            QTest::addRow("%s, none", name) << false << false << true << button;
        }
    }
    void deleteButtonRule()
    {
        QFETCH(bool, src);
        QFETCH(bool, dest);
        QFETCH(bool, deleteEnabled);
        QFETCH(int, button);
        Fixture f;
        QAction *srcButton = f.window.toolbarButton(3, 0);
        QAction *destButton = f.window.toolbarButton(3, 1);
        QAction *otherKind = f.window.toolbarButton(3, button == 3 ? 4 : 3);
        QAction *del = f.window.toolbarButton(3, button);
        bool &on = button == 3 ? f.engine.sync.Delete : f.engine.sync.Mirror;

        // Press the other kind, then this one while it is allowed, then move to the state under
        // test.
        destButton->trigger();
        otherKind->trigger();
        del->trigger();
        QVERIFY(on);
        QVERIFY(!otherKind->isChecked());
        QVERIFY(!(f.engine.sync.Delete && f.engine.sync.Mirror));
        if (srcButton->isChecked() != src)
            srcButton->trigger();
        if (destButton->isChecked() != dest)
            destButton->trigger();

        QCOMPARE(f.engine.sync.Src, src);
        QCOMPARE(f.engine.sync.Dest, dest);
        QCOMPARE(del->isEnabled(), deleteEnabled);
        QCOMPARE(on, deleteEnabled);
        QCOMPARE(del->isChecked(), deleteEnabled);
    }

    // The arrow cell shows what Synchronize will do, and changes as soon as a direction or a
    // mark does.
    void actionColumnFollowsTheButtons()
    {
        Fixture f;
        CompareEntry root;
        setPaths(root, f.engine.texts(), u"/s"_s, u"/d"_s);
        CompareEntry only;
        setPaths(only, f.engine.texts(), u"/s/"_s, u"/d/"_s);
        setNames(only, f.engine.texts(), u"new"_s, QString());
        only.State = ModifiedInSource;
        only.Marked = true;
        f.engine.CompareResults = {CompareEntry{}, root, only};
        f.engine.VisibleRows = {0, 2};
        f.engine.compareCounters = {1, 0, 0};
        FileListModel *model = f.window.fileModel();
        model->reload();
        const QModelIndex cell = model->index(0, FileListModel::StateColumn);
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        const auto tip = [&] { return cell.data(Qt::ToolTipRole).toString(); };
        QCOMPARE(tip(), f.engine.FormatMsg(1141)); // copy to the destination
        f.window.toolbarButton(3, 1)->trigger();   // destination to source only
        QCOMPARE(tip(), f.engine.FormatMsg(1140));
        f.window.toolbarButton(3, 1)->trigger();
        f.window.toolbarButton(3, 0)->trigger(); // source to destination only
        f.window.toolbarButton(3, 3)->trigger(); // with Delete: the new file goes
        QCOMPARE(tip(), f.engine.FormatMsg(1143));
        QVERIFY(!changed.isEmpty());
        QVERIFY(model->setData(model->index(0, FileListModel::MarkedColumn), Qt::Unchecked,
                               Qt::CheckStateRole));
        QCOMPARE(tip(), f.engine.FormatMsg(1140));
    }

    void filterClickMarksProfileOnlyWithPairs_data()
    {
        QTest::addColumn<int>("pairs");
        QTest::addColumn<int>("bar");
        QTest::addColumn<int>("key");
        QTest::newRow("file filter, empty list") << 0 << 1 << 2;
        QTest::newRow("file filter") << 1 << 1 << 2;
        QTest::newRow("side filter") << 1 << 2 << 1;
        QTest::newRow("empty directories") << 1 << 0 << 0;
        QTest::newRow("direction") << 1 << 3 << 1;
    }
    void filterClickMarksProfileOnlyWithPairs()
    {
        QFETCH(int, pairs);
        QFETCH(int, bar);
        QFETCH(int, key);
        Fixture f(pairs);
        f.window.toolbarButton(bar, key)->trigger();
        QCOMPARE(f.engine.ProfileModified, pairs > 0);
        if (bar == 1)
            QCOMPARE(f.engine.filter.FileFilter, key);
        if (bar == 2)
            QCOMPARE(f.engine.filter.SideFilter, key);
        if (bar == 0)
            QVERIFY(f.engine.filter.ShowEmptyDirs);
    }

    void identicalFilterDisablesSideToolbar()
    {
        Fixture f(1);
        auto *sideBar = f.window.findChild<QToolBar *>(u"tbar2"_s);
        f.window.toolbarButton(1, 4)->trigger();
        QVERIFY(!sideBar->isEnabled());
        f.window.toolbarButton(1, 1)->trigger();
        QVERIFY(sideBar->isEnabled());
    }

    void closeAsksToSaveModifiedList_data()
    {
        QTest::addColumn<bool>("modified");
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<int>("saveDialogs");
        QTest::newRow("unmodified closes unasked") << false << Answer::Cancel << true << 0;
        QTest::newRow("cancel keeps running") << true << Answer::Cancel << false << 0;
        QTest::newRow("no leaves without saving") << true << Answer::No << true << 0;
        QTest::newRow("yes, save dialog cancelled") << true << Answer::Yes << false << 1;
        QTest::newRow("yes, save dialog cancelled, a profile loaded")
            << true << Answer::Yes << false << 1;
    }
    void closeAsksToSaveModifiedList()
    {
        QFETCH(bool, modified);
        QFETCH(Answer, answer);
        QFETCH(bool, closes);
        QFETCH(int, saveDialogs);
        Fixture f(1);
        f.engine.ProfileModified = modified;
        if (QByteArray(QTest::currentDataTag()).endsWith("loaded"))
            f.engine.ProfilePath = u"/home/u/daily.dyp"_s;
        int dialogs = 0;
        f.window.chooseProfileFile = [&](bool save) {
            dialogs += save ? 1 : 100;
            return QString();
        };
        f.ui.answers = {answer};
        QCOMPARE(f.window.queryClose(), closes);
        QCOMPARE(f.ui.shown.size(), int(modified));
        if (modified)
            QCOMPARE(f.ui.shown[0].buttons, Interaction::Buttons::YesNoCancel);
        QCOMPARE(dialogs, saveDialogs);
    }

    // A cancelled Load dialog forgets the profile but keeps the list on screen.
    void loadCancelledForgetsPathKeepsList()
    {
        Fixture f(2);
        f.engine.ProfilePath = u"/somewhere/old.dyp"_s;
        f.window.chooseProfileFile = [](bool) { return QString(); };
        f.window.mnuPop1_Load_Click();
        QVERIFY(f.engine.ProfilePath.isEmpty());
        QCOMPARE(f.engine.pairs.count(), 2);
        QVERIFY(f.ui.shown.isEmpty());
    }

    // "Save first?" answered Yes and the Save dialog cancelled: no Load dialog, nothing replaced.
    void loadAfterCancelledSaveKeepsEverything()
    {
        Fixture f(2);
        f.engine.ProfilePath = u"/somewhere/old.dyp"_s;
        f.engine.ProfileModified = true;
        QStringList dialogs;
        f.window.chooseProfileFile = [&](bool save) {
            dialogs << (save ? u"save"_s : u"load"_s);
            return QString();
        };
        f.ui.answers = {Answer::Yes};
        f.window.mnuPop1_Load_Click();
        QCOMPARE(dialogs, QStringList{u"save"_s});
        QCOMPARE(f.engine.ProfilePath, u"/somewhere/old.dyp"_s);
        QVERIFY(f.engine.ProfileModified);
    }

    // A profile gets its ending unless the typed name has it already, in any letter case.
    void saveAddsTheProfileEnding_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("saved");
        QTest::newRow("a dot in the name") << u"Daily.backup"_s << u"Daily.backup.dyp"_s;
        QTest::newRow("no ending") << u"Daily"_s << u"Daily.dyp"_s;
        QTest::newRow("ending typed") << u"Daily.dyp"_s << u"Daily.dyp"_s;
        QTest::newRow("ending in capitals") << u"DAILY.DYP"_s << u"DAILY.DYP"_s;
    }
    void saveAddsTheProfileEnding()
    {
        QFETCH(QString, typed);
        QFETCH(QString, saved);
        QTemporaryDir dir;
        Fixture f(1);
        f.window.chooseProfileFile = [&](bool) { return dir.filePath(typed); };
        QVERIFY(f.window.mnuPop1_Save_Click());
        QCOMPARE(f.engine.ProfilePath, dir.filePath(saved));
        QVERIFY(QFile::exists(dir.filePath(saved)));
    }

    // In German the question's buttons, the file list's dates and Qt's own texts are German too.
    void messageButtonsSpeakTheLanguage()
    {
        GuiInteraction gui;
        Engine engine(gui);
        engine.language =
            Language::load(qEnvironmentVariable("DUOMIR_SHARE_DIR") + u"/Deutsch.lang"_s, &gui);
        frmMain window(engine);
        gui.setWindow(&window);
        window.localize();
        QStringList texts;
        QTimer::singleShot(0, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            for (QAbstractButton *b : box->buttons())
                texts << b->text();
            box->button(QMessageBox::No)->click();
        });
        QCOMPARE(
            gui.message(Interaction::Icon::Question, Interaction::Buttons::YesNoCancel, u"?"_s),
            Interaction::Answer::No);
        texts.sort();
        QCOMPARE(texts, (QStringList{u"&Ja"_s, u"&Nein"_s, u"Abbrechen"_s}));
        QCOMPARE(QLocale().name(), u"de_DE"_s);
        ApplyLanguageLocale(Language()); // the next tests run in the default language
    }

    // Every button of the four bars can be reached from the keyboard: a shortcut of its own,
    // named in its tool tip, and a name a screen reader can say.
    void barButtonsHaveShortcutsAndNames()
    {
        Fixture f;
        f.window.localize();
        QSet<QString> keys;
        for (int bar = 0; bar < 4; ++bar) {
            for (int key = 0; key < 5; ++key) {
                QAction *a = f.window.toolbarButton(bar, key);
                if (!a || !a->isVisible())
                    continue;
                const QString shortcut = a->shortcut().toString(QKeySequence::NativeText);
                QVERIFY2(!shortcut.isEmpty(), qPrintable(a->objectName()));
                QVERIFY(!keys.contains(shortcut));
                keys.insert(shortcut);
                QVERIFY2(a->toolTip().endsWith(u" (" + shortcut + u')'), qPrintable(a->toolTip()));
                QWidget *button =
                    f.window.findChild<QToolBar *>(u"tbar%1"_s.arg(bar))->widgetForAction(a);
                QVERIFY(button && !button->accessibleName().isEmpty());
                QVERIFY(!button->accessibleName().contains(shortcut));
            }
        }
        f.window.localize(); // again: the shortcut is named once
        QVERIFY(!f.window.toolbarButton(3, 4)->toolTip().contains(u") ("_s));
        f.window.show();
        QVERIFY(QTest::qWaitForWindowActive(&f.window));
        QTest::keyClick(&f.window, Qt::Key_Left, Qt::ControlModifier);
        QVERIFY(!f.engine.sync.Dest);
    }

    void statusAnimationSwingsBetweenOneAndNine()
    {
        Fixture f;
        f.window.setProgressAnimation(true);
        auto *timer = f.window.findChild<QTimer *>(u"tmrProgress"_s);
        QVERIFY(timer->isActive());
        QList<int> seen;
        for (int i = 0; i < 12; ++i) {
            f.window.tmrProgress_Timer();
            seen.append(int(f.window.statusLabel(0).size()));
        }
        QCOMPARE(seen, (QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 8, 7, 6}));
        f.window.setProgressAnimation(false);
        QVERIFY(!timer->isActive());
    }
};

class TestDlgDirs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_ui = test::FakeInteraction();
        m_engine = std::make_unique<Engine>(m_ui);
    }

    void newPairStartsWithPathsOfPairAbove()
    {
        m_engine->pairs.append(pair(u"/a"_s, u"/b"_s));
        const int slot = m_engine->pairs.append(DirPair::newFromSettings(m_engine->settings));
        dlgDirs dialog(*m_engine);
        dialog.Init(slot);
        QCOMPARE(dialog.pathBox(0)->text(), u"/a"_s);
        QCOMPARE(dialog.pathBox(1)->text(), u"/b"_s);
        QVERIFY(dialog.workingCopy().Source.isEmpty());
    }

    // A refused OK keeps the dialog open with the trailing separator already gone.
    void okTrimsSeparatorThenValidates()
    {
        m_engine->settings.SubDirs = true;
        const int slot = m_engine->pairs.append(DirPair::newFromSettings(m_engine->settings));
        dlgDirs dialog(*m_engine);
        dialog.Init(slot);
        dialog.pathBox(0)->setText(u"/data/"_s);
        dialog.pathBox(1)->setText(u"/data/copy/"_s);
        m_ui.answers = {Answer::No, Answer::Yes}; // 20830: the destination lies inside the source
        dialog.cmdOK_Click();
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QCOMPARE(dialog.pathBox(0)->text(), u"/data"_s);
        QVERIFY(m_engine->pairs[slot].Source.isEmpty());
        dialog.cmdOK_Click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(m_engine->pairs[slot].Destination, u"/data/copy"_s);
    }

    void subdirectoryControlsFollowTheSwitch()
    {
        DirPair p = pair(u"/a"_s, u"/b"_s);
        p.ExcludeDirs = u"tmp"_s;
        p.SubDirs = false;
        m_engine->pairs.append(p);
        dlgDirs dialog(*m_engine);
        dialog.Init(1);
        QVERIFY(!dialog.maskBox(0)->isEnabled() && !dialog.maskBox(1)->isEnabled());
        QVERIFY(dialog.maskBox(2)->isEnabled());
        dialog.subDirsBox()->click();
        QVERIFY(dialog.maskBox(1)->isEnabled());
        QCOMPARE(dialog.maskBox(1)->text(), u"tmp"_s);
        QVERIFY(dialog.workingCopy().SubDirs);
    }

private:
    test::FakeInteraction m_ui;
    std::unique_ptr<Engine> m_engine;
};

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    TestFrmMain main;
    TestDlgDirs dirs;
    return QTest::qExec(&main, argc, argv) | QTest::qExec(&dirs, argc, argv);
}

#include "tst_frmmain.moc"

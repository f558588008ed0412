#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include "base/inifile.h"
#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/engine.h"
#include "ui/dlgdirs.h"
#include "ui/dlglanguage.h"
#include "ui/dlgmakelink.h"
#include "ui/dlgoptions.h"
#include "ui/modal.h"

using namespace duomir;
using Answer = Interaction::Answer;

namespace {

template <class W> W *child(QWidget &dlg, const char *name)
{
    return dlg.findChild<W *>(QString::fromLatin1(name));
}

} // namespace

// The dialogs around the main window, each over an engine with a scripted person and its own
// program, share and settings folder.
class TestShellDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_ui = test::FakeInteraction();
        m_engine = std::make_unique<Engine>(m_ui);
        m_dir = std::make_unique<test::TempTree>();
        m_engine->ProgramFolder = m_engine->ShareFolder = m_dir->root();
        m_engine->SettingsFile = m_dir->path(u"Duomir.ini"_qs);
        m_engine->settings.SubDirs = true;
        m_engine->settings.TimeLag = 2.0 / 86400;
        m_beeps = 0;
        setBeeper([this] { ++m_beeps; });
    }

    void cleanup()
    {
        setBeeper({});
        dlgMakeLink::setFolderChooser({});
    }

    void timeLagLeavingTheBox_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("shownAfter");
        QTest::newRow("one full day") << u"24:00:00"_qs << false << u"24:00:00"_qs;
        QTest::newRow("minutes out of range") << u"00:60:00"_qs << false << u"00:60:00"_qs;
        QTest::newRow("last second of the day") << u"23:59:59"_qs << true << u"23:59:59"_qs;
        QTest::newRow("short form is normalised") << u"0:0:5"_qs << true << u"00:00:05"_qs;
    }
    // A time lag the box refuses is said at once, and the focus goes back into the box.
    void timeLagLeavingTheBox()
    {
        QFETCH(QString, typed);
        QFETCH(bool, accepted);
        dlgOptions dlg(*m_engine);
        dlg.show();
        QVERIFY(QTest::qWaitForWindowActive(&dlg));
        auto *lag = child<QLineEdit>(dlg, "txtTimeLag");
        lag->setFocus();
        lag->selectAll();
        QTest::keyClicks(lag, typed);
        child<QLineEdit>(dlg, "txtSearch1")->setFocus(Qt::TabFocusReason);
        QTEST(lag->text(), "shownAfter");
        QCOMPARE(m_ui.shown.size(), int(!accepted));
        if (!accepted)
            QTRY_VERIFY(lag->hasFocus());
    }

    // Apply stores and keeps the dialog open; Exit then drops only what came after.
    void optionsApplyStoresExitDiscards()
    {
        dlgOptions dlg(*m_engine);
        dlg.show();
        auto *apply = child<QPushButton>(dlg, "cmdApply");
        child<QCheckBox>(dlg, "chkSubDirs")->click();
        QTest::keyClicks(child<QLineEdit>(dlg, "txtSearch1"), u"Temp;Recycled"_qs);
        child<QLineEdit>(dlg, "txtTimeLag")->setText(u"01:00:00"_qs);
        child<QRadioButton>(dlg, "optKeep2")->click();
        child<QLineEdit>(dlg, "txtVersionsFolder")->setText(u"  Old  "_qs);
        QTest::mouseClick(apply, Qt::LeftButton);
        const Settings &s = m_engine->settings;
        QCOMPARE(s.ExcludeDirs, u"Temp;Recycled"_qs);
        QVERIFY(!s.SubDirs);
        QCOMPARE(s.TimeLag, 1.0 / 24);
        QCOMPARE(s.Versioning, int(Settings::ToVersionsFolder));
        QCOMPARE(s.VersionsFolder, u"Old"_qs);
        QVERIFY(dlg.isVisible());

        child<QCheckBox>(dlg, "chkLogToFile")->click();
        QTest::mouseClick(child<QPushButton>(dlg, "cmdExit"), Qt::LeftButton);
        QVERIFY(!dlg.isVisible() && !s.LogToFile);
        QCOMPARE(s.ExcludeDirs, u"Temp;Recycled"_qs);
    }

    // A new pair starts with the paths of the pair above. A refused OK keeps the dialog open with
    // the trailing separators already gone; the pair is written only once OK goes through.
    void pairDialogTrimsThenValidates()
    {
        m_engine->pairs.append({});
        m_engine->pairs[1].Source = u"/a"_qs;
        m_engine->pairs[1].Destination = u"/b"_qs;
        const int slot = m_engine->pairs.append(DirPair::newFromSettings(m_engine->settings));
        dlgDirs dialog(*m_engine);
        dialog.Init(slot);
        QCOMPARE(dialog.pathBox(0)->text(), u"/a"_qs);
        QCOMPARE(dialog.pathBox(1)->text(), u"/b"_qs);
        dialog.pathBox(0)->setText(u"/data/"_qs);
        dialog.pathBox(1)->setText(u"/data/copy/"_qs);
        m_ui.answers = {Answer::No, Answer::Yes}; // the destination lies inside the source
        dialog.cmdOK_Click();
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QCOMPARE(dialog.pathBox(0)->text(), u"/data"_qs);
        QVERIFY(m_engine->pairs[slot].Source.isEmpty());
        dialog.cmdOK_Click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(m_engine->pairs[slot].Destination, u"/data/copy"_qs);
    }

    // A cancelled folder choice keeps the dialog as it was; the launcher quotes a profile path
    // with blanks.
    void makeLinkWritesLauncher()
    {
        m_dir->dir(u"links"_qs);
        QString folder;
        dlgMakeLink::setFolderChooser(
            [&](QWidget *, const QString &, const QString &) { return folder; });
        m_engine->ProfilePath = u"/home/u/my lists/backup.dyp"_qs;
        dlgMakeLink dlg(*m_engine);
        dlg.show();
        auto *ok = child<QPushButton>(dlg, "cmdOK");
        QTest::keyClicks(child<QLineEdit>(dlg, "txtName"), u"Nightly backup"_qs);
        for (const char *box : {"chkAuto", "chkDontAsk", "chkHide"})
            child<QCheckBox>(dlg, box)->setChecked(true);
        QTest::mouseClick(ok, Qt::LeftButton);
        QVERIFY(dlg.isVisible());

        folder = m_dir->path(u"links"_qs);
        QTest::mouseClick(ok, Qt::LeftButton);
        QCOMPARE(dlg.result(), int(QDialog::Accepted));
        const QString text = QString::fromUtf8(m_dir->read(u"links/Nightly backup.desktop"_qs));
        QVERIFY2(text.contains(u" \"/home/u/my lists/backup.dyp\" -auto -dontask -hide\n"_qs),
                 qPrintable(text));
    }

    // The file may translate the language names themselves; the stored choice is the file's
    // name, matched exactly. Neither Escape nor OK leaves the dialog without a choice.
    void languageChoiceLoadsFile()
    {
        m_dir->file(u"Deutsch.lang"_qs,
                    "Deutsch=Deutsch (German)\n30001=Bitte Sprache auswählen!\n");
        m_dir->file(u"English.lang"_qs, "30001=Please select your language!\n");
        m_dir->file(u"notes.txt"_qs);
        m_engine->settings.Language = u"deutsch"_qs;
        {
            dlgLanguage none(*m_engine);
            none.show();
            QCOMPARE(child<QComboBox>(none, "cboLanguage")->currentIndex(), -1);
            QTest::keyClick(&none, Qt::Key_Escape);
            QTest::mouseClick(child<QPushButton>(none, "cmdOK"), Qt::LeftButton);
            QVERIFY(none.isVisible() && m_beeps == 2 && !QFile::exists(m_engine->SettingsFile));
        }
        m_engine->settings.Language = u"Deutsch"_qs;
        m_engine->language = Language::load(m_dir->path(u"Deutsch.lang"_qs), &m_ui);
        dlgLanguage dlg(*m_engine);
        auto *combo = child<QComboBox>(dlg, "cboLanguage");
        QCOMPARE(combo->count(), 2);
        QCOMPARE(combo->currentText(), u"Deutsch (German)"_qs);
        QCOMPARE(child<QLabel>(dlg, "lblSelect")->text(), u"Bitte Sprache auswählen!"_qs);

        combo->setCurrentIndex(combo->findData(u"English"_qs));
        QTest::mouseClick(child<QPushButton>(dlg, "cmdOK"), Qt::LeftButton);
        QCOMPARE(IniFile(m_engine->SettingsFile).readString(u"General"_qs, u"Language"_qs),
                 u"English"_qs);
        QCOMPARE(child<QLabel>(dlg, "lblSelect")->text(), u"Please select your language!"_qs);
    }

private:
    test::FakeInteraction m_ui;
    std::unique_ptr<Engine> m_engine;
    std::unique_ptr<test::TempTree> m_dir;
    int m_beeps = 0;
};

QTEST_MAIN(TestShellDialogs)
#include "tst_shelldialogs.moc"

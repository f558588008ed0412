#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

#include "common/fakeinteraction.h"
#include "core/engine.h"
#include "ui/dlgoptions.h"

using namespace duomir;

class TestDlgOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_ui = test::FakeInteraction();
        m_engine = std::make_unique<Engine>(m_ui);
        m_engine->settings.SubDirs = true;
        m_engine->settings.TimeLag = 2.0 / 86400;
    }

    void timeLagLeavingTheBox_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("shownAfter");

        QTest::newRow("one full day") << u"24:00:00"_qs << false << u"24:00:00"_qs;
        QTest::newRow("not a time") << u"abc"_qs << false << u"abc"_qs;
        QTest::newRow("minutes out of range") << u"00:60:00"_qs << false << u"00:60:00"_qs;
        QTest::newRow("last second of the day") << u"23:59:59"_qs << true << u"23:59:59"_qs;
        QTest::newRow("short form is normalised") << u"0:0:5"_qs << true << u"00:00:05"_qs;
        QTest::newRow("plain zero") << u"0"_qs << true << u"00:00:00"_qs;
    }

    void timeLagLeavingTheBox()
    {
        QFETCH(QString, typed);
        QFETCH(bool, accepted);
        QFETCH(QString, shownAfter);

        dlgOptions dlg(*m_engine);
        dlg.show();
        QVERIFY(QTest::qWaitForWindowActive(&dlg));
        leaveTimeLag(dlg, typed);

        QCOMPARE(child<QLineEdit>(dlg, "txtTimeLag")->text(), shownAfter);
        QCOMPARE(child<QPushButton>(dlg, "cmdApply")->isEnabled(), accepted);
        if (accepted) {
            QVERIFY(m_ui.shown.isEmpty());
            return;
        }
        QCOMPARE(m_ui.shown.size(), 1);
        QCOMPARE(m_ui.shown.first().icon, Interaction::Icon::Exclamation);
        // The focus goes back into the box once the message is gone.
        QTRY_VERIFY(child<QLineEdit>(dlg, "txtTimeLag")->hasFocus());
    }

    void subDirectoriesGreyDirectoryOptions()
    {
        dlgOptions dlg(*m_engine);
        auto *sub = child<QCheckBox>(dlg, "chkSubDirs");
        QVERIFY(sub->isChecked());
        sub->click();
        QVERIFY(!child<QCheckBox>(dlg, "chkSystem0")->isEnabled());
        QVERIFY(child<QCheckBox>(dlg, "chkSystem1")->isEnabled());
        QVERIFY(child<QPushButton>(dlg, "cmdApply")->isEnabled());
        sub->click();
        QVERIFY(child<QCheckBox>(dlg, "chkSystem0")->isEnabled());
    }

    // Apply stores and keeps the dialog open; Exit then drops only what came after.
    void applyStoresExitDiscards()
    {
        dlgOptions dlg(*m_engine);
        dlg.show();
        QSignalSpy applied(&dlg, &dlgOptions::optionsApplied);
        auto *apply = child<QPushButton>(dlg, "cmdApply");
        QVERIFY(!apply->isEnabled());
        QVERIFY(!child<QPushButton>(dlg, "cmdMakeLink")->isEnabled()); // no profile yet

        QTest::keyClicks(child<QLineEdit>(dlg, "txtSearch1"), u"Temp;Recycled"_qs);
        QTest::keyClicks(child<QLineEdit>(dlg, "txtSearch3"), u"*.tmp"_qs);
        child<QCheckBox>(dlg, "chkButtonBarsWithText")->click();
        child<QCheckBox>(dlg, "chkHidden1")->click();
        child<QLineEdit>(dlg, "txtTimeLag")->setText(u"01:00:00"_qs);
        auto *folder = child<QLineEdit>(dlg, "txtVersionsFolder");
        QVERIFY(!folder->isEnabled()); // the engine starts with nothing kept
        child<QRadioButton>(dlg, "optKeep2")->click();
        QVERIFY(folder->isEnabled());
        folder->setText(u"  Old  "_qs);
        QTest::mouseClick(apply, Qt::LeftButton);
        const Settings &s = m_engine->settings;
        QCOMPARE(s.ExcludeDirs, u"Temp;Recycled"_qs);
        QCOMPARE(s.ExcludeFiles, u"*.tmp"_qs);
        QVERIFY(s.ButtonBarsWithText);
        QVERIFY(s.HiddenFiles && !s.HiddenDirs);
        QCOMPARE(s.TimeLag, 1.0 / 24);
        QCOMPARE(s.Versioning, int(Settings::ToVersionsFolder));
        QCOMPARE(s.VersionsFolder, u"Old"_qs);
        QCOMPARE(applied.size(), 1);
        QVERIFY(dlg.isVisible());
        QVERIFY(!apply->isEnabled());

        child<QCheckBox>(dlg, "chkLogToFile")->click();
        child<QRadioButton>(dlg, "optKeep1")->click();
        QTest::keyClicks(child<QLineEdit>(dlg, "txtSearch1"), u";x"_qs);
        QTest::mouseClick(child<QPushButton>(dlg, "cmdExit"), Qt::LeftButton);
        QVERIFY(!dlg.isVisible());
        QVERIFY(!s.LogToFile);
        QCOMPARE(s.Versioning, int(Settings::ToVersionsFolder));
        QCOMPARE(s.ExcludeDirs, u"Temp;Recycled"_qs);

        m_engine->ProfilePath = u"/home/u/list.dyp"_qs;
        dlgOptions withProfile(*m_engine);
        QVERIFY(child<QPushButton>(withProfile, "cmdMakeLink")->isEnabled());
    }

private:
    template <class W> W *child(dlgOptions &dlg, const char *name)
    {
        auto *w = dlg.findChild<W *>(QString::fromLatin1(name));
        if (!w)
            qFatal("missing control %s", name);
        return w;
    }
    // Types `text` into the time lag box and moves the focus on, as a user leaving it would.

    test::FakeInteraction m_ui;
    std::unique_ptr<Engine> m_engine;

    void leaveTimeLag(dlgOptions &dlg, const QString &text)
    {
        auto *lag = child<QLineEdit>(dlg, "txtTimeLag");
        lag->setFocus();
        QVERIFY(lag->hasFocus());
        lag->selectAll();
        QTest::keyClicks(lag, text);
        child<QLineEdit>(dlg, "txtSearch1")->setFocus(Qt::TabFocusReason);
    }
};

QTEST_MAIN(TestDlgOptions)
#include "tst_dlgoptions.moc"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "base/inifile.h"
#include "common/fakeinteraction.h"
#include "core/engine.h"
#include "ui/dlgabout.h"
#include "ui/dlgdirs.h"
#include "ui/dlghint.h"
#include "ui/dlglanguage.h"
#include "ui/dlgmakelink.h"
#include "ui/dlgoptions.h"
#include "ui/frmmain.h"
#include "ui/helppage.h"
#include "ui/modal.h"

using namespace duomir;

namespace {

void writeFile(const QString &path, const QByteArray &content)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(content);
}

template <class W> W *child(QWidget &dlg, const char *name)
{
    auto *w = dlg.findChild<W *>(QString::fromLatin1(name));
    if (!w)
        qFatal("missing control %s", name);
    return w;
}

} // namespace

class TestShellDialogs : public QObject
{
    Q_OBJECT

public:
    // Receives what the dialogs hand to the desktop (links, help pages).
    Q_INVOKABLE void openUrl(const QUrl &url) { m_opened.append(url); }

private Q_SLOTS:
    void init()
    {
        m_ui = test::FakeInteraction();
        m_engine = std::make_unique<Engine>(m_ui);
        m_dir = std::make_unique<QTemporaryDir>();
        m_engine->ProgramFolder = m_dir->path();
        m_engine->ShareFolder = m_dir->path();
        m_engine->SettingsFile = m_dir->filePath(u"Duomir.ini"_qs);
        m_opened.clear();
        m_beeps = 0;
        setBeeper([this] { ++m_beeps; });
        for (const char *scheme : {"https", "mailto", "file"})
            QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "openUrl");
    }

    void cleanup()
    {
        setBeeper({});
        dlgMakeLink::setFolderChooser({});
        for (const char *scheme : {"https", "mailto", "file"})
            QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    }

    void makeLinkNeedsNameAndProfile()
    {
        dlgMakeLink dlg(*m_engine);
        auto *ok = child<QPushButton>(dlg, "cmdOK");
        QVERIFY(!ok->isEnabled());
        QVERIFY(!child<QCheckBox>(dlg, "chkAuto")->isEnabled());
        QTest::keyClicks(child<QLineEdit>(dlg, "txtName"), u"x"_qs);
        QVERIFY(ok->isEnabled());
        QTest::keyClick(child<QLineEdit>(dlg, "txtName"), Qt::Key_Backspace);
        QVERIFY(!ok->isEnabled());

        m_engine->ProfilePath = u"/p/list.dyp"_qs;
        dlgMakeLink withProfile(*m_engine);
        QVERIFY(child<QCheckBox>(withProfile, "chkAuto")->isEnabled());
    }

    // A cancelled folder choice keeps the dialog as it was; the launcher of an automatic run
    // quotes a profile path with blanks.
    void makeLinkWritesLauncher()
    {
        QTemporaryDir target;
        QString folder;
        dlgMakeLink::setFolderChooser(
            [&](QWidget *, const QString &, const QString &) { return folder; });
        m_engine->ProfilePath = u"/home/u/my lists/backup.dyp"_qs;
        dlgMakeLink dlg(*m_engine);
        dlg.show();
        child<QLineEdit>(dlg, "txtName")->setText(u"Nightly backup"_qs);
        child<QLineEdit>(dlg, "txtDescription")->setText(u"Mirror the photos"_qs);
        for (const char *box : {"chkAuto", "chkDontAsk", "chkHide"})
            child<QCheckBox>(dlg, box)->setChecked(true);
        QTest::mouseClick(child<QPushButton>(dlg, "cmdOK"), Qt::LeftButton);
        QVERIFY(dlg.isVisible());
        QCOMPARE(child<QLineEdit>(dlg, "txtName")->text(), u"Nightly backup"_qs);

        folder = target.path();
        QTest::mouseClick(child<QPushButton>(dlg, "cmdOK"), Qt::LeftButton);
        QCOMPARE(dlg.result(), int(QDialog::Accepted));
        QFile f(target.filePath(u"Nightly backup.desktop"_qs));
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(f.readAll());
        QVERIFY2(text.contains(u" \"/home/u/my lists/backup.dyp\" -auto -dontask -hide\n"_qs),
                 qPrintable(text));
        QVERIFY(text.contains(u"\nComment=Mirror the photos\n"_qs));
        QVERIFY(f.permissions() & QFileDevice::ExeOwner);
    }

    void languageCannotBeLeftWithoutChoice()
    {
        writeFile(m_dir->filePath(u"English.lang"_qs), "1=x\n");
        dlgLanguage dlg(*m_engine);
        dlg.show();
        QSignalSpy changed(&dlg, &dlgLanguage::languageChanged);
        QTest::keyClick(&dlg, Qt::Key_Escape);
        QVERIFY(dlg.isVisible());
        QTest::mouseClick(child<QPushButton>(dlg, "cmdOK"), Qt::LeftButton);
        QVERIFY(dlg.isVisible());
        QCOMPARE(m_beeps, 2);
        QCOMPARE(changed.size(), 0);
        QVERIFY(m_engine->settings.Language.isEmpty());
    }

    // The file may translate the language names themselves; the stored choice is the file's
    // name, matched exactly.
    void languageChoiceLoadsFile()
    {
        writeFile(m_dir->filePath(u"Deutsch.lang"_qs),
                  "Deutsch=Deutsch (German)\n30001=Bitte Sprache auswählen!\n");
        writeFile(m_dir->filePath(u"English.lang"_qs), "30001=Please select your language!\n");
        writeFile(m_dir->filePath(u"notes.txt"_qs), "");
        m_engine->settings.Language = u"deutsch"_qs;
        {
            dlgLanguage other(*m_engine);
            QCOMPARE(child<QComboBox>(other, "cboLanguage")->currentIndex(), -1);
        }
        m_engine->settings.Language = u"Deutsch"_qs;
        m_engine->language = Language::load(m_dir->filePath(u"Deutsch.lang"_qs), &m_ui);
        dlgLanguage dlg(*m_engine);
        auto *combo = child<QComboBox>(dlg, "cboLanguage");
        QCOMPARE(combo->count(), 2);
        QCOMPARE(combo->currentText(), u"Deutsch (German)"_qs);
        QCOMPARE(child<QLabel>(dlg, "lblSelect")->text(), u"Bitte Sprache auswählen!"_qs);

        QSignalSpy changed(&dlg, &dlgLanguage::languageChanged);
        combo->setCurrentIndex(combo->findData(u"English"_qs));
        QTest::mouseClick(child<QPushButton>(dlg, "cmdOK"), Qt::LeftButton);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(IniFile(m_engine->SettingsFile).readString(u"General"_qs, u"Language"_qs),
                 u"English"_qs);
        QCOMPARE(child<QLabel>(dlg, "lblSelect")->text(), u"Please select your language!"_qs);
    }

    void hintJoinsPartsAndStoresSwitch()
    {
        // Missing parts add nothing; the parts carry their own line breaks.
        loadLanguage("hint1=First\\r\\n\nhint3=Third\n");
        m_engine->settings.DontShowHint = true;
        dlgHint dlg(*m_engine);
        QCOMPARE(child<QPlainTextEdit>(dlg, "txtInfo")->toPlainText(), u"First\nThird"_qs);
        auto *again = child<QCheckBox>(dlg, "chkAgain");
        QVERIFY(again->isChecked());
        again->click();
        // Stored at once, so that the hint appears at the next start.
        QCOMPARE(IniFile(m_engine->SettingsFile).readString(u"General"_qs, u"DontShowHint"_qs),
                 u"0"_qs);
        QVERIFY(child<QLabel>(dlg, "lblVersion")->text().endsWith(QStringLiteral(DUOMIR_VERSION)));
    }

    void aboutLinks()
    {
        loadLanguage("homepage=https://example.invalid/duomir\nemail=team@example.invalid\n");
        dlgAbout dlg(*m_engine);
        dlg.show();
        Q_EMIT child<QLabel>(dlg, "lblHomePage")->linkActivated(u"#"_qs);
        Q_EMIT child<QLabel>(dlg, "lblMailTo")->linkActivated(u"#"_qs);
        QCOMPARE(m_opened.size(), 2);
        QCOMPARE(m_opened[0], QUrl(u"https://example.invalid/duomir"_qs));
        QCOMPARE(m_opened[1].scheme(), u"mailto"_qs);
        QCOMPARE(m_opened[1].path(), u"team@example.invalid"_qs);
        QCOMPARE(m_opened[1].query(QUrl::FullyDecoded),
                 u"subject=Duomir Version "_qs + QStringLiteral(DUOMIR_VERSION));
    }

    void f1OpensThePageOfItsWindow_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("page");
        QTest::newRow("main window") << u"frmMain"_qs << u"Main.htm"_qs;
        QTest::newRow("pair dialog") << u"dlgDirs"_qs << u"Dirs.htm"_qs;
        QTest::newRow("options") << u"dlgOptions"_qs << u"Options.htm"_qs;
        QTest::newRow("shortcut") << u"dlgMakeLink"_qs << u"Shortcut.htm"_qs;
    }

    // F1 in a window (over the main window, as the program opens them) opens that window's page in
    // the help folder of the current language.
    void f1OpensThePageOfItsWindow()
    {
        QFETCH(QString, window);
        QFETCH(QString, page);
        m_engine->settings.Language = u"English"_qs;
        HelpKey helpKey(*m_engine);
        qApp->installEventFilter(&helpKey);
        frmMain main(*m_engine);
        std::unique_ptr<QWidget> dialog;
        if (window == u"dlgDirs")
            dialog = std::make_unique<dlgDirs>(*m_engine, &main);
        else if (window == u"dlgOptions")
            dialog = std::make_unique<dlgOptions>(*m_engine, &main);
        else if (window == u"dlgMakeLink")
            dialog = std::make_unique<dlgMakeLink>(*m_engine, &main);
        QWidget *target = dialog ? dialog.get() : &main;
        target->show();
        QTest::keyClick(target, Qt::Key_F1);
        qApp->removeEventFilter(&helpKey);
        QCOMPARE(m_opened.size(), 1);
        QCOMPARE(m_opened.first().toLocalFile(), m_dir->filePath(u"Help/English/"_qs + page));
    }

private:
    test::FakeInteraction m_ui;
    std::unique_ptr<Engine> m_engine;
    std::unique_ptr<QTemporaryDir> m_dir;
    QList<QUrl> m_opened;
    int m_beeps = 0;

    void loadLanguage(const QByteArray &content)
    {
        const QString file = m_dir->filePath(u"Test.lang"_qs);
        writeFile(file, content);
        m_engine->settings.Language = u"Test"_qs;
        m_engine->language = Language::load(file, &m_ui);
    }
};

QTEST_MAIN(TestShellDialogs)
#include "tst_shelldialogs.moc"

#include <QDir>
#include <QTest>

#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "localization/language.h"

using namespace duomir;
using duomir::test::FakeInteraction;
using duomir::test::TempTree;

class TestLanguage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lookup_data();
    void lookup();
    void duplicates();
    void format_data();
    void format();
    void nothingLoaded();
    void available();
    void badInput_data();
    void badInput();
};

namespace {

Language loadText(TempTree &tree, const QByteArray &content, FakeInteraction *ui = nullptr)
{
    tree.file(u"Test.lang"_qs, content);
    return Language::load(tree.path(u"Test.lang"_qs), ui);
}

} // namespace

void TestLanguage::lookup_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("toolTip");

    const QByteArray refs("2000=Two\n2002=x|Tip two\n2001=:2000|:2002\n");
    QTest::newRow("references") << refs << u"2001"_qs << u"Two"_qs << u"Tip two"_qs;
    QTest::newRow("tool tip only")
        << QByteArray("2003=|Only a tip\n") << u"2003"_qs << QString() << u"Only a tip"_qs;
    QTest::newRow("third part ignored") << QByteArray("5=a|b|c\n") << u"5"_qs << u"a"_qs << u"b"_qs;
    QTest::newRow("one level only")
        << QByteArray("1=:2\n2=:3\n3=end\n") << u"1"_qs << u":3"_qs << QString();
    QTest::newRow("reference to nothing")
        << QByteArray("1=:9|:9\n") << u"1"_qs << QString() << QString();
    QTest::newRow("reference to other kind")
        << QByteArray("1=|:2\n2=text only\n") << u"1"_qs << QString() << QString();
    // The cut happens before the split: a tool tip beyond 254 characters is lost.
    QTest::newRow("value cut at 254") << "1=" + QByteArray(300, 'x') + "|tip\n"
                                      << u"1"_qs << QString(254, u'x') << QString();
    QTest::newRow("name keys ignore case")
        << QByteArray("English=Englisch\n") << u"ENGLISH"_qs << u"Englisch"_qs << QString();
    QTest::newRow("empty header section")
        << QByteArray("; texts\n[]\n5 = five \n") << u"5"_qs << u"five"_qs << QString();
    QTest::newRow("other sections ignored")
        << QByteArray("[Other]\n5=five\n") << u"5"_qs << QString() << QString();
    QTest::newRow("utf-8") << QByteArray("5=Schlie\xc3\x9f\x65n\n") << u"5"_qs << u"Schließen"_qs
                           << QString();
}

void TestLanguage::lookup()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, key);
    QFETCH(QString, text);
    QFETCH(QString, toolTip);
    TempTree tree;
    const Language lang = loadText(tree, content);
    QVERIFY(lang.isLoaded());
    QCOMPARE(lang.text(key), text);
    QCOMPARE(lang.toolTip(key), toolTip);
}

// The first entry is kept; every part the repeat fails to store is reported, so a repeat of a key
// that has text and tool tip is reported twice.
void TestLanguage::duplicates()
{
    TempTree tree;
    FakeInteraction ui;
    const Language lang = loadText(tree, "7=a|b\n8=x\n9=|t\n7=c\n8=y\n9=|u\n10=ok\n", &ui);
    QStringList texts;
    for (const FakeInteraction::Shown &m : std::as_const(ui.shown)) {
        QCOMPARE(m.icon, Interaction::Icon::Exclamation);
        QCOMPARE(m.buttons, Interaction::Buttons::Ok);
        QCOMPARE(m.title, tree.path(u"Test.lang"_qs));
        texts.append(m.text);
    }
    QCOMPARE(texts, (QStringList{u"Item 7 exists twice in language file!"_qs,
                                 u"Item 7 exists twice in language file!"_qs,
                                 u"Item 8 exists twice in language file!"_qs,
                                 u"Item 9 exists twice in language file!"_qs}));
    QCOMPARE(lang.text(u"7"_qs), u"a"_qs);
    QCOMPARE(lang.toolTip(u"9"_qs), u"t"_qs);
    QCOMPARE(lang.text(u"10"_qs), u"ok"_qs);
}

void TestLanguage::format_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<QStringList>("params");
    QTest::addColumn<QString>("message");

    QTest::newRow("markers and escapes")
        << QByteArray("Copy %1 to %2?\\r\\nSure?") << QStringList{u"a"_qs, u"b"_qs}
        << u"Copy a to b?\r\nSure?"_qs;
    QTest::newRow("parameter holds a later marker")
        << QByteArray("%1 and %2") << QStringList{u"%2"_qs, u"x"_qs} << u"x and x"_qs;
    QTest::newRow("%1 also hits %10")
        << QByteArray("%10") << QStringList{u"A"_qs, u"B"_qs, u"C"_qs, u"D"_qs, u"E"_qs,
                                            u"F"_qs, u"G"_qs, u"H"_qs, u"I"_qs, u"J"_qs}
        << u"A0"_qs;
    QTest::newRow("unused marker stays")
        << QByteArray("50%1 done") << QStringList{} << u"50%1 done"_qs;
    QTest::newRow("escapes in parameters too")
        << QByteArray("[%1]") << QStringList{u"C:\\new"_qs} << u"[C:\new]"_qs;
    QTest::newRow("marker case matters")
        << QByteArray("%1%2%3") << QStringList{u"x"_qs} << u"x%2%3"_qs;
}

void TestLanguage::format()
{
    QFETCH(QByteArray, entry);
    QFETCH(QStringList, params);
    QFETCH(QString, message);
    TempTree tree;
    const Language lang = loadText(tree, "1=" + entry + "\n2=|" + entry + "\n");
    QCOMPARE(lang.FormatMsg(u"1"_qs, params), message);
    const QString tip = lang.FormatToolTip(u"2"_qs, params);
    QCOMPARE(tip, message);
    QCOMPARE(lang.FormatMsg(u"404"_qs, params), QString());
}

void TestLanguage::nothingLoaded()
{
    TempTree tree;
    FakeInteraction ui;
    for (const Language &lang : {Language(), Language::load(tree.path(u"None.lang"_qs), &ui)}) {
        QVERIFY(!lang.isLoaded());
        QCOMPARE(lang.FormatMsg(u"800"_qs, {u"x"_qs}), QString());
        QCOMPARE(lang.text(u"800"_qs), QString());
    }
    QVERIFY(ui.shown.isEmpty());
}

void TestLanguage::available()
{
    TempTree tree;
    tree.file(u"English.lang"_qs, "1=x\n");
    tree.file(u"deutsch.lang"_qs, "1=x\n");
    tree.file(u"Pt.BR.lang"_qs, "1=x\n");
    tree.file(u"notes.txt"_qs);
    tree.file(u"Upper.LANG"_qs);
    tree.dir(u"Folder.lang"_qs);
    QCOMPARE(Language::available(tree.root()),
             (QStringList{u"deutsch"_qs, u"English"_qs, u"Pt.BR"_qs}));
    QCOMPARE(Language::filePath(tree.root(), u"English"_qs), tree.path(u"English.lang"_qs));
    QVERIFY(Language::available(tree.path(u"missing"_qs)).isEmpty());
}

void TestLanguage::badInput_data()
{
    QTest::addColumn<QByteArray>("content");
    QByteArray binary;
    for (int i = 0; i < 8192; ++i)
        binary.append(char((i * 131 + 7) % 256));
    QTest::newRow("binary") << binary;
    QTest::newRow("1 MB line") << "1=" + QByteArray(1 << 20, '|') + "\n2=ok\n";
    QTest::newRow("only bars") << QByteArray("1=|\n2=||\n3=\n=4\n");
}

void TestLanguage::badInput()
{
    QFETCH(QByteArray, content);
    TempTree tree;
    FakeInteraction ui;
    const Language lang = loadText(tree, content, &ui);
    QVERIFY(lang.isLoaded());
    QCOMPARE(lang.text(u"1"_qs), QString());
    QVERIFY(lang.FormatMsg(u"3"_qs, {u"%1"_qs}).isEmpty());

    // A language "file" that cannot be read loads nothing and reports nothing.
    ui.shown.clear();
    tree.dir(u"Dir.lang"_qs);
    QCOMPARE(Language::load(tree.path(u"Dir.lang"_qs), &ui).text(u"2"_qs), QString());
    QVERIFY(ui.shown.isEmpty());
}

QTEST_GUILESS_MAIN(TestLanguage)
#include "tst_language.moc"

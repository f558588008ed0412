#include <QDir>
#include <QTest>

#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "localization/language.h"

using namespace duomir;
using duomir::test::FakeInteraction;
using duomir::test::TempTree;

namespace {

Language loadText(TempTree &tree, const QByteArray &content, FakeInteraction *ui = nullptr)
{
    tree.file(u"Test.lang"_qs, content);
    return Language::load(tree.path(u"Test.lang"_qs), ui);
}

} // namespace

class TestLanguage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lookup_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("toolTip");
        const auto row = [](const char *name, const QByteArray &content, const char *key,
                            const QString &text, const QString &toolTip) {
            QTest::newRow(name) << content << QString::fromUtf8(key) << text << toolTip;
        };
        row("references", "2000=Two\n2002=x|Tip two\n2001=:2000|:2002\n", "2001", u"Two"_qs,
            u"Tip two"_qs);
        row("tool tip only", "2003=|Only a tip\n", "2003", QString(), u"Only a tip"_qs);
        row("third part ignored", "5=a|b|c\n", "5", u"a"_qs, u"b"_qs);
        row("one level only", "1=:2\n2=:3\n3=end\n", "1", u":3"_qs, QString());
        row("reference to nothing", "1=:9|:9\n", "1", QString(), QString());
        row("reference to other kind", "1=|:2\n2=text only\n", "1", QString(), QString());
        // The cut happens before the split: a tool tip beyond 254 characters is lost.
        row("value cut at 254", "1=" + QByteArray(300, 'x') + "|tip\n", "1", QString(254, u'x'),
            QString());
        row("name keys ignore case", "English=Englisch\n", "ENGLISH", u"Englisch"_qs, QString());
        row("first of a repeat wins, silently without a window", "7=a|b\n7=c|d\n", "7", u"a"_qs,
            u"b"_qs);
        row("empty parts not stored", "1=|\n2=||\n=4\n", "1", QString(), QString());
    }

    void lookup()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, key);
        TempTree tree;
        const Language lang = loadText(tree, content);
        QVERIFY(lang.isLoaded());
        QTEST(lang.text(key), "text");
        QTEST(lang.toolTip(key), "toolTip");
    }

    // Every part a repeat fails to store is reported (the first entry is kept: see lookup), so a
    // repeat of a key that has text and tool tip is reported twice.
    void duplicates()
    {
        TempTree tree;
        FakeInteraction ui;
        loadText(tree, "7=a|b\n8=x\n9=|t\n7=c\n8=y\n9=|u\n", &ui);
        QStringList texts;
        for (const FakeInteraction::Shown &m : std::as_const(ui.shown))
            texts.append(m.title + u": "_qs + m.text);
        const QString twice =
            tree.path(u"Test.lang"_qs) + u": Item %1 exists twice in language file!"_qs;
        QCOMPARE(texts, (QStringList{twice.arg(7), twice.arg(7), twice.arg(8), twice.arg(9)}));
    }

    void format_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<QStringList>("params");
        QTest::addColumn<QString>("message");

        const auto row = [](const char *tag, const char *entry, const QStringList &params,
                            const QString &message) {
            QTest::newRow(tag) << QByteArray(entry) << params << message;
        };
        row("markers and escapes", "Copy %1 to %2?\\r\\nSure?", {u"a"_qs, u"b"_qs},
            u"Copy a to b?\r\nSure?"_qs);
        row("parameter holds a later marker", "%1 and %2", {u"%2"_qs, u"x"_qs}, u"x and x"_qs);
        row("%1 also hits %10", "%10", u"A B C D E F G H I J"_qs.split(u' '), u"A0"_qs);
        row("unused marker stays", "50%1 done", {}, u"50%1 done"_qs);
        row("escapes in parameters too", "[%1]", {u"C:\\new"_qs}, u"[C:\new]"_qs);
    }

    void format()
    {
        QFETCH(QByteArray, entry);
        QFETCH(QStringList, params);
        QFETCH(QString, message);
        TempTree tree;
        const Language lang = loadText(tree, "1=" + entry + "\n2=|" + entry + "\n");
        QCOMPARE(lang.FormatMsg(u"1"_qs, params), message);
        QCOMPARE(lang.FormatToolTip(u"2"_qs, params), message);
        QCOMPARE(lang.FormatMsg(u"404"_qs, params), QString());
    }
};

QTEST_GUILESS_MAIN(TestLanguage)
#include "tst_language.moc"

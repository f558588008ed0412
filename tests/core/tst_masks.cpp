#include <QTest>

#include "core/masks.h"
#include "core/platform/nativename.h"

using namespace duomir;

class TestMasks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // One pattern is an include mask alone; a mask is patterns between semicolons.
    void masks_data()
    {
        QTest::addColumn<QString>("include");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("taken");
        QTest::addColumn<QString>("exclude");

        auto row = [](const char *tag, const char *p, const char *n, bool m, const char *x = "") {
            QTest::newRow(tag) << QString::fromUtf8(p) << QString::fromUtf8(n) << m
                               << QString::fromUtf8(x);
        };
        row("star takes a name without dot", "*", "Makefile", true);
        row("star takes the empty run", "A*", "a", true);
        row("star-dot-star needs a dot", "*.*", "Makefile", false);
        row("star-dot-star with dot", "*.*", "notes.txt", true);
        row("case ignored", "*.TXT", "Report.txt", true);
        row("whole name must match", "*.TXT", "report.txt.bak", false);
        row("question mark is one unit", "A?C", "abc", true);
        row("question mark needs one", "A?C", "ac", false);
        row("hash is a digit", "LOG#", "log7", true);
        row("hash is not itself", "LOG#", "log#", false);
        row("range", "[A-C]X", "bx", true);
        row("range outside", "[A-C]X", "dx", false);
        row("negated list", "[!0-9]*", "a1", true);
        row("negated list rejects", "[!0-9]*", "1a", false);
        row("list of singles", "[XYZ].C", "y.c", true);
        row("hyphen at end is literal", "[A-]", "-", true);
        row("unclosed bracket is literal", "[AB", "[ab", true);
        row("empty brackets match the empty text", "A[]B", "ab", true);
        row("backtracking star", "*AB*AB", "xabyyabzab", true);
        row("backtracking star fails", "*AB*AB", "xabyyabza", false);
        row("leading blank is kept", " *.DOC", "a.doc", false);
        row("leading blank matched", " *.DOC", " a.doc", true);
        row("non-ascii folds", "ÄR*", "ärger", true);
        row("tilde literal", "~*", "~report.doc", true);
        row("empty include admits nothing", "", "a", false);
        row("second include pattern", "*.TXT;*.DOC", "report.doc", true, "~*");
        row("exclude wins", "*.TXT;*.DOC", "~report.doc", false, "~*");
        row("blank after semicolon is part of the pattern", "*.TXT; *.DOC", "x.doc", false);
        row("empty pattern between semicolons matches only the empty name", "*.A;;*.B", "x.b",
            true);
    }
    void masks()
    {
        QFETCH(QString, include);
        QFETCH(QString, name);
        QFETCH(bool, taken);
        QFETCH(QString, exclude);
        QCOMPARE(MatchesMasks(name, MaskSet::fromTexts(include, exclude)), taken);
    }

    void nativeNamesRoundTrip_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("validUtf8");

        QTest::newRow("ascii") << QByteArray("plain.txt") << true;
        QTest::newRow("utf-8") << QByteArray("gr\xc3\xbc\xc3\x9f \xe2\x82\xac \xf0\x9f\x98\x80")
                               << true;
        QTest::newRow("latin-1 byte") << QByteArray("caf\xe9.txt") << false;
        QTest::newRow("truncated sequence") << QByteArray("a\xe2\x82") << false;
        QTest::newRow("overlong slash") << QByteArray("\xc0\xaf") << false;
        QTest::newRow("encoded surrogate") << QByteArray("\xed\xa0\x80") << false;
        QTest::newRow("beyond unicode") << QByteArray("\xf4\x90\x80\x80") << false;
        QTest::newRow("escape-looking text") << QByteArray("\xed\xb2\x80") << false;
    }

    // Every byte string survives decoding and encoding; valid UTF-8 decodes as Qt decodes it.
    void nativeNamesRoundTrip()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, validUtf8);
        const QString text = fromNative(bytes);
        QCOMPARE(toNative(text), bytes);
        if (validUtf8)
            QCOMPARE(text, QString::fromUtf8(bytes));
        else
            QVERIFY(text != QString::fromUtf8(bytes));
    }
};

QTEST_GUILESS_MAIN(TestMasks)
#include "tst_masks.moc"

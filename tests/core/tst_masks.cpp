#include <QTest>

#include "base/nativename.h"
#include "core/masks.h"

using namespace duomir;

class TestMasks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pattern_data();
    void pattern();
    void maskSet_data();
    void maskSet();
    void nativeNamesRoundTrip_data();
    void nativeNamesRoundTrip();
};

void TestMasks::pattern_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("matches");

    auto row = [](const char *tag, const char *p, const char *n, bool m) {
        QTest::newRow(tag) << QString::fromUtf8(p) << QString::fromUtf8(n) << m;
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
}

void TestMasks::pattern()
{
    QFETCH(QString, pattern);
    QFETCH(QString, name);
    QFETCH(bool, matches);
    QCOMPARE(WildcardPattern(pattern).matches(name), matches);
}

void TestMasks::maskSet_data()
{
    QTest::addColumn<QString>("include");
    QTest::addColumn<QString>("exclude");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("taken");

    QTest::newRow("empty include admits nothing") << QString() << QString() << u"a"_qs << false;
    QTest::newRow("empty exclude excludes nothing") << u"*"_qs << QString() << u"a"_qs << true;
    QTest::newRow("second include pattern")
        << u"*.TXT;*.DOC"_qs << u"~*"_qs << u"report.doc"_qs << true;
    QTest::newRow("exclude wins") << u"*.TXT;*.DOC"_qs << u"~*"_qs << u"~report.doc"_qs << false;
    QTest::newRow("blank after semicolon is part of the pattern")
        << u"*.TXT; *.DOC"_qs << QString() << u"x.doc"_qs << false;
    QTest::newRow("empty pattern between semicolons matches only the empty name")
        << u"*.A;;*.B"_qs << QString() << u"x.b"_qs << true;
}

void TestMasks::maskSet()
{
    QFETCH(QString, include);
    QFETCH(QString, exclude);
    QFETCH(QString, name);
    QFETCH(bool, taken);
    QCOMPARE(MatchesMasks(name, MaskSet::fromTexts(include, exclude)), taken);
}

void TestMasks::nativeNamesRoundTrip_data()
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
void TestMasks::nativeNamesRoundTrip()
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

QTEST_GUILESS_MAIN(TestMasks)
#include "tst_masks.moc"

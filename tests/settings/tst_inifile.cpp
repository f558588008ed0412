#include <QDir>
#include <QTest>
#include <climits>
#include <unistd.h>

#include "base/inifile.h"
#include "base/nativename.h"
#include "common/temptree.h"

using duomir::IniFile;
using duomir::test::TempTree;

namespace {

const QString Absent = QStringLiteral("<absent>");
const QByteArray NoFile("<none>");

// The path of a.ini in `tree`, holding `content` unless that is NoFile.
QString iniPath(TempTree &tree, const QByteArray &content)
{
    if (content != NoFile)
        tree.file(u"a.ini"_qs, content);
    return tree.path(u"a.ini"_qs);
}

} // namespace

class TestIniFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readString_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QByteArray &content, const char *section,
                            const char *key, const QString &expected) {
            QTest::newRow(name) << content << QString::fromUtf8(section) << QString::fromUtf8(key)
                                << expected;
        };
        row("key before first header", "1=one\n[S]\n1=two\n", "", "1", u"one"_qs);
        row("empty header", "; top\n[]\n5=five\n", "", "5", u"five"_qs);
        row("names ignore case", "[General]\nTimeLag=1\n", "gENERAL", "timelag", u"1"_qs);
        row("first key wins", "[S]\nk=1\nK=2\n", "S", "k", u"1"_qs);
        row("first section wins", "[S]\na=1\n[s]\na=2\nb=3\n", "S", "b", Absent);
        row("blanks dropped", "  [ S ]  \n\t k \t=  v a  \n", "S", "k", u"v a"_qs);
        row("double quotes", "[S]\nk= \" x \" \n", "S", "k", u" x "_qs);
        row("single quotes", "[S]\nk='x'\n", "S", "k", u"x"_qs);
        row("unmatched quotes kept", "[S]\nk=\"x'\n", "S", "k", u"\"x'"_qs);
        row("lone quote kept", "[S]\nk=\"\n", "S", "k", u"\""_qs);
        row("crlf", "[S]\r\nk=v\r\n", "S", "k", u"v"_qs);
        row("equals in value", "[S]\nk=a=b\n", "S", "k", u"a=b"_qs);
        row("comment is no key", "[S]\n;k=v\n", "S", ";k", Absent);
        row("empty value", "[S]\nk=\n", "S", "k", QString());
        row("utf-8", "[S]\nk=Gr\xc3\xbc\xc3\x9f\x65\n", "S", "k", u"Grüße"_qs);
        row("last line without end", "[S]\nk=v", "S", "k", u"v"_qs);
    }

    void readString()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, expected);
        TempTree tree;
        QCOMPARE(IniFile(iniPath(tree, content)).readString(section, key, Absent), expected);
    }

    void readInt_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("expected");
        // Letters, a sign and an absent key are in the settings file's own test.
        QTest::newRow("too big") << QByteArray("v=99999999999999999999") << INT_MAX;
        QTest::newRow("too small") << QByteArray("v=-99999999999") << INT_MIN;
    }

    void readInt()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, expected);
        TempTree tree;
        QCOMPARE(IniFile(iniPath(tree, "[S]\n" + line + "\n")).readInt(u"s"_qs, u"V"_qs, 42),
                 expected);
    }

    // The bytes are compared where a person editing the file would see a difference: comments,
    // line ends, where a new key lands, and values that would not survive as written.
    void write_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value"); // null deletes
        QTest::addColumn<QByteArray>("after");
        const auto row = [](const char *name, const QByteArray &before, const char *section,
                            const char *key, const QString &value, const QByteArray &after) {
            QTest::newRow(name) << before << QString::fromUtf8(section) << QString::fromUtf8(key)
                                << value << after;
        };
        row("replace in place, crlf kept", "; mine\r\n[A]\r\nk = old \r\nz=1\r\n", "a", "K",
            u"new"_qs, "; mine\r\n[A]\r\nk=new\r\nz=1\r\n");
        row("append key at end of section", "[A]\nx=1\n; note\n\n[B]\ny=2\n", "A", "k", u"v"_qs,
            "[A]\nx=1\n; note\nk=v\n\n[B]\ny=2\n");
        row("append section, crlf file without final end", "[A]\r\nx=1", "B", "k", u"v"_qs,
            "[A]\r\nx=1\r\n[B]\r\nk=v\r\n");
        row("null deletes every repeat", "[G]\nF=1\na=2\nf=3\n[H]\nf=4\n", "g", "f", QString(),
            "[G]\na=2\n[H]\nf=4\n");
        row("null on absent key", "[G]\r\na=2", "G", "f", QString(), "[G]\r\na=2");
        row("null creates no file", NoFile, "G", "f", QString(), NoFile);
        row("blanks survive the round trip", "[A]\n", "A", "k", u" v "_qs, "[A]\nk=\" v \"\n");
        row("line break cannot split the entry", "[A]\n", "A", "k", u"a\nb"_qs, "[A]\nk=a b\n");
        row("a path that is not utf-8 keeps its bytes", "[1]\n", "1", "S",
            duomir::fromNative("/d\xe9j\xe0"), "[1]\nS=/d\xe9j\xe0\n");
        row("invalid utf-8 elsewhere kept", "[A]\nx=\xff\xfe\nk=1\n", "A", "k", u"2"_qs,
            "[A]\nx=\xff\xfe\nk=2\n");
        // A damaged file stays as it was around the key written.
        row("nul bytes", QByteArray("[A]\0\nk\0=\0\n\0", 11), "General", "Language", u"English"_qs,
            QByteArray("[A]\0\nk\0=\0\n\0\n[General]\nLanguage=English\n", 39));
        row("only brackets", "[[[]]]\n]\n[\n=\n==\n", "General", "Language", u"English"_qs,
            "[[[]]]\n]\n[\n=\n==\n[General]\nLanguage=English\n");
    }

    void write()
    {
        QFETCH(QByteArray, before);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QByteArray, after);
        TempTree tree;
        IniFile ini(iniPath(tree, before));
        QVERIFY(ini.writeString(section, key, value));
        QCOMPARE(tree.exists(u"a.ini"_qs) ? tree.read(u"a.ini"_qs) : NoFile, after);
        // The object and a fresh reader agree with what was written; no temporary file is left.
        const QString expected = value.isNull() ? Absent : value.simplified();
        QCOMPARE(ini.readString(section, key, Absent).simplified(), expected);
        QCOMPARE(IniFile(ini.path()).readString(section, key, Absent).simplified(), expected);
        QCOMPARE(QDir(tree.root()).entryList(QDir::Files | QDir::Hidden).size(),
                 before == NoFile && after == NoFile ? 0 : 1);
    }

    // A write that cannot reach the disk fails, and leaves the file and the object as they were.
    void writeFailureLeavesFileAlone_data()
    {
        QTest::addColumn<int>("kind"); // 0: a file in a read-only folder, 1: no folder
        QTest::newRow("read-only folder") << 0;
        QTest::newRow("missing folder") << 1;
    }

    void writeFailureLeavesFileAlone()
    {
        QFETCH(int, kind);
        if (kind == 0 && geteuid() == 0)
            QSKIP("permissions do not bind root");
        const QString file = kind == 1 ? u"nowhere/a.ini"_qs : u"d/a.ini"_qs;
        TempTree tree;
        const QByteArray content("[A]\nk=1\n");
        tree.dir(u"d"_qs);
        if (kind == 0)
            tree.file(file, content);
        tree.setMode(u"d"_qs, kind == 0 ? 0555 : 0755);
        IniFile ini(tree.path(file));
        QVERIFY(!ini.writeString(u"A"_qs, u"k"_qs, u"2"_qs));
        QVERIFY(!ini.writeString(u"B"_qs, u"k"_qs, u"x"_qs));
        tree.setMode(u"d"_qs, 0755);
        QCOMPARE(tree.read(file), kind == 0 ? content : QByteArray());
        QCOMPARE(ini.readString(u"A"_qs, u"k"_qs), kind == 0 ? u"1"_qs : QString());
    }

    // Two programs writing the same settings file: a write must not undo what the other wrote,
    // also when the change shows only in the size (the clock did not tick) or only in the time.
    void writeKeepsWhatOthersWrote()
    {
        TempTree tree;
        tree.file(u"a.ini"_qs, "[A]\nk=1\n", 1000000000);
        IniFile mine(tree.path(u"a.ini"_qs));
        IniFile theirs(mine.path());
        QVERIFY(theirs.writeString(u"B"_qs, u"other"_qs, u"x"_qs));
        tree.setMtime(u"a.ini"_qs, 1000000000);
        QVERIFY(mine.writeString(u"A"_qs, u"k"_qs, u"2"_qs));
        tree.setMtime(u"a.ini"_qs, 1000000001);
        QVERIFY(theirs.writeString(u"B"_qs, u"other"_qs, u"y"_qs));
        QCOMPARE(tree.read(u"a.ini"_qs), QByteArray("[A]\nk=2\n[B]\nother=y\n"));
    }

    // A profile is saved in one batch: nothing reaches the disk before its end, and then the file
    // is what writing every key alone gives.
    void batchWritesMatchSingleWrites()
    {
        const QList<QStringList> writes = {
            {u"0"_qs, u"ED"_qs, u"1"_qs},  {u"1"_qs, u"S"_qs, u"/new"_qs},
            {u"2"_qs, u"S"_qs, u"/b"_qs},  {u"7"_qs, u"S"_qs, QString()},
            {QString(), u"k"_qs, u"v"_qs}, {u"1"_qs, u"X"_qs, u"x"_qs},
        };
        const QByteArray before(
            "; profile\r\n[0]\r\nED=0\r\n[7]\r\nS=/old\r\nD=/x\r\n[1]\r\nS=/a\r\n");
        TempTree tree;
        tree.file(u"single.dyp"_qs, before);
        tree.file(u"batch.dyp"_qs, before);
        IniFile single(tree.path(u"single.dyp"_qs));
        IniFile batch(tree.path(u"batch.dyp"_qs));
        batch.beginBatch();
        for (const QStringList &w : writes) {
            QVERIFY(single.writeString(w[0], w[1], w[2]));
            QVERIFY(batch.writeString(w[0], w[1], w[2]));
        }
        QCOMPARE(tree.read(u"batch.dyp"_qs), before);
        QVERIFY(batch.endBatch());
        QCOMPARE(tree.read(u"batch.dyp"_qs), tree.read(u"single.dyp"_qs));
    }
};

QTEST_GUILESS_MAIN(TestIniFile)
#include "tst_inifile.moc"

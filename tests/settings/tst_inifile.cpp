#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <climits>
#include <sys/stat.h>
#include <unistd.h>

#include "base/inifile.h"
#include "base/nativename.h"
#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/engine.h"
#include "core/profilefile.h"

using duomir::IniFile;
using duomir::test::TempTree;

class TestIniFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readString_data();
    void readString();
    void lists();
    void readInt_data();
    void readInt();
    void write_data();
    void write();
    void writeFailureLeavesFileAlone_data();
    void writeFailureLeavesFileAlone();
    void writeKeepsKeysAddedByOthers();
    void batchWritesMatchSingleWrites();
    void badInput_data();
    void badInput();
    void hostileProfiles_data();
    void hostileProfiles();
};

void TestIniFile::readString_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected"); // "<absent>" when the default must come back

    const QString absent = QStringLiteral("<absent>");
    QTest::newRow("key before first header")
        << QByteArray("1=one\n[S]\n1=two\n") << QString() << u"1"_qs << u"one"_qs;
    QTest::newRow("empty header") << QByteArray("; top\n[]\n5=five\n") << QString() << u"5"_qs
                                  << u"five"_qs;
    QTest::newRow("names ignore case")
        << QByteArray("[General]\nTimeLag=1\n") << u"gENERAL"_qs << u"timelag"_qs << u"1"_qs;
    QTest::newRow("first key wins")
        << QByteArray("[S]\nk=1\nK=2\n") << u"S"_qs << u"k"_qs << u"1"_qs;
    QTest::newRow("first section wins")
        << QByteArray("[S]\na=1\n[s]\na=2\nb=3\n") << u"S"_qs << u"b"_qs << absent;
    QTest::newRow("blanks dropped")
        << QByteArray("  [ S ]  \n\t k \t=  v a  \n") << u"S"_qs << u"k"_qs << u"v a"_qs;
    QTest::newRow("double quotes")
        << QByteArray("[S]\nk= \" x \" \n") << u"S"_qs << u"k"_qs << u" x "_qs;
    QTest::newRow("single quotes") << QByteArray("[S]\nk='x'\n") << u"S"_qs << u"k"_qs << u"x"_qs;
    QTest::newRow("unmatched quotes kept")
        << QByteArray("[S]\nk=\"x'\n") << u"S"_qs << u"k"_qs << u"\"x'"_qs;
    QTest::newRow("lone quote kept") << QByteArray("[S]\nk=\"\n") << u"S"_qs << u"k"_qs << u"\""_qs;
    QTest::newRow("crlf") << QByteArray("[S]\r\nk=v\r\n") << u"S"_qs << u"k"_qs << u"v"_qs;
    QTest::newRow("equals in value")
        << QByteArray("[S]\nk=a=b\n") << u"S"_qs << u"k"_qs << u"a=b"_qs;
    QTest::newRow("comment is no key")
        << QByteArray("[S]\n;k=v\n") << u"S"_qs << u";k"_qs << absent;
    QTest::newRow("empty value") << QByteArray("[S]\nk=\n") << u"S"_qs << u"k"_qs << QString();
    QTest::newRow("utf-8") << QByteArray("[S]\nk=Gr\xc3\xbc\xc3\x9f\x65\n") << u"S"_qs << u"k"_qs
                           << u"Grüße"_qs;
    QTest::newRow("last line without end")
        << QByteArray("[S]\nk=v") << u"S"_qs << u"k"_qs << u"v"_qs;
}

void TestIniFile::readString()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, expected);
    TempTree tree;
    tree.file(u"a.ini"_qs, content);
    const IniFile ini(tree.path(u"a.ini"_qs));
    QCOMPARE(ini.readString(section, key, u"<absent>"_qs), expected);
}

void TestIniFile::lists()
{
    TempTree tree;
    tree.file(u"a.ini"_qs, "x=0\n[B]\nk2=1\nk1=2\nK2=3\n[a]\n[b]\nk3=4\n[]\ny=5\n");
    IniFile ini(tree.path(u"a.ini"_qs));
    QCOMPARE(ini.sectionNames(), (QStringList{QString(), u"B"_qs, u"a"_qs}));
    QCOMPARE(ini.keys(u"b"_qs), (QStringList{u"k2"_qs, u"k1"_qs}));
    QCOMPARE(ini.keyLines(u"b"_qs), (QStringList{u"k2"_qs, u"k1"_qs, u"K2"_qs}));
    QCOMPARE(ini.keys(QString()), QStringList{u"x"_qs});
    QVERIFY(ini.keys(u"missing"_qs).isEmpty());

    // Callers pass the buffer they would have had; the default is cut the same way.
    QCOMPARE(ini.readString(u"B"_qs, u"k2"_qs, {}, 0), QString());
    QCOMPARE(ini.readString(u"B"_qs, u"nope"_qs, u"abcdef"_qs, 3), u"abc"_qs);
}

void TestIniFile::readInt_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("expected");
    QTest::newRow("plain") << QByteArray("v=7") << 7;
    QTest::newRow("letters") << QByteArray("v=abc") << 0;
    QTest::newRow("leading digits") << QByteArray("v=12ab") << 12;
    QTest::newRow("sign") << QByteArray("v=-3x") << -3;
    QTest::newRow("plus and blanks") << QByteArray("v=  +5 ") << 5;
    QTest::newRow("quoted") << QByteArray("v=\"8\"") << 8;
    QTest::newRow("empty gives default") << QByteArray("v=") << 42;
    QTest::newRow("absent gives default") << QByteArray("w=1") << 42;
    QTest::newRow("too big") << QByteArray("v=99999999999999999999") << INT_MAX;
    QTest::newRow("too small") << QByteArray("v=-99999999999") << INT_MIN;
}

void TestIniFile::readInt()
{
    QFETCH(QByteArray, line);
    QFETCH(int, expected);
    TempTree tree;
    tree.file(u"a.ini"_qs, "[S]\n" + line + "\n");
    QCOMPARE(IniFile(tree.path(u"a.ini"_qs)).readInt(u"s"_qs, u"V"_qs, 42), expected);
}

void TestIniFile::write_data()
{
    QTest::addColumn<QByteArray>("before"); // "<none>" for no file
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("after");

    QTest::newRow("new file") << QByteArray("<none>") << u"General"_qs << u"Language"_qs
                              << u"English"_qs << QByteArray("[General]\nLanguage=English\n");
    QTest::newRow("replace in place, crlf kept")
        << QByteArray("; mine\r\n[A]\r\nk = old \r\nz=1\r\n") << u"a"_qs << u"K"_qs << u"new"_qs
        << QByteArray("; mine\r\n[A]\r\nk=new\r\nz=1\r\n");
    QTest::newRow("append key at end of section")
        << QByteArray("[A]\nx=1\n; note\n\n[B]\ny=2\n") << u"A"_qs << u"k"_qs << u"v"_qs
        << QByteArray("[A]\nx=1\n; note\nk=v\n\n[B]\ny=2\n");
    QTest::newRow("append section, crlf file without final end")
        << QByteArray("[A]\r\nx=1") << u"B"_qs << u"k"_qs << u"v"_qs
        << QByteArray("[A]\r\nx=1\r\n[B]\r\nk=v\r\n");
    QTest::newRow("null deletes every repeat")
        << QByteArray("[G]\nF=1\na=2\nf=3\n[H]\nf=4\n") << u"g"_qs << u"f"_qs << QString()
        << QByteArray("[G]\na=2\n[H]\nf=4\n");
    QTest::newRow("null on absent key")
        << QByteArray("[G]\r\na=2") << u"G"_qs << u"f"_qs << QString() << QByteArray("[G]\r\na=2");
    QTest::newRow("null creates no file")
        << QByteArray("<none>") << u"G"_qs << u"f"_qs << QString() << QByteArray("<none>");
    QTest::newRow("empty section goes first") << QByteArray("[A]\nx=1\n") << QString() << u"1"_qs
                                              << u"v"_qs << QByteArray("1=v\n[A]\nx=1\n");
    QTest::newRow("blanks survive the round trip")
        << QByteArray("[A]\n") << u"A"_qs << u"k"_qs << u" v "_qs << QByteArray("[A]\nk=\" v \"\n");
    QTest::newRow("line break cannot split the entry")
        << QByteArray("[A]\n") << u"A"_qs << u"k"_qs << u"a\nb"_qs << QByteArray("[A]\nk=a b\n");
    QTest::newRow("a path that is not utf-8 keeps its bytes")
        << QByteArray("[1]\n") << u"1"_qs << u"S"_qs
        << duomir::fromNative(QByteArray("/d\xe9j\xe0")) << QByteArray("[1]\nS=/d\xe9j\xe0\n");
    QTest::newRow("invalid utf-8 elsewhere kept")
        << QByteArray("[A]\nx=\xff\xfe\nk=1\n") << u"A"_qs << u"k"_qs << u"2"_qs
        << QByteArray("[A]\nx=\xff\xfe\nk=2\n");
}

void TestIniFile::write()
{
    QFETCH(QByteArray, before);
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(QByteArray, after);
    const QByteArray none("<none>");
    TempTree tree;
    if (before != none)
        tree.file(u"a.ini"_qs, before);
    IniFile ini(tree.path(u"a.ini"_qs));
    QVERIFY(ini.writeString(section, key, value));
    QCOMPARE(tree.exists(u"a.ini"_qs) ? tree.read(u"a.ini"_qs) : none, after);
    // The object and a fresh reader agree with what was written.
    const QString expected = value.isNull() ? u"<absent>"_qs : value.simplified();
    QCOMPARE(ini.readString(section, key, u"<absent>"_qs).simplified(), expected);
    QCOMPARE(IniFile(ini.path()).readString(section, key, u"<absent>"_qs).simplified(), expected);
    QCOMPARE(QDir(tree.root()).entryList(QDir::Files | QDir::Hidden).size(),
             before == none && after == none ? 0 : 1);
}

void TestIniFile::writeFailureLeavesFileAlone_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("read-only folder") << u"readonly"_qs;
    QTest::newRow("missing folder") << u"missing"_qs;
    QTest::newRow("path is a folder") << u"folder"_qs;
}

void TestIniFile::writeFailureLeavesFileAlone()
{
    QFETCH(QString, how);
    TempTree tree;
    const QByteArray content("[A]\nk=1\n");
    QString path = tree.path(u"d/a.ini"_qs);
    if (how == u"readonly") {
        if (geteuid() == 0)
            QSKIP("permissions do not bind root");
        tree.file(u"d/a.ini"_qs, content);
        tree.setMode(u"d"_qs, 0555);
    } else if (how == u"missing") {
        path = tree.path(u"nowhere/a.ini"_qs);
    } else {
        tree.dir(u"d/a.ini"_qs);
    }
    IniFile ini(path);
    QVERIFY(!ini.writeString(u"A"_qs, u"k"_qs, u"2"_qs));
    QVERIFY(!ini.writeString(u"B"_qs, u"k"_qs, QString(u"x"_qs)));
    if (how == u"readonly") {
        QCOMPARE(tree.read(u"d/a.ini"_qs), content);
        QCOMPARE(ini.readString(u"A"_qs, u"k"_qs), u"1"_qs);
        tree.setMode(u"d"_qs, 0755);
    }
    QVERIFY(!QFile::exists(tree.path(u"nowhere"_qs)));
}

// Two programs writing the same settings file: the second write must not drop the first one's key.
void TestIniFile::writeKeepsKeysAddedByOthers()
{
    TempTree tree;
    tree.file(u"a.ini"_qs, "[A]\nk=1\n");
    IniFile mine(tree.path(u"a.ini"_qs));
    IniFile theirs(tree.path(u"a.ini"_qs));
    QVERIFY(theirs.writeString(u"B"_qs, u"other"_qs, u"long enough to change the size"_qs));
    QVERIFY(mine.writeString(u"A"_qs, u"k"_qs, u"2"_qs));
    QCOMPARE(tree.read(u"a.ini"_qs),
             QByteArray("[A]\nk=2\n[B]\nother=long enough to change the size\n"));
}

// A profile is saved in one batch; the file must come out as if every key had been written alone.
void TestIniFile::batchWritesMatchSingleWrites()
{
    struct Write
    {
        QString section, key, value;
    };
    const QList<Write> writes = {
        {u"0"_qs, u"ED"_qs, u"1"_qs},  {u"1"_qs, u"S"_qs, u"/new"_qs},
        {u"1"_qs, u"X"_qs, u"x"_qs},   {u"0"_qs, u"F1"_qs, u"2"_qs},
        {u"2"_qs, u"S"_qs, u"/b"_qs},  {u"2"_qs, u"D"_qs, u"/c"_qs},
        {u"7"_qs, u"S"_qs, QString()}, {u"1"_qs, u"D"_qs, u"/d"_qs},
        {QString(), u"k"_qs, u"v"_qs}, {u"0"_qs, u"SO3"_qs, u"0"_qs},
    };
    const QByteArray before("; profile\r\n[0]\r\nED=0\r\n[7]\r\nS=/old\r\nD=/x\r\n[1]\r\nS=/a\r\n");
    TempTree tree;
    tree.file(u"single.dyp"_qs, before);
    tree.file(u"batch.dyp"_qs, before);
    IniFile single(tree.path(u"single.dyp"_qs));
    for (const Write &w : writes)
        QVERIFY(single.writeString(w.section, w.key, w.value));
    IniFile batch(tree.path(u"batch.dyp"_qs));
    batch.beginBatch();
    for (const Write &w : writes)
        QVERIFY(batch.writeString(w.section, w.key, w.value));
    QCOMPARE(tree.read(u"batch.dyp"_qs), before); // nothing on disk before the end
    QVERIFY(batch.endBatch());
    QCOMPARE(tree.read(u"batch.dyp"_qs), tree.read(u"single.dyp"_qs));
    for (const Write &w : writes)
        QCOMPARE(batch.readString(w.section, w.key, u"<absent>"_qs),
                 IniFile(batch.path()).readString(w.section, w.key, u"<absent>"_qs));
}

void TestIniFile::badInput_data()
{
    QTest::addColumn<QByteArray>("content");
    QByteArray binary;
    for (int i = 0; i < 4096; ++i)
        binary.append(char((i * 7919) % 256));
    QTest::newRow("binary") << binary;
    QTest::newRow("1 MB line") << "[A]\nk=" + QByteArray(1 << 20, 'x') + "\n";
    QTest::newRow("nul bytes") << QByteArray("[A]\0\nk\0=\0\n", 11);
    QTest::newRow("only brackets") << QByteArray("[[[]]]\n]\n[\n=\n==\n");
}

void TestIniFile::badInput()
{
    QFETCH(QByteArray, content);
    TempTree tree;
    tree.file(u"a.ini"_qs, content);
    IniFile ini(tree.path(u"a.ini"_qs));
    QCOMPARE(ini.readInt(u"General"_qs, u"SubDirs"_qs, 1), 1);
    QVERIFY(ini.readString(u"A"_qs, u"k"_qs, {}, 254).size() <= 254);
    // Writing one key leaves every other byte of the damaged file as it was.
    QVERIFY(ini.writeString(u"General"_qs, u"Language"_qs, u"English"_qs));
    QVERIFY(tree.read(u"a.ini"_qs).startsWith(content));
    QCOMPARE(IniFile(ini.path()).readString(u"General"_qs, u"Language"_qs), u"English"_qs);
}

void TestIniFile::hostileProfiles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("message"); // what the person is told
    QTest::newRow("FIFO") << u"fifo"_qs << 805;
    QTest::newRow("/dev/zero") << u"/dev/zero"_qs << 805;
    QTest::newRow("/dev/urandom") << u"/dev/urandom"_qs << 805;
    QTest::newRow("a directory") << u"dir"_qs << 805;
    QTest::newRow("100 MB") << u"big"_qs << 805;
    QTest::newRow("NUL inside the source path") << u"nul"_qs << 806;
}

// A profile path that names something other than a sane profile ends within a second with the
// message for an unreadable profile; a source path with a NUL in it names no directory.
void TestIniFile::hostileProfiles()
{
    QFETCH(QString, kind);
    QFETCH(int, message);
    TempTree tree;
    QString path = tree.path(u"p.dyp"_qs);
    if (kind == u"fifo") {
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    } else if (kind.startsWith(u'/')) {
        path = kind;
    } else if (kind == u"dir") {
        tree.dir(u"p.dyp"_qs);
    } else if (kind == u"big") {
        QFile big(path);
        QVERIFY(big.open(QIODevice::WriteOnly) && big.resize(100 << 20));
    } else {
        tree.dir(u"d"_qs);
        tree.file(u"p.dyp"_qs,
                  "[1]\nS=" + QFile::encodeName(tree.root()) + QByteArray("\0junk", 5) +
                      "\nD=" + QFile::encodeName(tree.path(u"d"_qs)) + "\nIS=*\nIF=*\n");
    }
    duomir::test::FakeInteraction ui;
    duomir::Engine engine(ui);
    engine.language = duomir::Language::load(
        qEnvironmentVariable("DUOMIR_SHARE_DIR") + u"/English.lang"_qs, nullptr);
    engine.ProfilePath = path;
    QElapsedTimer clock;
    clock.start();
    duomir::LoadProfile(engine);
    QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(ui.shown.size(), 1);
    QCOMPARE(
        ui.shown[0].text,
        engine.FormatMsg(message, {message == 805 ? path : tree.root() + QChar(0) + u"junk/"_qs}));
    QVERIFY(!ui.shown[0].text.isEmpty());
}

QTEST_GUILESS_MAIN(TestIniFile)
#include "tst_inifile.moc"

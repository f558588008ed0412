#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include "common/clirun.h"
#include "common/temptree.h"

using namespace duomir::test;
using Run = CliRun;

namespace {

constexpr qint64 T0 = 1'700'000'000;

QList<QByteArray> linesWith(const QList<QByteArray> &lines, const QByteArray &part)
{
    QList<QByteArray> out;
    for (const QByteArray &l : lines) {
        if (l.contains(part))
            out << l;
    }
    return out;
}

Run runCompare(const QStringList &args, const QString &home)
{
    return runCli(QStringList{u"compare"_qs} + args, home);
}

} // namespace

class TestCliCompare : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void tsvRowsAndRawNames();
    void jsonAndFilters();
    void exitCodes_data();
    void exitCodes();
    void rawBytesInArguments();

private:
    TempTree m_tree;
};

void TestCliCompare::initTestCase()
{
    m_tree.file(u"s/same.txt"_qs, "abc", T0);
    m_tree.file(u"d/same.txt"_qs, "abc", T0);
    m_tree.file(u"s/new.txt"_qs, "12345", T0 + 100);
    m_tree.file(u"d/new.txt"_qs, "12", T0);
    m_tree.file(u"s/tab\tname"_qs, "", T0);
    m_tree.file(u"d/Sub/deep.bin"_qs, "x", T0);
    m_tree.rawFile("s/caf\xe9");
    m_tree.dir(u"home"_qs);
    m_tree.dir(u"d2"_qs);
    m_tree.file(u"p.dyp"_qs, "[1]\nS=" + QFile::encodeName(m_tree.path(u"s"_qs)) + "\nD=" +
                                 QFile::encodeName(m_tree.path(u"d"_qs)) + "\nIS=*\nIF=*\n");
}

// Header, one line per row, sizes in bytes, raw non-UTF-8 bytes and an escaped tab.
void TestCliCompare::tsvRowsAndRawNames()
{
    const Run r = runCompare(
        {u"--source"_qs, m_tree.path(u"s"_qs), u"--destination"_qs, m_tree.path(u"d"_qs)},
        m_tree.path(u"home"_qs));
    QCOMPARE(r.code, 0);
    const QList<QByteArray> lines = r.out.split('\n');
    QCOMPARE(lines.first(), QByteArray("state\tmarked\tkind\tsource\tdestination\tsource_size\t"
                                       "destination_size\tsource_modified\t"
                                       "destination_modified"));
    const QByteArray s = QFile::encodeName(m_tree.path(u"s/"_qs));
    const QByteArray d = QFile::encodeName(m_tree.path(u"d/"_qs));
    QVERIFY(lines.contains(QByteArray("-1\t1\tf\t" + s + "caf\xe9\t\t0\t\t" +
                                      linesWith(lines, "caf").first().split('\t').at(7) + "\t")));
    QVERIFY(linesWith(lines, "new.txt")
                .first()
                .startsWith(QByteArray("-1\t1\tf\t" + s + "new.txt\t" + d + "new.txt\t5\t2\t")));
    QVERIFY(linesWith(lines, "same.txt").first().startsWith("0\t0\tf\t"));
    QCOMPARE(linesWith(lines, "tab\\tname").size(), 1);
    QVERIFY(lines.contains(QByteArray("1\t1\td\t\t" + d + "Sub\t\t\t\t")));
    QCOMPARE(linesWith(lines, "deep.bin").size(), 1);
    QVERIFY(r.err.contains("rows shown"));
}

void TestCliCompare::jsonAndFilters()
{
    const Run r = runCompare({m_tree.path(u"p.dyp"_qs), u"--format"_qs, u"json"_qs, u"--filter"_qs,
                              u"modified"_qs, u"--side"_qs, u"both"_qs},
                             m_tree.path(u"home"_qs));
    QCOMPARE(r.code, 0);
    QJsonParseError error;
    const QJsonArray rows = QJsonDocument::fromJson(r.out, &error).array();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QStringList kinds;
    for (const QJsonValue &v : rows) {
        const QJsonObject o = v.toObject();
        kinds << o[u"kind"].toString() + QString::number(o[u"state"].toInt()) +
                     o[u"source"].toString().section(u'/', -1);
    }
    // Root and Sub (directories stay), new.txt (modified on both sides); one-sided files go.
    QCOMPARE(kinds, QStringList({u"d0s"_qs, u"f-1new.txt"_qs, u"d1"_qs}));
    QCOMPARE(rows.at(1).toObject()[u"source_size"].toInt(), 5);
}

void TestCliCompare::exitCodes_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("no pair") << QStringList() << 2;
    QTest::newRow("unknown option") << QStringList{u"--frobnicate"_qs} << 2;
    QTest::newRow("bad filter value") << QStringList{u"p.dyp"_qs, u"--filter"_qs, u"new"_qs} << 2;
    QTest::newRow("bad lag") << QStringList{u"--source"_qs, u"s"_qs,          u"--destination"_qs,
                                            u"d"_qs,        u"--time-lag"_qs, u"2s"_qs}
                             << 2;
    QTest::newRow("signed lag") << QStringList{u"--source"_qs,      u"s"_qs,
                                               u"--destination"_qs, u"d"_qs,
                                               u"--time-lag"_qs,    u"+1:00:00"_qs}
                                << 2;
    QTest::newRow("source alone") << QStringList{u"--source"_qs, u"s"_qs} << 2;
    QTest::newRow("profile missing") << QStringList{u"none.dyp"_qs} << 2;
    QTest::newRow("destination missing")
        << QStringList{u"--source"_qs, u"s"_qs, u"--destination"_qs, u"gone"_qs} << 3;
    QTest::newRow("source missing, still listed")
        << QStringList{u"--source"_qs, u"gone"_qs, u"--destination"_qs, u"d"_qs} << 3;
    QTest::newRow("destination inside the source")
        << QStringList{u"--source"_qs, u"s"_qs, u"--destination"_qs, u"s/Sub"_qs} << 2;
    QTest::newRow("source inside the destination, case apart")
        << QStringList{u"--source"_qs, u"d/Sub"_qs, u"--destination"_qs, u"D"_qs} << 2;
    QTest::newRow("both the same")
        << QStringList{u"--source"_qs, u"s"_qs, u"--destination"_qs, u"s"_qs} << 2;
    QTest::newRow("nested, allowed") << QStringList{u"--source"_qs, u"s"_qs, u"--destination"_qs,
                                                    u"s/Sub"_qs, u"--allow-nested"_qs}
                                     << 3;
    QTest::newRow("a name that only begins like the other")
        << QStringList{u"--source"_qs, u"d"_qs, u"--destination"_qs, u"d2"_qs} << 0;
    QTest::newRow("ad-hoc with switches and lag")
        << QStringList{u"--source"_qs,      u"s"_qs,
                       u"--destination"_qs, u"d"_qs,
                       u"--no-subdirs"_qs,  u"--exclude-files"_qs,
                       u"*.txt"_qs,         u"--time-lag"_qs,
                       u"00:00:02"_qs}
        << 0;
}

void TestCliCompare::exitCodes()
{
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    for (QString &a : args) {
        if (!a.startsWith(u"-") && !a.startsWith(u"*") && !a.contains(u':'))
            a = m_tree.path(a);
    }
    const Run r = runCompare(args, m_tree.path(u"home"_qs));
    QCOMPARE(r.code, exitCode);
    if (exitCode == 2)
        QVERIFY(r.out.isEmpty());
    // A nested pair is refused with the pair dialog's own text.
    const QByteArray tag = QTest::currentDataTag();
    if (exitCode == 2 && (tag.contains("inside") || tag.contains("same")))
        QVERIFY2(r.err.contains("Refused; --allow-nested"), r.err.constData());
}

// A root whose name is not UTF-8, given on the command line: its bytes reach the file system.
void TestCliCompare::rawBytesInArguments()
{
    m_tree.rawFile("r\xff/inner");
    const QByteArray raw = m_tree.nativePath("r\xff");

    // QProcess would encode every argument as UTF-8; the shell passes the byte as it is.
    QProcess p;
    p.setProcessEnvironment(environmentIn(m_tree.path(u"home"_qs)));
    p.start(u"/bin/sh"_qs, {u"-c"_qs,
                            u"exec \"$0\" compare --source \"$1$(printf '\\377')\" "
                            u"--destination \"$2\""_qs,
                            qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli",
                            m_tree.path(u"r"_qs), m_tree.path(u"d"_qs)});
    QVERIFY(p.waitForFinished(30000));
    const QByteArray out = p.readAllStandardOutput();
    QCOMPARE(p.exitCode(), 0);
    QVERIFY(out.split('\n').contains(
        QByteArray("-1\t1\tf\t" + raw + "/inner\t\t0\t\t") +
        linesWith(out.split('\n'), "inner").value(0).split('\t').value(7) + "\t"));
}

QTEST_GUILESS_MAIN(TestCliCompare)
#include "tst_clicompare.moc"

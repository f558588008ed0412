#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include "cli/clitree.h"

using namespace duomir::test;

namespace {

constexpr qint64 T0 = 1'700'000'000;

// The one line of `out` that holds `part`, its times (which follow the local clock) as "T".
QByteArray lineWith(const QByteArray &out, const QByteArray &part)
{
    static const QRegularExpression time(u"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"_qs);
    // Latin-1 keeps every byte of a name that is not UTF-8.
    const QStringList found =
        QString::fromLatin1(out).split(u'\n').filter(QString::fromLatin1(part));
    if (found.size() != 1)
        return "not one line with " + part;
    return QString(found.first()).replace(time, u"T"_qs).toLatin1();
}

} // namespace

class TestCliCompare : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
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
        writeProfile(m_tree, u"p.dyp"_qs, {});
    }

    // Header, one line per row, sizes in bytes, raw non-UTF-8 bytes and an escaped tab.
    void tsvRowsAndRawNames()
    {
        const CliRun r = compare(u"--source @s --destination @d --format tsv"_qs);
        QCOMPARE(r.code, 0);
        QVERIFY(r.out.startsWith("state\tmarked\tkind\tsource\tdestination\tsource_size\t"
                                 "destination_size\tsource_modified\tdestination_modified\n"));
        const QByteArray s = QFile::encodeName(m_tree.path(u"s/"_qs));
        const QByteArray d = QFile::encodeName(m_tree.path(u"d/"_qs));
        QCOMPARE(lineWith(r.out, "caf"), "-1\t1\tf\t" + s + "caf\xe9\t\t0\t\tT\t");
        QCOMPARE(lineWith(r.out, "new.txt"),
                 "-1\t1\tf\t" + s + "new.txt\t" + d + "new.txt\t5\t2\tT\tT");
        QCOMPARE(lineWith(r.out, "tab"), "-1\t1\tf\t" + s + "tab\\tname\t\t0\t\tT\t");
        QCOMPARE(lineWith(r.out, "Sub\t"), "1\t1\td\t\t" + d + "Sub\t\t\t\t");
    }

    void jsonAndFilters()
    {
        const CliRun r = compare(u"@p.dyp --format json --filter modified --side both"_qs);
        QCOMPARE(r.code, 0);
        const QJsonArray rows = QJsonDocument::fromJson(r.out).array();
        QStringList kinds;
        for (const QJsonValue &v : rows)
            kinds << v[u"kind"].toString() + QString::number(v[u"state"].toInt()) +
                         v[u"source"].toString().section(u'/', -1);
        // Root and Sub (directories stay), new.txt (modified on both sides); one-sided files go.
        QCOMPARE(kinds, QStringList({u"d0s"_qs, u"f-1new.txt"_qs, u"d1"_qs}));
        QCOMPARE(rows.at(1).toObject()[u"source_size"].toInt(), 5);
        // The counts are those of the rows shown; the root row names nothing.
        QVERIFY2(r.err.contains("3 rows shown (1 files, 1 directories)"), r.err.constData());
    }

    // Arguments are split at blanks; "@x" is x in the test's tree.
    void exitCodes_data()
    {
        QTest::addColumn<QString>("args");
        QTest::addColumn<int>("exitCode");
        const auto row = [](const char *tag, int exitCode, const QString &args) {
            QTest::newRow(tag) << args << exitCode;
        };
        row("no pair", 2, QString());
        row("unknown option", 2, u"--frobnicate"_qs);
        row("bad filter value", 2, u"@p.dyp --filter new"_qs);
        row("signed lag", 2, u"--source @s --destination @d --time-lag +1:00:00"_qs);
        row("source alone", 2, u"--source @s"_qs);
        row("destination missing", 3, u"--source @s --destination @gone"_qs);
        row("source missing, still listed", 3, u"--source @gone --destination @d"_qs);
        row("source inside the destination, case apart", 2, u"--source @d/Sub --destination @D"_qs);
        row("both the same", 2, u"--source @s --destination @s"_qs);
        row("nested, allowed", 3, u"--source @s --destination @s/Sub --allow-nested"_qs);
        row("a name that only begins like the other", 0, u"--source @d --destination @d2"_qs);
        row("ad-hoc with switches and lag", 0,
            u"--source @s --destination @d --no-subdirs --exclude-files *.txt "
            u"--time-lag 00:00:02"_qs);
    }
    void exitCodes()
    {
        QFETCH(QString, args);
        QFETCH(int, exitCode);
        const CliRun r = compare(args);
        QCOMPARE(r.code, exitCode);
        if (exitCode == 2)
            QVERIFY(r.out.isEmpty());
    }

    // A root whose name is not UTF-8, given on the command line: its bytes reach the file system.
    void rawBytesInArguments()
    {
        m_tree.rawFile("r\xff/inner");
        // QProcess would encode every argument as UTF-8; the shell passes the byte as it is.
        const CliRun r =
            runCli({u"-c"_qs,
                    u"exec \"$0\" compare --source \"$1$(printf '\\377')\" --destination \"$2\""_qs,
                    qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli", m_tree.path(u"r"_qs),
                    m_tree.path(u"d"_qs)},
                   m_tree.path(u"home"_qs), u"/bin/sh"_qs);
        QCOMPARE(r.code, 0);
        QCOMPARE(lineWith(r.out, "inner"),
                 "-1\t1\tf\t" + m_tree.nativePath("r\xff") + "/inner\t\t0\t\tT\t");
    }

private:
    CliRun compare(const QString &args) const { return run(m_tree, u"compare "_qs + args); }

    TempTree m_tree;
};

QTEST_GUILESS_MAIN(TestCliCompare)
#include "tst_clicompare.moc"

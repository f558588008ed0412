#include <QDir>
#include <QTest>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/nativename.h"
#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/comparecommand.h"
#include "core/engine.h"
#include "core/masks.h"
#include "core/scanner.h"
#include "core/sortkeys.h"
#include "localization/language.h"

using namespace duomir;
using duomir::test::FakeInteraction;
using duomir::test::TempTree;

namespace {

constexpr qint64 T0 = 1'700'000'000; // a fixed file time

// One row as "state marked kind source destination", paths relative to the tree's root; a side
// that lacks the entry shows its derived path in brackets.
QString describe(const CompareEntry &row, const QString &base)
{
    const bool missing[2] = {row.lacks(0) && !row.lacks(1), row.lacks(1) && !row.lacks(0)};
    auto side = [&](int i) {
        // A directory row names its directory by Path alone; a missing side borrows the name.
        QString full = row.path(i);
        if (!row.isDirectory())
            full += missing[i] ? row.name(1 - i) : row.name(i);
        if (full.startsWith(base))
            full = full.mid(base.size());
        return missing[i] ? u'[' + full + u']' : full;
    };
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(row.State)
        .arg(row.Marked ? 1 : 0)
        .arg(row.isDirectory() ? u"d"_qs : u"f"_qs)
        .arg(side(0), side(1));
}

struct Fixture
{
    TempTree tree;
    FakeInteraction ui;
    Engine engine{ui};

    Fixture() { engine.settings.TimeLag = 0; }

    void addPair(const QString &source, const QString &destination)
    {
        DirPair pair = DirPair::newFromSettings(engine.settings);
        pair.SubDirs = true;
        pair.Source = source.isEmpty() ? source : tree.path(source);
        pair.Destination = destination.isEmpty() ? destination : tree.path(destination);
        engine.pairs.append(pair);
    }

    QStringList rows() const
    {
        QStringList out;
        for (std::size_t r = 1; r < engine.CompareResults.size(); ++r)
            out << describe(engine.CompareResults[r], tree.root() + u'/');
        return out;
    }
};

} // namespace

class TestCompare : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void classify_data();
    void classify();
    void oneSidedRowsDeriveTheirPaths();
    void fileAndDirectoryOfOneNameNeverPair();
    void keysAndOrder_data();
    void keysAndOrder();
    void rootStoredWithAndWithoutSeparator();
    void sortedPreOrder_data();
    void sortedPreOrder();
    void missingSourceComparesAgainstEmpty();
    void missingDestinationDropsEverything();
    void emptyListAndEmptyRootText();
    void caseTwinsPairByExactName();
    void listingAheadScansAlike();
    void scanRules_data();
    void scanRules();
    void hostileTrees();
    void bothRootsMissingWarnInOrder();
    void manyFilesInOneDirectory();
};

void TestCompare::classify_data()
{
    QTest::addColumn<qint64>("sourceTime");
    QTest::addColumn<qint64>("destinationTime");
    QTest::addColumn<int>("sourceSize");
    QTest::addColumn<int>("destinationSize");
    QTest::addColumn<int>("lag");
    QTest::addColumn<int>("state");

    QTest::newRow("same time same size") << T0 << T0 << 5 << 5 << 2 << 0;
    QTest::newRow("same time, sizes differ: source wins") << T0 << T0 << 100 << 101 << 2 << -1;
    QTest::newRow("same time, destination larger still source") << T0 << T0 << 3 << 1 << 0 << -1;
    QTest::newRow("within lag, sizes ignored") << T0 << T0 + 1 << 1 << 9 << 2 << 0;
    QTest::newRow("difference equal to lag") << T0 << T0 + 2 << 1 << 1 << 2 << 0;
    QTest::newRow("source newer by lag") << T0 + 2 << T0 << 1 << 1 << 2 << 0;
    QTest::newRow("destination newer beyond lag") << T0 << T0 + 5 << 1 << 1 << 2 << 1;
    QTest::newRow("source newer beyond lag") << T0 + 3 << T0 << 1 << 1 << 2 << -1;
    QTest::newRow("lag zero, one second") << T0 << T0 + 1 << 1 << 1 << 0 << 1;
    QTest::newRow("an hour apart") << T0 + 3600 << T0 << 1 << 1 << 2 << -1;
}

void TestCompare::classify()
{
    QFETCH(qint64, sourceTime);
    QFETCH(qint64, destinationTime);
    QFETCH(int, sourceSize);
    QFETCH(int, destinationSize);
    QFETCH(int, lag);
    QFETCH(int, state);

    Fixture f;
    f.tree.file(u"s/a.txt"_qs, QByteArray(sourceSize, 'x'), sourceTime);
    f.tree.file(u"d/A.TXT"_qs, QByteArray(destinationSize, 'y'), destinationTime);
    f.engine.settings.TimeLag = lag / 86400.0;
    f.addPair(u"s"_qs, u"d"_qs);
    QVERIFY(Compare(f.engine));
    const QString marked = state == 0 ? u"0"_qs : u"1"_qs;
    QCOMPARE(f.rows(),
             QStringList({u"0 1 d s d"_qs,
                          QStringLiteral("%1 %2 f s/a.txt d/A.TXT").arg(state).arg(marked)}));
    const int sends = state == -1 ? 0 : state == 1 ? 2 : 1;
    QCOMPARE(f.engine.compareCounters[static_cast<size_t>(sends)], sends == 1 ? 2 : 1);
}

// Source has Sub/x.txt, destination lacks Sub: both rows point to the source, and the destination
// paths are built from the destination root.
void TestCompare::oneSidedRowsDeriveTheirPaths()
{
    Fixture f;
    f.tree.file(u"s/Sub/x.txt"_qs, "x", T0);
    f.tree.file(u"d/only.txt"_qs, "y", T0);
    f.engine.MarkAll = false;
    f.addPair(u"s"_qs, u"d"_qs);
    QVERIFY(Compare(f.engine));
    QCOMPARE(f.rows(),
             QStringList({u"0 0 d s d"_qs, u"1 0 f [s/only.txt] d/only.txt"_qs,
                          u"-1 0 d s/Sub [d/Sub]"_qs, u"-1 0 f s/Sub/x.txt [d/Sub/x.txt]"_qs}));
    QCOMPARE(f.engine.compareCounters, (std::array<int, 3>{2, 1, 1}));
    QVERIFY(f.ui.shown.isEmpty());
}

void TestCompare::fileAndDirectoryOfOneNameNeverPair()
{
    Fixture f;
    f.tree.file(u"s/item"_qs, "file", T0);
    f.tree.dir(u"d/item"_qs);
    f.addPair(u"s"_qs, u"d"_qs);
    QVERIFY(Compare(f.engine));
    QCOMPARE(f.rows(), QStringList({u"0 1 d s d"_qs, u"-1 1 f s/item [d/item]"_qs,
                                    u"1 1 d [s/item] d/item"_qs}));

    // Control characters in names can make a file's key equal a directory's; still two rows.
    Fixture g;
    g.tree.file(u"s/a/b\u0001"_qs, "file", T0);
    g.tree.dir(u"d/a\u0001\u0002b"_qs);
    g.addPair(u"s"_qs, u"d"_qs);
    QVERIFY(Compare(g.engine));
    for (size_t r = 2; r < g.engine.CompareResults.size(); ++r) {
        const CompareEntry &row = g.engine.CompareResults[r];
        QVERIFY(row.lacks(0) || row.lacks(1));
    }
}

void TestCompare::keysAndOrder_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("directory");
    QTest::addColumn<int>("start");
    QTest::addColumn<QString>("key");

    const QString one(QChar(1));
    const QString two(QChar(2));
    // The pair's text is "/d/Data" (7 units); stored with its separator it would be 8.
    QTest::newRow("root") << u"/d/Data"_qs << QString() << true << 9 << one;
    QTest::newRow("file in root") << u"/d/Data/"_qs << u"a.txt"_qs << false << 9 << two + u"A.TXT";
    QTest::newRow("directory") << u"/d/Data/Sub"_qs << u"Sub"_qs << true << 9 << u"SUB"_qs + one;
    QTest::newRow("file below") << u"/d/Data/Sub/"_qs << u"b.doc"_qs << false << 9
                                << u"SUB"_qs + one + two + u"B.DOC";
    QTest::newRow("text without separator: root") << u"/d/Data"_qs << QString() << true << 8 << one;
    QTest::newRow("text without separator: file")
        << u"/d/Data/"_qs << u"a.txt"_qs << false << 8 << one + two + u"A.TXT";
}

void TestCompare::keysAndOrder()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    QFETCH(bool, directory);
    QFETCH(int, start);
    QFETCH(QString, key);
    TextStore texts;
    FileEntry e;
    e.setPath(texts.addPath(path));
    e.setName(texts.add(name));
    e.Attributes = directory ? Attr::Directory : 0;
    QCOMPARE(MakeSortKeys(start).text(e), key);
}

// One pair stored as "…/s" and "…/d/": the roots match, everything else comes out one-sided.
void TestCompare::rootStoredWithAndWithoutSeparator()
{
    Fixture f;
    f.tree.file(u"s/a"_qs, "1", T0);
    f.tree.file(u"d/a"_qs, "1", T0);
    f.addPair(u"s"_qs, u"d"_qs);
    f.engine.pairs[1].Destination += u'/';
    QVERIFY(Compare(f.engine));
    QCOMPARE(f.engine.CompareRoots[1], f.tree.path(u"d/"_qs));
    QCOMPARE(f.rows(),
             QStringList({u"0 1 d s d"_qs, u"-1 1 f s/a [d/a]"_qs, u"1 1 f [s/a] d/a"_qs}));

    f.engine.pairs[1].Source += u'/'; // stored alike again: they pair
    QVERIFY(Compare(f.engine));
    QCOMPARE(f.rows(), QStringList({u"0 1 d s d"_qs, u"0 0 f s/a d/a"_qs}));
}

void TestCompare::sortedPreOrder_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("order"); // of the rows, by their source path
    QTest::newRow("files first, case ignored, two pairs one after the other")
        << QStringList(
               {u"s/b.txt"_qs, u"s/A.txt"_qs, u"s/sub/z"_qs, u"s/Sub2/y"_qs, u"s/sub/deeper/q"_qs})
        << QStringList({u"s"_qs, u"s/A.txt"_qs, u"s/b.txt"_qs, u"s/sub"_qs, u"s/sub/z"_qs,
                        u"s/sub/deeper"_qs, u"s/sub/deeper/q"_qs, u"s/Sub2"_qs, u"s/Sub2/y"_qs,
                        u"t"_qs, u"t/c"_qs});
    // Two folders of one key on one side: what they hold sorts by key across both, which is not
    // the order a walk lists them in.
    QTest::newRow("case twin folders interleave")
        << QStringList({u"s/Sub/a"_qs, u"s/SUB/b"_qs, u"s/Sub/c"_qs, u"s/SUB/B2"_qs, u"d/sub/b"_qs})
        << QStringList({u"s"_qs, u"s/SUB"_qs, u"s/Sub"_qs, u"[s/sub]"_qs, u"s/Sub/a"_qs,
                        u"s/SUB/b"_qs, u"s/SUB/B2"_qs, u"s/Sub/c"_qs, u"t"_qs, u"t/c"_qs});
}

void TestCompare::sortedPreOrder()
{
    QFETCH(QStringList, files);
    QFETCH(QStringList, order);
    Fixture f;
    for (const QString &n : files + QStringList{u"t/c"_qs})
        f.tree.file(n, "1", T0);
    f.tree.dir(u"d"_qs);
    f.tree.dir(u"e"_qs);
    f.addPair(u"s"_qs, u"d"_qs);
    f.addPair(u"t"_qs, u"e"_qs);
    QVERIFY(Compare(f.engine));
    QStringList seen;
    for (const QString &row : f.rows())
        seen << row.section(u' ', 3, 3);
    QCOMPARE(seen, order);
}

void TestCompare::missingSourceComparesAgainstEmpty()
{
    Fixture f;
    f.tree.file(u"d/x"_qs, "1", T0);
    f.addPair(u"nowhere"_qs, u"d"_qs);
    QVERIFY(Compare(f.engine));
    QCOMPARE(f.ui.shown.size(), 1);
    QCOMPARE(f.ui.shown.first().icon, Interaction::Icon::Exclamation);
    QCOMPARE(f.rows().mid(1), QStringList({u"1 1 f [nowhere/x] d/x"_qs}));
}

// Pair 2 of 3 lacks its destination: nothing is kept and pair 3 (whose source is missing too,
// which would warn) is never scanned.
void TestCompare::missingDestinationDropsEverything()
{
    Fixture f;
    f.tree.file(u"s/x"_qs, "1", T0);
    f.tree.dir(u"d"_qs);
    f.addPair(u"s"_qs, u"d"_qs);
    f.addPair(u"s"_qs, u"gone"_qs);
    f.addPair(u"alsogone"_qs, u"d"_qs);
    f.engine.CompareResults.resize(5);
    QVERIFY(!Compare(f.engine));
    QCOMPARE(f.engine.CompareResults.size(), size_t(1));
    QCOMPARE(f.ui.shown.size(), 1);
    QCOMPARE(f.engine.compareCounters, (std::array<int, 3>{}));
}

// An empty root text names no directory: it is reported, never read as "/".
void TestCompare::emptyListAndEmptyRootText()
{
    Fixture f;
    f.engine.CompareResults.resize(3);
    QVERIFY(!Compare(f.engine));
    QCOMPARE(f.ui.shown.size(), 1);
    QCOMPARE(f.engine.CompareResults.size(), size_t(3));

    f.tree.file(u"d/x"_qs, "1", T0);
    f.tree.file(u"d/sub/y"_qs, "1", T0);
    f.addPair(QString(), u"d"_qs);
    QVERIFY(Compare(f.engine));
    QCOMPARE(f.ui.shown.size(), 2);
    QVERIFY(f.engine.CompareRoots[0].isEmpty());
    QCOMPARE(f.engine.CompareResults.size(), size_t(5));
    // No relative source paths ("sub/"): a copy would resolve them against the working folder.
    for (size_t r = 1; r < f.engine.CompareResults.size(); ++r)
        QCOMPARE(f.engine.CompareResults[r].path(0), QString());

    f.engine.pairs[1].Source = f.tree.path(u"d"_qs);
    f.engine.pairs[1].Destination.clear();
    QVERIFY(!Compare(f.engine));
    QCOMPARE(f.engine.CompareResults.size(), size_t(1));
}

// Linux lets one directory hold a.txt and A.TXT: each pairs only with its exact twin.
void TestCompare::caseTwinsPairByExactName()
{
    Fixture f;
    f.tree.file(u"s/a.txt"_qs, "1", T0);
    f.tree.file(u"s/A.TXT"_qs, "2", T0);
    f.tree.file(u"s/Only.txt"_qs, "3", T0);
    f.tree.file(u"d/a.txt"_qs, "1", T0);
    f.tree.file(u"d/A.txt"_qs, "9", T0);
    f.tree.file(u"d/ONLY.TXT"_qs, "3", T0);
    f.addPair(u"s"_qs, u"d"_qs);
    QVERIFY(Compare(f.engine));
    QCOMPARE(f.rows(), QStringList({u"0 1 d s d"_qs, u"-1 1 f s/A.TXT [d/A.TXT]"_qs,
                                    u"1 1 f [s/A.txt] d/A.txt"_qs, u"0 0 f s/a.txt d/a.txt"_qs,
                                    u"0 0 f s/Only.txt d/ONLY.TXT"_qs}));
}

// Folders listed on worker threads (as on a network mount) give the very scan a walk alone gives.
void TestCompare::listingAheadScansAlike()
{
    TempTree tree;
    for (int i = 0; i < 70; ++i) // more folders than are asked for at once
        tree.file(u"r/f%1/x%2"_qs.arg(i % 7).arg(i), "12", T0 + i);
    tree.file(u"r/f1/deep/er/most"_qs, "1", T0);
    tree.file(u"r/Twin/a"_qs);
    tree.file(u"r/TWIN/b"_qs);
    tree.symlink(u"r/f2/link"_qs, "..");
    tree.rawFile("r/f3/caf\xe9");
    DirPair flags;
    flags.SubDirs = true;
    const MaskSet all = MaskSet::fromTexts(u"*"_qs, QString());
    auto scan = [&](int threads) {
        TextStore texts;
        FileArray entries;
        ScanExtras extras;
        extras.listingThreads = threads;
        ScanDirectory(tree.path(u"r/"_qs), all, all, flags, entries, texts, nullptr, 0, &extras);
        QStringList out;
        for (const FileEntry &e : entries)
            out << e.path() + u'|' + e.name().toString() + u'|' + QString::number(e.Attributes) +
                       u'|' + QString::number(e.FullSize) + u'|' + QString::number(e.Modified);
        return out;
    };
    const QStringList alone = scan(0);
    QCOMPARE(alone.size(), 1 + 70 + 7 + 2 + 1 + 2 + 2 + 1 + 1);
    QCOMPARE(scan(6), alone);
}

void TestCompare::scanRules_data()
{
    QTest::addColumn<QString>("switches"); // letters of the switches that are on: u d h s f i
    QTest::addColumn<QString>("includeFiles");
    QTest::addColumn<QString>("excludeDirs");
    QTest::addColumn<QStringList>("taken");

    const QStringList all{u"Makefile"_qs, u"bin"_qs, u"bin/tool"_qs, u"notes.txt"_qs};
    QTest::newRow("star takes names without dot") << u"u"_qs << u"*"_qs << QString() << all;
    QTest::newRow("star-dot-star skips them")
        << u"u"_qs << u"*.*"_qs << QString() << QStringList({u"bin"_qs, u"notes.txt"_qs});
    QTest::newRow("no subdirectories")
        << QString() << u"*"_qs << QString() << QStringList({u"Makefile"_qs, u"notes.txt"_qs});
    QTest::newRow("excluded directory is not entered")
        << u"u"_qs << u"*"_qs << u"B*"_qs << QStringList({u"Makefile"_qs, u"notes.txt"_qs});
    // A volume's trash folders (.Trash, .Trash-1000) are never compared; look-alikes are.
    QTest::newRow("hidden files and dot directories, trash folders skipped")
        << u"uhdf"_qs << u"*"_qs << QString()
        << (all + QStringList{u".hidden"_qs, u".svn"_qs, u".svn/entries"_qs, u".Trashcan"_qs,
                              u".Trashcan/t"_qs, u".Trash-1a"_qs, u".Trash-1a/t"_qs});
    QTest::newRow("hidden files, no hidden directories")
        << u"uhf"_qs << u"*"_qs << QString() << (all + QStringList{u".hidden"_qs});
}

// The source holds Makefile, notes.txt, bin/tool, .hidden, .svn/entries, trash folders and
// look-alikes, and a FIFO; the scan takes what the switches and masks admit. A dot directory is a
// hidden one.
void TestCompare::scanRules()
{
    QFETCH(QString, switches);
    QFETCH(QString, includeFiles);
    QFETCH(QString, excludeDirs);
    QFETCH(QStringList, taken);

    Fixture f;
    for (const char *n : {"s/Makefile", "s/notes.txt", "s/bin/tool", "s/.hidden", "s/.svn/entries",
                          "s/.Trash/t", "s/.Trash-1000/t", "s/.Trashcan/t", "s/.Trash-1a/t"})
        f.tree.file(QString::fromUtf8(n), "", T0);
    QCOMPARE(::mkfifo(QFile::encodeName(f.tree.path(u"s/pipe"_qs)).constData(), 0600), 0);
    f.tree.dir(u"d"_qs);
    f.addPair(u"s"_qs, u"d"_qs);
    DirPair &pair = f.engine.pairs[1];
    pair.SubDirs = switches.contains(u'u');
    pair.HiddenDirs = switches.contains(u'd');
    pair.HiddenFiles = switches.contains(u'h');
    pair.SysFiles = switches.contains(u'f');
    pair.SysDirs = switches.contains(u'i');
    pair.IncludeFiles = includeFiles;
    pair.ExcludeDirs = excludeDirs;
    QVERIFY(Compare(f.engine)); // a FIFO is listed, never opened: no hang

    QStringList names;
    for (const QString &row : f.rows().mid(1))
        names << row.section(u' ', 3, 3).mid(2);
    if (switches.contains(u'f')) {
        QVERIFY(names.removeOne(u"pipe"_qs));
        const auto &rows = f.engine.CompareResults;
        QVERIFY(std::any_of(rows.begin(), rows.end(), [](const CompareEntry &r) {
            return r.name(0) == u"pipe" && (r.Attributes[0] & Attr::System);
        }));
    }
    names.sort();
    taken.sort();
    QCOMPARE(names, taken);
}

// A link loop, a link to a directory, a name that is not UTF-8, a directory we may not read and
// a vanished-looking broken link: the scan ends, follows nothing and loses no byte of a name.
void TestCompare::hostileTrees()
{
    Fixture f;
    f.tree.dir(u"s/loop"_qs);
    f.tree.symlink(u"s/loop/again"_qs, "..");
    f.tree.symlink(u"s/broken"_qs, "does-not-exist");
    f.tree.file(u"s/closed/secret"_qs, "x", T0);
    f.tree.setMode(u"s/closed"_qs, 0);
    f.tree.file(u"s/unsearchable/item"_qs, "x", T0);
    f.tree.setMode(u"s/unsearchable"_qs, 0644);
    const QByteArray rawName("caf\xe9.txt");
    f.tree.rawFile("s/" + rawName);
    f.tree.dir(u"d"_qs);
    f.addPair(u"s"_qs, u"d"_qs);

    QVERIFY(Compare(f.engine));
    f.tree.setMode(u"s/closed"_qs, 0755);
    f.tree.setMode(u"s/unsearchable"_qs, 0755);

    QStringList kinds;
    bool sawRaw = false;
    for (const CompareEntry &row : f.engine.CompareResults) {
        if (row.name(0) == u"again" || row.name(0) == u"broken")
            kinds << row.name(0) + u':' + QString::number(row.Attributes[0] & Attr::Reparse, 16);
        if (toNative(row.name(0)) == rawName)
            sawRaw = toNative(row.path(1) + row.name(0)).endsWith(QByteArray("/d/" + rawName));
    }
    kinds.sort();
    QCOMPARE(kinds, QStringList({u"again:400"_qs, u"broken:400"_qs}));
    QVERIFY(sawRaw);
    if (::geteuid() != 0) {
        const QStringList rows = f.rows();
        QVERIFY(rows.contains(u"-1 1 d s/closed [d/closed]"_qs));
        QVERIFY(!rows.contains(u"-1 1 f s/closed/secret [d/closed/secret]"_qs));
        // Read but not entered: its names are known, their sizes and dates are not.
        for (const CompareEntry &row : f.engine.CompareResults) {
            if (row.name(0) == u"unsearchable")
                QVERIFY(row.Attributes[0] & Attr::Unlisted);
        }
    }
}

// The two sides are scanned at once, yet the person hears of the source first, and the status
// label still says which step runs.
void TestCompare::bothRootsMissingWarnInOrder()
{
    Fixture f;
    f.tree.file(u"English.lang"_qs, "806=no source %1\n807=no destination %1\n850=scanning\n");
    f.engine.language = Language::load(f.tree.path(u"English.lang"_qs), &f.ui);
    f.tree.file(u"s/x"_qs, "1", T0);
    f.tree.dir(u"d"_qs);
    f.addPair(u"s"_qs, u"d"_qs);
    f.addPair(u"gone"_qs, u"alsogone"_qs);
    f.addPair(u"s"_qs, u"d"_qs); // never reached
    QVERIFY(!Compare(f.engine));
    QStringList texts;
    for (const auto &m : f.ui.shown)
        texts << m.text;
    QCOMPARE(texts, QStringList({u"no source "_qs + f.tree.path(u"gone/"_qs),
                                 u"no destination "_qs + f.tree.path(u"alsogone/"_qs)}));
    QCOMPARE(f.ui.statusLabels.at(1), u"scanning"_qs);
    QCOMPARE(f.engine.CompareResults.size(), size_t(1));
}

// One directory of 100,000 files against a destination that holds every tenth of them, older.
void TestCompare::manyFilesInOneDirectory()
{
    constexpr int count = 100'000;
    // Creating this many files on a disk file system takes far longer than comparing them; a
    // memory file system keeps the test quick where one exists.
    const QString base = QFileInfo(u"/dev/shm"_qs).isWritable() ? u"/dev/shm"_qs : QDir::tempPath();
    QTemporaryDir dir(base + u"/duomir-test-XXXXXX");
    QVERIFY(dir.isValid());
    QVERIFY(QDir(dir.path()).mkpath(u"s/big"_qs) && QDir(dir.path()).mkpath(u"d/big"_qs));
    const QByteArray root = QFile::encodeName(dir.path());
    for (int k = 0; k < count; ++k) {
        // Listing order is the file system's; names are numbered so the expected order is known.
        const QByteArray name = (k % 2 ? "F" : "f") + QByteArray::number(k + count);
        const int fd =
            ::open(QByteArray(root + "/s/big/" + name).constData(), O_CREAT | O_WRONLY, 0644);
        QVERIFY(fd >= 0);
        ::close(fd);
        if (k % 10 == 0) {
            const int old =
                ::open(QByteArray(root + "/d/big/" + name).constData(), O_CREAT | O_WRONLY, 0644);
            QVERIFY(old >= 0);
            const timespec times[2] = {{T0, 0}, {T0, 0}};
            QCOMPARE(::futimens(old, times), 0);
            ::close(old);
        }
    }
    FakeInteraction ui;
    Engine engine(ui);
    DirPair pair = DirPair::newFromSettings(engine.settings);
    pair.SubDirs = true;
    pair.Source = dir.path() + u"/s";
    pair.Destination = dir.path() + u"/d";
    engine.pairs.append(pair);
    QVERIFY(Compare(engine));

    const CompareArray &rows = engine.CompareResults;
    QCOMPARE(rows.size(), size_t(count + 3)); // element 0, the root, big, the files
    QCOMPARE(engine.compareCounters, (std::array<int, 3>{count, 2, 0}));
    for (int k = 0; k < count; ++k) {
        const CompareEntry &row = rows[static_cast<size_t>(k + 3)];
        if (row.name(0).mid(1).toInt() != k + count || row.lacks(1) != (k % 10 != 0))
            QFAIL(qPrintable(u"row "_qs + QString::number(k + 3) + u": " + row.name(0)));
    }
}

QTEST_GUILESS_MAIN(TestCompare)
#include "tst_compare.moc"

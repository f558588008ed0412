#include <QDir>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>

#include "base/nativename.h"
#include "common/fakeinteraction.h"
#include "common/rowbuilder.h"
#include "common/temptree.h"
#include "core/comparecommand.h"
#include "core/engine.h"
#include "core/filters.h"
#include "core/masks.h"
#include "core/scanner.h"
#include "localization/language.h"

using namespace duomir;
using namespace duomir::test;

namespace {

constexpr qint64 T0 = 1'700'000'000; // a fixed file time

// One row as "state marked kind source destination", paths relative to the tree's root; a side
// that lacks the entry shows its derived path in brackets.
QString describe(const CompareEntry &row, const QString &base)
{
    const auto side = [&](Side i) {
        // A directory row names its directory by Path alone; a missing side borrows the name.
        const bool missing = row.lacks(i) && !row.lacks(otherSide(i));
        QString full =
            row.path(i) + (row.isDirectory() ? QString() : row.name(missing ? otherSide(i) : i));
        full.remove(0, full.startsWith(base) ? base.size() : 0);
        return missing ? u'[' + full + u']' : full;
    };
    return QString::number(row.State) + (row.Marked ? u" 1 " : u" 0 ") +
           (row.isDirectory() ? u"d " : u"f ") + side(Side::Source) + u' ' +
           side(Side::Destination);
}

struct Fixture
{
    TempTree tree;
    FakeInteraction ui;
    Engine engine{ui};

    Fixture()
    {
        tree.file(u"English.lang"_qs, "702=%1 file\n703=%1 files\n712=%1 folder\n713=%1 folders\n"
                                      "802=no pairs\n806=no source %1\n807=no destination %1\n");
        engine.language = Language::load(tree.path(u"English.lang"_qs), &ui);
    }

    // Folders of the tree unless absolute; an empty text stays empty.
    void addPair(const QString &source = u"s"_qs, const QString &destination = u"d"_qs)
    {
        DirPair pair = DirPair::newFromSettings(engine.settings);
        pair.SubDirs = true;
        pair.Source = source.isEmpty() ? source : QDir(tree.root()).filePath(source);
        pair.Destination =
            destination.isEmpty() ? destination : QDir(tree.root()).filePath(destination);
        engine.pairs.append(pair);
    }

    // What the counters report is what the rows hold, after a failure too.
    void compare(bool ok = true)
    {
        QCOMPARE(Compare(engine), ok);
        std::array<int, 3> states{};
        for (size_t r = 1; r < engine.comparison().rows().size(); ++r)
            ++states[size_t(engine.comparison().rows()[r].State + 1)];
        QCOMPARE(engine.comparison().counters(), states);
    }

    QStringList rows() const
    {
        QStringList out;
        for (std::size_t r = 1; r < engine.comparison().rows().size(); ++r)
            out << describe(engine.comparison().rows()[r], tree.root() + u'/');
        return out;
    }
};

// Two files that pair: their times after T0, sizes, the time lag (all in seconds), and the state
// of their row.
struct Times
{
    int sourceTime, destinationTime, sourceSize, destinationSize, lag, state;
};

// A comparison of files and folders ("d/b/" a folder, any file one byte at T0) as pairs
// ("source>destination"), the rows and the messages it gives; "|" between two items of a list.
struct Trees
{
    const char16_t *files, *pairs, *rows, *shown;
    bool ok, markAll;
};

// A compared list with every kind of row the filters tell apart; a row's number is its index.
CompareArray sampleRows()
{
    static TextStore texts;
    auto row = [](int state, bool directory, const char *source, const char *destination) {
        CompareEntry e;
        e.State = static_cast<std::int16_t>(state);
        e.Attributes.fill(directory ? Attr::Directory : 0);
        setNames(e, texts, QString::fromUtf8(source), QString::fromUtf8(destination));
        return e;
    };
    return {
        CompareEntry(),
        row(0, true, "", ""),            // 1 root
        row(0, true, "A", "A"),          // 2
        row(0, false, "a1", "a1"),       // 3
        row(-1, false, "a2", ""),        // 4 source only
        row(0, true, "B", "B"),          // 5 holds only a directory
        row(0, true, "C", "C"),          // 6
        row(1, false, "c1", "c1"),       // 7 newer in the destination
        row(-1, true, "D", ""),          // 8 directory in the source only
        row(0, false, "x.txt", "X.TXT"), // 9 paired, names differ in case
        row(0, true, "E", "E"),          // 10 empty, closes the list
    };
}

} // namespace

Q_DECLARE_METATYPE(Times)
Q_DECLARE_METATYPE(Trees)
Q_DECLARE_METATYPE(FilterState)

class TestCompare : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void classify_data()
    {
        QTest::addColumn<Times>("t");
        QTest::newRow("same time same size") << Times{0, 0, 5, 5, 2, 0};
        QTest::newRow("same time, sizes differ: source wins") << Times{0, 0, 100, 101, 2, -1};
        QTest::newRow("same time, destination larger still source") << Times{0, 0, 3, 1, 0, -1};
        QTest::newRow("within lag, sizes ignored") << Times{0, 1, 1, 9, 2, 0};
        QTest::newRow("difference equal to lag") << Times{0, 2, 1, 1, 2, 0};
        QTest::newRow("source newer by lag") << Times{2, 0, 1, 1, 2, 0};
        QTest::newRow("destination newer beyond lag") << Times{0, 5, 1, 1, 2, 1};
        QTest::newRow("source newer beyond lag") << Times{3, 0, 1, 1, 2, -1};
        QTest::newRow("lag zero, one second") << Times{0, 1, 1, 1, 0, 1};
    }
    void classify()
    {
        QFETCH(Times, t);
        Fixture f;
        f.tree.file(u"s/a.txt"_qs, QByteArray(t.sourceSize, 'x'), T0 + t.sourceTime);
        f.tree.file(u"d/A.TXT"_qs, QByteArray(t.destinationSize, 'y'), T0 + t.destinationTime);
        f.engine.settings.TimeLag = t.lag / 86400.0;
        f.addPair();
        f.compare();
        const QString row = u"%1 %2 f s/a.txt d/A.TXT"_qs.arg(t.state).arg(t.state == 0 ? 0 : 1);
        QCOMPARE(f.rows(), QStringList({u"0 1 d s d"_qs, row}));
    }

    void trees_data()
    {
        QTest::addColumn<Trees>("c");
        const auto row = [](const char *tag, const char16_t *files, const char16_t *pairs,
                            const char16_t *rows, const char16_t *shown = u"", bool ok = true,
                            bool markAll = true) {
            QTest::newRow(tag) << Trees{files, pairs, rows, shown, ok, markAll};
        };
        row("one-sided rows derive their paths from the other root", u"s/Sub/x.txt|d/only.txt",
            u"s>d",
            u"0 0 d s d|1 0 f [s/only.txt] d/only.txt|-1 0 d s/Sub [d/Sub]|"
            u"-1 0 f s/Sub/x.txt [d/Sub/x.txt]",
            u"", true, false);
        row("a file and a directory of one name never pair", u"s/item|d/item/", u"s>d",
            u"0 1 d s d|-1 1 f s/item [d/item]|1 1 d [s/item] d/item");
        // Control characters in names can make a file's key equal a directory's: still two rows.
        row("nor when their keys are equal", u"s/a/b\u0001|d/a\u0001\u0002b/", u"s>d",
            u"0 1 d s d|-1 1 d s/a [d/a]|-1 1 f s/a/b\u0001 [d/a/b\u0001]|"
            u"1 1 d [s/a\u0001\u0002b] d/a\u0001\u0002b");
        // Linux lets one directory hold a.txt and A.TXT: each pairs only with its exact twin.
        row("case twins pair by exact name",
            u"s/a.txt|s/A.TXT|s/Only.txt|d/a.txt|d/A.txt|d/ONLY.TXT", u"s>d",
            u"0 1 d s d|-1 1 f s/A.TXT [d/A.TXT]|1 1 f [s/A.txt] d/A.txt|"
            u"0 0 f s/a.txt d/a.txt|0 0 f s/Only.txt d/ONLY.TXT");
        // A pair text stored with its separator and one without: the roots match, nothing else.
        row("roots stored unlike", u"s/a|d/a", u"s>d/",
            u"0 1 d s d|-1 1 f s/a [d/a]|1 1 f [s/a] d/a");
        row("roots stored alike", u"s/a|d/a", u"s/>d/", u"0 1 d s d|0 0 f s/a d/a");
        row("a missing source compares against nothing", u"d/x", u"nowhere>d",
            u"0 1 d nowhere d|1 1 f [nowhere/x] d/x", u"no source nowhere/");
        // An empty root text names no directory: it is reported, never read as "/", and no row
        // gets a relative path ("sub/") that a copy would resolve against the working folder.
        row("an empty source text", u"d/x|d/sub/y", u">d",
            u"0 1 d  d|1 1 f [x] d/x|1 1 d [] d/sub|1 1 f [y] d/sub/y", u"no source ");
        // Two folders of one key on one side: what they hold sorts by key across both, which is
        // not the order a walk lists them in.
        row("case twin folders interleave", u"s/Sub/a|s/SUB/b|s/Sub/c|s/SUB/B2|d/sub/b", u"s>d",
            u"0 1 d s d|-1 1 d s/SUB [d/SUB]|-1 1 d s/Sub [d/Sub]|1 1 d [s/sub] d/sub|"
            u"-1 1 f s/Sub/a [d/Sub/a]|0 0 f s/SUB/b d/sub/b|-1 1 f s/SUB/B2 [d/SUB/B2]|"
            u"-1 1 f s/Sub/c [d/Sub/c]");
        row("no pairs", u"", u"", u"", u"no pairs", false);
        // The two sides are scanned at once, yet the person hears of the source first; a missing
        // destination keeps no pair, and pair 3 (whose missing source would be reported too) is
        // never scanned.
        row("missing roots", u"s/x|d/", u"s>d|gone>alsogone|nowhere>d", u"",
            u"no source gone/|no destination alsogone/", false);
    }
    void trees()
    {
        QFETCH(Trees, c);
        Fixture f;
        const auto list = [](const char16_t *items) {
            return QString::fromUtf16(items).split(u'|', Qt::SkipEmptyParts);
        };
        for (const QString &name : list(c.files))
            name.endsWith(u'/') ? f.tree.dir(name) : f.tree.file(name, "1", T0);
        for (const QString &pair : list(c.pairs))
            f.addPair(pair.section(u'>', 0, 0), pair.section(u'>', 1));
        f.engine.comparison().setMarkAll(c.markAll);
        f.compare(c.ok);
        QCOMPARE(f.rows(), list(c.rows));
        QStringList shown;
        for (const auto &m : f.ui.shown)
            shown << QString(m.text).remove(f.tree.root() + u'/');
        QCOMPARE(shown, list(c.shown));
    }

    void filters_data()
    {
        QTest::addColumn<FilterState>("filter");
        QTest::addColumn<QList<int>>("rows");
        // The file filter, the side filter, whether empty directories show, the rows left.
        const auto row = [](const char *tag, int file, int side, bool empty, QList<int> rows) {
            QTest::newRow(tag) << FilterState{FileView(file), SideView(side), empty} << rows;
        };
        row("all, empty directories hidden", 0, 0, false, {2, 3, 4, 6, 7, 8, 9});
        row("modified keeps every directory", 1, 0, true, {1, 2, 4, 5, 6, 7, 8, 10});
        row("modified, empty hidden", 1, 0, false, {2, 4, 6, 7, 8});
        row("modified in source", 2, 0, true, {1, 2, 4, 5, 6, 8, 10});
        row("modified in destination", 3, 0, true, {1, 2, 5, 6, 7, 10});
        row("identical", 4, 0, true, {1, 2, 3, 5, 6, 9, 10});
        row("identical ignores the side filter", 4, 2, true, {1, 2, 3, 5, 6, 9, 10});
        row("both sides: names equal exactly", 0, 1, true, {1, 2, 3, 5, 6, 7, 8, 10});
        row("one side: case-renamed counts", 0, 2, true, {1, 2, 4, 5, 6, 8, 9, 10});
    }
    void filters()
    {
        QFETCH(FilterState, filter);
        const RowIndexArray visible = filterRows(sampleRows(), filter);
        QTEST(QList<int>(visible.begin() + 1, visible.end()), "rows");
    }

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
        row("star takes the empty run", "A*", "a", true);
        row("whole name must match", "*.TXT", "report.txt.bak", false);
        row("question mark is one unit", "A?C", "abc", true);
        row("hash is a digit", "LOG#", "log7", true);
        row("range", "[A-C]X", "bx", true);
        row("range outside", "[A-C]X", "dx", false);
        row("negated list", "[!0-9]*", "a1", true);
        row("negated list rejects", "[!0-9]*", "1a", false);
        row("hyphen at end is literal", "[A-]", "-", true);
        row("unclosed bracket is literal", "[AB", "[ab", true);
        row("empty brackets match the empty text", "A[]B", "ab", true);
        row("backtracking star", "*AB*AB", "xabyyabzab", true);
        row("leading blank is kept", " *.DOC", "a.doc", false);
        row("non-ascii folds", "ÄR*", "ärger", true);
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
        QFETCH(QString, exclude);
        QTEST(MatchesMasks(name, MaskSet::fromTexts(include, exclude)), "taken");
    }

    void scanRules_data()
    {
        // The switches that are on: u subdirectories, i system and d hidden directories, f system
        // and h hidden files.
        QTest::addColumn<QString>("switches");
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
            << (all + QStringList{u".h"_qs, u".svn"_qs, u".svn/entries"_qs, u".Trashcan"_qs,
                                  u".Trashcan/t"_qs, u".Trash-1a"_qs, u".Trash-1a/t"_qs,
                                  u"pipe*"_qs});
        QTest::newRow("hidden files, no hidden directories")
            << u"uhf"_qs << u"*"_qs << QString() << (all + QStringList{u".h"_qs, u"pipe*"_qs});
    }
    // The source holds Makefile, notes.txt, bin/tool, .h (as short as a hidden name gets),
    // .svn/entries, trash folders and look-alikes, and a FIFO; the scan takes what the switches and
    // masks admit. A dot directory is a hidden one; a FIFO is a system file ("*" after it).
    void scanRules()
    {
        QFETCH(QString, switches);
        QFETCH(QString, includeFiles);
        QFETCH(QString, excludeDirs);
        QFETCH(QStringList, taken);
        Fixture f;
        for (const char *n : {"s/Makefile", "s/notes.txt", "s/bin/tool", "s/.h", "s/.svn/entries",
                              "s/.Trash/t", "s/.Trash-1000/t", "s/.Trashcan/t", "s/.Trash-1a/t"})
            f.tree.file(QString::fromUtf8(n), "", T0);
        QCOMPARE(::mkfifo(f.tree.nativePath("s/pipe").constData(), 0600), 0);
        f.tree.dir(u"d"_qs);
        f.addPair();
        DirPair &pair = f.engine.pairs[1];
        for (int i = 0; i < PairSwitchCount; ++i)
            switchField(pair, switchInDisplayOrder(i)) = switches.contains(u"uidfh"[i]);
        pair.IncludeFiles = includeFiles;
        pair.ExcludeDirs = excludeDirs;
        f.compare(); // a FIFO is listed, never opened: no hang

        QStringList names;
        const QStringList described = f.rows();
        for (qsizetype r = 1; r < described.size(); ++r) {
            const CompareEntry &row = f.engine.comparison().rows()[size_t(r) + 1];
            names << described[r].section(u' ', 3, 3).mid(2) +
                         (row.Attributes[Side::Source] & Attr::System ? u"*" : u"");
        }
        names.sort();
        taken.sort();
        QCOMPARE(names, taken);
    }

    // A link loop, a link to a directory, names that are not UTF-8 (or only look like it), a
    // directory we may not read and a vanished-looking broken link: the scan ends, follows
    // nothing and loses no byte of a name. Folders listed on worker threads (as on a network
    // mount) give the very scan a walk alone gives.
    void hostileTrees()
    {
        Fixture f;
        f.tree.file(u"s/closed/secret"_qs, "x", T0);
        f.tree.setMode(u"s/closed"_qs, 0);
        f.tree.file(u"s/unsearchable/item"_qs, "x", T0);
        f.tree.setMode(u"s/unsearchable"_qs, 0644);
        // Latin-1, a cut sequence, an overlong "/", an encoded surrogate, beyond Unicode, and
        // what looks like the decoder's own escape.
        const QList<QByteArray> raw{"caf\xe9.txt",  "a\xe2\x82",        "\xc0\xaf",
                                    "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xed\xb2\x80"};
        for (const QByteArray &name : raw)
            f.tree.rawFile("s/f3/" + name);
        f.tree.rawFile("s/gr\xc3\xbc\xc3\x9f \xe2\x82\xac"); // valid UTF-8 reads as such
        for (int i = 0; i < 70; ++i) // more folders than are listed ahead at once
            f.tree.file(u"s/f%1/x%2"_qs.arg(i % 7).arg(i), "12", T0 + i);
        f.tree.file(u"s/f1/deep/er/most"_qs, "1", T0);
        f.tree.symlink(u"s/f0/again"_qs, ".."); // a loop
        f.tree.symlink(u"s/broken"_qs, "does-not-exist");
        f.tree.file(u"s/Twin/a"_qs);
        f.tree.file(u"s/TWIN/b"_qs);
        f.tree.dir(u"d"_qs);
        f.addPair();
        f.compare();
        const MaskSet all = MaskSet::fromTexts(u"*"_qs, QString());
        auto scan = [&](int threads) {
            TextStore texts;
            FileArray entries;
            ScanExtras extras;
            extras.listingThreads = threads;
            ScanDirectory(f.tree.path(u"s/"_qs), all, all, f.engine.pairs[1], entries, texts,
                          nullptr, 0, &extras);
            QStringList out;
            for (const FileEntry &e : entries)
                out << e.path() + u'|' + e.name().toString() + u'|' +
                           QString::number(e.Attributes) + u'|' + QString::number(e.FullSize) +
                           u'|' + QString::number(e.Modified);
            return out;
        };
        const QStringList alone = scan(0);
        QCOMPARE(qsizetype(f.engine.comparison().rows().size()), alone.size() + 1);
        QCOMPARE(scan(6), alone);

        QStringList kinds;
        QList<QByteArray> names; // as the other side would be given them
        for (const CompareEntry &row : f.engine.comparison().rows()) {
            if (row.name(Side::Source) == u"again" || row.name(Side::Source) == u"broken")
                kinds << row.name(Side::Source) + u':' +
                             QString::number(row.Attributes[Side::Source] & Attr::Reparse, 16);
            names << toNative(row.path(Side::Destination) + row.name(Side::Source));
            // Read but not entered: its names are known, their sizes and dates are not.
            if (row.name(Side::Source) == u"unsearchable" && ::geteuid() != 0)
                QVERIFY(row.Attributes[Side::Source] & Attr::Unlisted);
        }
        QCOMPARE(kinds, QStringList({u"broken:400"_qs, u"again:400"_qs})); // files come first
        for (const QByteArray &name : raw)
            QVERIFY2(names.contains(f.tree.nativePath("d/f3/" + name)), name.toHex().constData());
        QVERIFY(f.rows().contains(u"-1 1 f s/gr\u00fc\u00df \u20ac [d/gr\u00fc\u00df \u20ac]"_qs));
        QVERIFY(::geteuid() == 0 ||
                (f.rows().contains(u"-1 1 d s/closed [d/closed]"_qs) &&
                 !f.rows().contains(u"-1 1 f s/closed/secret [d/closed/secret]"_qs)));
    }

    // One directory of more files than the scanner keeps in one chunk (and far more than one
    // listing read returns), against a destination that holds every tenth of them, older.
    void manyFilesInOneDirectory()
    {
        constexpr int count = 40'000;
        Fixture f;
        // Numbered names, so the order is known whatever order the file system lists them in.
        for (int k = 0; k < count; ++k) {
            const QByteArray name = (k % 2 ? "/big/F" : "/big/f") + QByteArray::number(k + count);
            f.tree.rawFile("s" + name);
            if (k % 10 == 0)
                f.tree.rawFile("d" + name, {}, T0);
        }
        f.addPair();
        f.compare();
        const CompareArray &rows = f.engine.comparison().rows();
        QCOMPARE(rows.size(), size_t(count + 3)); // element 0, the root, big, the files
        QCOMPARE(f.engine.comparison().counters(), (std::array<int, 3>{count, 2, 0}));
        for (int k = 0; k < count; ++k) {
            const CompareEntry &row = rows[static_cast<size_t>(k + 3)];
            const QString name = row.name(Side::Source);
            if (name.mid(1).toInt() != k + count || row.lacks(Side::Destination) != (k % 10 != 0))
                QFAIL(qPrintable(u"row "_qs + QString::number(k + 3) + u": " + name));
        }
    }
};

QTEST_GUILESS_MAIN(TestCompare)
#include "tst_compare.moc"

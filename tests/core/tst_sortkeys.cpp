#include <QHash>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>
#include <algorithm>

#include "base/casefold.h"
#include "base/nativename.h"
#include "core/comparecommand.h"
#include "core/merge.h"
#include "core/sortkeys.h"

using namespace duomir;

namespace {

// One side's entries from relative paths below `root`; a trailing "/" makes a directory.
// Element 0 is the root itself, as the scanner writes it. With `share`, the files of one
// directory share one Path string, as the scanner's do.
TextStore texts; // the entries' texts, for the whole test run

FileArray entriesFrom(const QString &root, const QStringList &relative, bool share = true)
{
    QHash<QString, const QString *> paths;
    FileArray out(1);
    out[0].setPath(texts.addPath(root));
    out[0].Attributes = Attr::Directory;
    for (const QString &r : relative) {
        FileEntry e;
        const bool directory = r.endsWith(u'/');
        const QString path = directory ? r.chopped(1) : r;
        const qsizetype slash = path.lastIndexOf(u'/');
        e.setName(texts.add(QStringView(path).mid(slash + 1)));
        e.Attributes = directory ? Attr::Directory : 0;
        const QString folder = root + u'/' + (directory ? path : path.left(slash + 1));
        const QString *&known = paths[folder];
        if (!known || !share || directory)
            known = texts.addPath(folder);
        e.setPath(known);
        out.push_back(e);
    }
    return out;
}

QStringList describe(const FileArray &entries)
{
    QStringList out;
    for (const FileEntry &e : entries)
        out << e.path() + u'|' + e.name().toString();
    return out;
}

// The other side's spelling of a path: every ASCII letter's case may flip.
QString respelled(QString path, QRandomGenerator &rng)
{
    for (QChar &c : path)
        if (c.unicode() < 0x80 && c.isLetter() && rng.bounded(3) == 0)
            c = c.isUpper() ? c.toLower() : c.toUpper();
    return path;
}

// What may pair with what: the path upper-cased unit by unit, and whether it is a directory.
QString caseless(QString relative)
{
    for (QChar &c : relative)
        c = QChar(upperUnit(c.unicode()));
    return relative;
}

// A random name of one to four bytes: half from a few that make case twins and hold the key's
// marks, half anything from 0x01 to 0xFF but "/"; decoded as the scanner decodes (bytes that are
// not UTF-8 become escape units).
QString randomName(QRandomGenerator &rng)
{
    static const char few[] = {'\x01', '\x02', 'a', 'A', 'b', 'B', '\xC3', '\xA9'};
    QByteArray bytes;
    for (int k = 1 + int(rng.bounded(4)); k > 0; --k) {
        char c = rng.bounded(2) ? few[rng.bounded(int(sizeof few))] : char(1 + rng.bounded(255));
        bytes += c == '/' ? 'x' : c;
    }
    return fromNative(bytes);
}

// Random relative paths ("/" at the end for a directory) of random names, some of them case
// twins; a path is a file or a directory, not both.
QStringList randomTree(quint32 seed, int count)
{
    QRandomGenerator rng(seed);
    QStringList out;
    QStringList dirs{QString()};
    QSet<QString> taken;
    while (out.size() < count) {
        const QString path = dirs.at(int(rng.bounded(dirs.size()))) + randomName(rng);
        if (taken.contains(path) || (taken.contains(caseless(path)) && rng.bounded(2)))
            continue; // some twins, not too many
        taken << path << caseless(path);
        const bool directory = rng.bounded(4) == 0;
        if (directory)
            dirs << path + u'/';
        out << (directory ? path + u'/' : path);
    }
    return out;
}

// The pairs a merge must make of two sides: within each group of entries whose paths are equal
// under the case rule, one entry a side pair whatever their case; several pair by exact path.
QStringList expectedPairs(const QStringList &source, const QStringList &destination)
{
    QHash<QString, QStringList> groups[2];
    for (int side = 0; side < 2; ++side)
        for (const QString &p : side ? destination : source)
            groups[side][caseless(p)] << p;
    QStringList out;
    for (auto g = groups[0].cbegin(); g != groups[0].cend(); ++g) {
        const QStringList other = groups[1].value(g.key());
        const bool alone = g->size() == 1 && other.size() == 1;
        for (const QString &p : *g)
            if (alone || other.contains(p))
                out << p + u" = "_qs + (alone ? other.first() : p);
    }
    out.sort();
    return out;
}

} // namespace

class TestSortKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sortFollowsTheKeys_data()
    {
        QTest::addColumn<QStringList>("paths");
        QTest::addColumn<int>("start");
        QTest::addColumn<bool>("share");

        // Names wholly beyond Latin-1, which random bytes seldom decode to, and a pair text
        // stored without its separator.
        QTest::newRow("units beyond one byte")
            << QStringList{u"\u03a9"_qs, u"\u03c9/"_qs, u"\u0416"_qs, u"\u0436x"_qs} << 6 << true;
        QTest::newRow("text stored without its separator")
            << QStringList{u"b"_qs, u"a/"_qs, u"a/c"_qs} << 5 << true;
        // Seeds above 3 give each entry a path string of its own.
        for (quint32 seed = 1; seed <= 6; ++seed)
            QTest::addRow("random %u", seed) << randomTree(seed, 400) << 6 << (seed <= 3);
        // Enough entries to be sorted in two halves at once and merged.
        QTest::newRow("random, large") << randomTree(4, 70'000) << 6 << true;
    }
    // Root "/root" (5 units); the pair text is "/root/" unless the row says otherwise.
    void sortFollowsTheKeys()
    {
        QFETCH(QStringList, paths);
        QFETCH(int, start);
        QFETCH(bool, share);
        const SortKeys keys = MakeSortKeys(start);
        FileArray entries = entriesFrom(u"/root"_qs, paths, share);
        // Scan order is arbitrary; reversing it makes the sort move every entry.
        std::reverse(entries.begin() + 1, entries.end());
        // The order the keys define, read from their text.
        FileArray expected = entries;
        std::stable_sort(expected.begin(), expected.end(),
                         [&](const FileEntry &a, const FileEntry &b) {
                             const int c = keys.text(a).compare(keys.text(b), Qt::CaseSensitive);
                             return c != 0 ? c < 0 : keys.compareExact(a, keys, b) < 0;
                         });
        SortEntries(entries, 0, static_cast<qsizetype>(entries.size()) - 1, keys);
        QCOMPARE(describe(entries), describe(expected));
    }

    void pairingFollowsPaths_data()
    {
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<QString>("root"); // the source's pair text
        for (quint32 seed = 1; seed <= 12; ++seed)
            QTest::addRow("seed %u", seed) << seed << u"/s"_qs;
        // "/" pairs with any other root as the empty text would, not as two one-sided rows.
        QTest::newRow("root of the file system") << 13u << u"/"_qs;
    }
    // Random trees whose names hold every byte value: after sorting and merging, two entries
    // pair exactly when their paths are equal under the case rule (and, among case twins,
    // exactly equal). The roots differ in length, as the merge's shortcut for files of one
    // relative directory must allow for.
    void pairingFollowsPaths()
    {
        QFETCH(quint32, seed);
        QFETCH(QString, root);
        const QString scanned = root == u"/" ? QString() : root; // the scanner's root "/" is empty
        const QStringList source = randomTree(seed, 300);
        // The destination: most of the source, some respelled, and some entries of its own.
        QRandomGenerator rng(seed);
        QStringList destination;
        for (const QString &p : source) {
            const int fate = int(rng.bounded(6));
            const QString spelled = fate == 1 ? respelled(p, rng) : p;
            // A respelled entry keeps its folders as the destination has them.
            const qsizetype cut = spelled.chopped(spelled.endsWith(u'/') ? 1 : 0).lastIndexOf(u'/');
            const QString parent = spelled.left(cut + 1);
            if (fate != 0 && (parent.isEmpty() || destination.contains(parent)))
                destination << spelled;
        }
        for (int k = 0; k < 40; ++k)
            destination << randomName(rng) + u"~new"_qs;
        destination.removeDuplicates();

        // Sorted and merged as a comparison of the pair texts `root` and "/dest" does.
        FileArray a = entriesFrom(scanned, source), b = entriesFrom(u"/dest"_qs, destination);
        const SortKeys ka = MakeSortKeys(keyStart(root)), kb = MakeSortKeys(keyStart(u"/dest"_qs));
        SortEntries(a, 0, qsizetype(a.size()) - 1, ka);
        SortEntries(b, 0, qsizetype(b.size()) - 1, kb);
        CompareArray rows(1);
        MergeAndClassify(
            {a, b, ka, kb, {compareRoot(root), compareRoot(u"/dest"_qs)}, true, 0, texts}, rows);
        // A row's path below its side's root, "/" at the end for a directory.
        const auto relative = [&](const CompareEntry &row, Side side) {
            return QString(row.path(side) + (row.isDirectory() ? u"/"_qs : row.name(side)))
                .mid(side == Side::Destination ? 6 : scanned.size() + 1);
        };
        QStringList pairs;
        for (std::size_t r = 2; r < rows.size(); ++r)
            if (!rows[r].lacks(Side::Source) && !rows[r].lacks(Side::Destination))
                pairs << relative(rows[r], Side::Source) + u" = "_qs +
                             relative(rows[r], Side::Destination);
        pairs.sort();
        QCOMPARE(pairs, expectedPairs(source, destination));
    }

    void namesInEitherForm_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<int>("keys");  // compareNameKeys(a, b)
        QTest::addColumn<int>("exact"); // compareNamesExactly(a, b)
        QTest::newRow("long common start") << u"IMG_0001.jpg"_qs << u"img_0002.JPG"_qs << -1 << -1;
        QTest::newRow("case only") << u"abc"_qs << u"ABC"_qs << 0 << 1;
        QTest::newRow("Latin-1 beyond ASCII")
            << u"\u00e9t\u00e9"_qs << u"\u00c9T\u00c9"_qs << 0 << 1;
        // One name kept a byte a unit, the other two: bytes that happen to agree are no equal
        // units.
        QTest::newRow("wide against narrow") << u"\u4141\u4141"_qs << u"AAAA"_qs << 1 << 1;
        QTest::newRow("narrow against wide") << u"AAAA"_qs << u"\u4141\u4141"_qs << -1 << -1;
    }
    // Names compare by their units whichever form a TextStore keeps them in.
    void namesInEitherForm()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        const NameUnits x = NameUnits::of(texts.add(a));
        const NameUnits y = NameUnits::of(texts.add(b));
        QTEST(compareNameKeys(x, y), "keys");
        QTEST(compareNamesExactly(x, y), "exact");
    }
};

QTEST_GUILESS_MAIN(TestSortKeys)
#include "tst_sortkeys.moc"

#include <QHash>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>
#include <algorithm>

#include "core/sortkeys.h"

using namespace duomir;

namespace {

// One side's entries from relative paths below `root`; a trailing "/" makes a directory.
// Element 0 is the root itself, as the scanner writes it. With `share`, the files of one
// directory share one Path string, as the scanner's do.
FileArray entriesFrom(const QString &root, const QStringList &relative, bool share = true)
{
    QHash<QString, QString> paths;
    FileArray out(1);
    out[0].Path = root;
    out[0].Attributes = Attr::Directory;
    for (const QString &r : relative) {
        FileEntry e;
        const bool directory = r.endsWith(u'/');
        const QString path = directory ? r.chopped(1) : r;
        const qsizetype slash = path.lastIndexOf(u'/');
        e.Name = path.mid(slash + 1);
        if (directory) {
            e.Path = root + u'/' + path;
            e.Attributes = Attr::Directory;
        } else {
            const QString parent = root + u'/' + path.left(slash + 1);
            e.Path = share ? paths.insert(parent, parent).value() : parent;
        }
        out.push_back(e);
    }
    return out;
}

// The order the keys define, read from their text: what SortEntries must produce.
FileArray referenceOrder(FileArray entries, const SortKeys &keys)
{
    std::stable_sort(entries.begin(), entries.end(), [&](const FileEntry &a, const FileEntry &b) {
        const int c = keys.text(a).compare(keys.text(b), Qt::CaseSensitive);
        if (c != 0)
            return c < 0;
        return keys.compareExact(a, keys, b) < 0;
    });
    return entries;
}

QStringList describe(const FileArray &entries)
{
    QStringList out;
    for (const FileEntry &e : entries)
        out << e.Path + u'|' + e.Name;
    return out;
}

// Random relative paths over a small alphabet that provokes shared prefixes, case twins, units
// beyond one byte, escaped raw bytes and the two marker units inside names.
QStringList randomPaths(quint32 seed, int count, bool wide)
{
    QString alphabet = u"aAbB.\x01\x02"_qs;
    if (wide)
        alphabet += QString(QChar(0x3A9)) + QChar(0xDCE9) + QChar(0xDF);
    QRandomGenerator rng(seed);
    QStringList out;
    QStringList dirs{QString()};
    QSet<QString> taken; // a name is a file or a directory, not both
    while (out.size() < count) {
        QString name;
        const int length = 1 + rng.bounded(4);
        for (int k = 0; k < length; ++k)
            name += alphabet.at(rng.bounded(alphabet.size()));
        const QString path = dirs.at(rng.bounded(dirs.size())) + name;
        if (taken.contains(path))
            continue;
        taken.insert(path);
        if (rng.bounded(5) == 0) {
            dirs << path + u'/';
            out << path + u'/';
        } else {
            out << path;
        }
    }
    return out;
}

} // namespace

class TestSortKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sortFollowsTheKeys_data();
    void sortFollowsTheKeys();
    void compareAcrossSides_data();
    void compareAcrossSides();
};

void TestSortKeys::sortFollowsTheKeys_data()
{
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<int>("start");
    QTest::addColumn<bool>("share");

    QTest::newRow("files before subdirectories, case ignored")
        << QStringList{u"b.txt"_qs, u"sub/"_qs,        u"A.txt"_qs,        u"sub/z"_qs,
                       u"Sub2/"_qs, u"sub/deeper/"_qs, u"sub/deeper/q"_qs, u"Sub2/y"_qs}
        << 6 << true;
    QTest::newRow("case twins keep their exact order")
        << QStringList{u"a.txt"_qs, u"A.TXT"_qs, u"A.txt"_qs, u"Dir/"_qs,
                       u"DIR/"_qs,  u"Dir/x"_qs, u"DIR/x"_qs}
        << 6 << true;
    QTest::newRow("units beyond one byte") << QStringList{u"\u00e9t\u00e9"_qs,
                                                          u"\u00c9T\u00c9"_qs,
                                                          u"\u03a9"_qs,
                                                          u"\u03c9/"_qs,
                                                          QString(QChar(0xDCE9)) + u"raw",
                                                          u"z"_qs}
                                           << 6 << true;
    QTest::newRow("marker units inside names")
        << QStringList{u"a\x01"
                       u"b/"_qs,
                       u"a/"_qs, u"a/b/"_qs, u"\x02x"_qs, u"a/\x01"_qs}
        << 6 << true;
    QTest::newRow("text stored without its separator")
        << QStringList{u"b"_qs, u"a/"_qs, u"a/c"_qs} << 5 << true;
    QTest::newRow("one entry") << QStringList{u"only"_qs} << 6 << true;
    for (quint32 seed : {1u, 2u, 3u}) {
        QTest::addRow("random narrow %u", seed) << randomPaths(seed, 400, false) << 6 << true;
        QTest::addRow("random wide %u", seed) << randomPaths(seed, 400, true) << 6 << true;
        QTest::addRow("random, own paths %u", seed) << randomPaths(seed, 400, true) << 6 << false;
    }
    // Enough entries to be sorted in two halves at once and merged.
    QTest::newRow("random, large") << randomPaths(4, 70'000, true) << 6 << true;
}

// Root "/root" (5 units); the pair text is "/root/" unless the row says otherwise.
void TestSortKeys::sortFollowsTheKeys()
{
    QFETCH(QStringList, paths);
    QFETCH(int, start);
    QFETCH(bool, share);
    const SortKeys keys = MakeSortKeys(start);
    FileArray entries = entriesFrom(u"/root"_qs, paths, share);
    // Scan order is arbitrary; reversing it makes the sort move every entry.
    std::reverse(entries.begin() + 1, entries.end());
    const FileArray expected = referenceOrder(entries, keys);

    SortEntries(entries, 0, static_cast<qsizetype>(entries.size()) - 1, keys);
    QCOMPARE(describe(entries), describe(expected));
    for (std::size_t k = 0; k < entries.size(); ++k)
        QCOMPARE(entries[k].Attributes, expected[k].Attributes);
}

void TestSortKeys::compareAcrossSides_data()
{
    QTest::addColumn<QString>("source");      // relative path, "/" at the end for a directory
    QTest::addColumn<QString>("destination"); // the same for the other side
    QTest::addColumn<int>("destinationStart");

    // Source root "/s" stored as "/s/" (start 4); destination root "/dest/long".
    QTest::newRow("same directory, names differ in case") << u"x/a.txt"_qs << u"x/A.TXT"_qs << 12;
    QTest::newRow("same directory, names differ") << u"x/a"_qs << u"x/b"_qs << 12;
    QTest::newRow("directories differ only in case") << u"X/a"_qs << u"x/b"_qs << 12;
    QTest::newRow("prefix directory") << u"x/a"_qs << u"xy/a"_qs << 12;
    QTest::newRow("file against directory") << u"x"_qs << u"x/"_qs << 12;
    QTest::newRow("file against file inside") << u"x/"_qs << u"x/y"_qs << 12;
    QTest::newRow("destination text without separator") << u"a"_qs << u"a"_qs << 11;
    QTest::newRow("deeper on one side") << u"a/b/c"_qs << u"a/b"_qs << 12;
}

// The merge compares entries of two sides whose roots differ in length; the shortcut for files of
// the same relative directory must agree with the full keys.
void TestSortKeys::compareAcrossSides()
{
    QFETCH(QString, source);
    QFETCH(QString, destination);
    QFETCH(int, destinationStart);
    const SortKeys sk = MakeSortKeys(4);
    const SortKeys dk = MakeSortKeys(destinationStart);
    const FileEntry a = entriesFrom(u"/s"_qs, {source}).back();
    const FileEntry b = entriesFrom(u"/dest/long"_qs, {destination}).back();
    auto sign = [](int v) { return (v > 0) - (v < 0); };
    const int expected = sign(sk.text(a).compare(dk.text(b), Qt::CaseSensitive));
    QCOMPARE(sk.compare(a, dk, b), expected);
    QCOMPARE(dk.compare(b, sk, a), -expected);
}

QTEST_GUILESS_MAIN(TestSortKeys)
#include "tst_sortkeys.moc"

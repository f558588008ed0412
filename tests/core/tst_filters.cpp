#include <QFile>
#include <QTest>

#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/engine.h"
#include "core/filters.h"

using namespace duomir;

namespace {

// A compared list with every kind of row the filters tell apart; a row's number is its index.
CompareArray sampleRows()
{
    static TextStore texts;
    auto row = [](int state, bool directory, const char *source, const char *destination) {
        CompareEntry e;
        e.State = static_cast<std::int16_t>(state);
        e.Attributes[0] = e.Attributes[1] = directory ? Attr::Directory : 0;
        e.setName(0, texts.add(QString::fromUtf8(source)));
        e.setName(1, texts.add(QString::fromUtf8(destination)));
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

QList<int> rowNumbers(const RowIndexArray &visible)
{
    return QList<int>(visible.begin() + 1, visible.end());
}

} // namespace

class TestFilters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selection_data();
    void selection();
    void countsAndLabels();
};

void TestFilters::selection_data()
{
    QTest::addColumn<int>("fileFilter");
    QTest::addColumn<int>("sideFilter");
    QTest::addColumn<bool>("showEmpty");
    QTest::addColumn<QList<int>>("rows");

    QTest::newRow("all") << 0 << 0 << true << QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    QTest::newRow("all, empty directories hidden")
        << 0 << 0 << false << QList<int>{2, 3, 4, 6, 7, 8, 9};
    QTest::newRow("modified keeps every directory")
        << 1 << 0 << true << QList<int>{1, 2, 4, 5, 6, 7, 8, 10};
    QTest::newRow("modified, empty hidden") << 1 << 0 << false << QList<int>{2, 4, 6, 7, 8};
    QTest::newRow("modified in source") << 2 << 0 << true << QList<int>{1, 2, 4, 5, 6, 8, 10};
    QTest::newRow("modified in source, empty hidden") << 2 << 0 << false << QList<int>{2, 4, 8};
    QTest::newRow("modified in destination") << 3 << 0 << true << QList<int>{1, 2, 5, 6, 7, 10};
    QTest::newRow("identical") << 4 << 0 << true << QList<int>{1, 2, 3, 5, 6, 9, 10};
    QTest::newRow("identical ignores the side filter")
        << 4 << 2 << true << QList<int>{1, 2, 3, 5, 6, 9, 10};
    QTest::newRow("both sides: names equal exactly")
        << 0 << 1 << true << QList<int>{1, 2, 3, 5, 6, 7, 8, 10};
    QTest::newRow("one side: case-renamed counts")
        << 0 << 2 << true << QList<int>{1, 2, 4, 5, 6, 8, 9, 10};
}

void TestFilters::selection()
{
    QFETCH(int, fileFilter);
    QFETCH(int, sideFilter);
    QFETCH(bool, showEmpty);
    QFETCH(QList<int>, rows);

    const CompareArray sample = sampleRows();
    FilterState filter;
    filter.FileFilter = fileFilter;
    filter.SideFilter = sideFilter;
    filter.ShowEmptyDirs = showEmpty;
    QCOMPARE(rowNumbers(filterRows(sample, filter)), rows);
}

// Labels 0 and 2 carry the counts, singular only for exactly one; the root row names nothing.
void TestFilters::countsAndLabels()
{
    test::TempTree tree;
    tree.file(u"English.lang"_qs, "702=%1 file\n703=%1 files\n712=%1 folder\n713=%1 folders\n");
    test::FakeInteraction ui;
    Engine engine(ui);
    engine.language = Language::load(tree.path(u"English.lang"_qs), &ui);
    engine.CompareResults = sampleRows();
    engine.filter.ShowEmptyDirs = true;

    BuildVisibleRows(engine, 3);
    QCOMPARE(engine.filter.FileFilter, 3);
    QCOMPARE(engine.visibleCounts.files, 1);
    QCOMPARE(engine.visibleCounts.directories, 4);
    QCOMPARE(ui.statusLabels, QStringList({u"1 file"_qs, QString(), u"4 folders"_qs}));

    engine.CompareResults.resize(2); // the root alone
    BuildVisibleRows(engine, 0);
    QCOMPARE(ui.statusLabels, QStringList({u"0 files"_qs, QString(), u"0 folders"_qs}));
}

QTEST_GUILESS_MAIN(TestFilters)
#include "tst_filters.moc"

#include <QtTest>
#include <numeric>

#include "common/fakeinteraction.h"
#include "common/rowbuilder.h"
#include "core/engine.h"
#include "ui/filelistmodel.h"

using namespace duomir;
using namespace duomir::test;
using namespace Qt::StringLiterals;

namespace {

TextStore texts; // the hand-made rows' texts, for the whole test run

CompareEntry fileRow(const QString &name, std::int16_t state, int size = 10)
{
    CompareEntry e;
    e.State = state;
    e.Marked = state != Identical;
    setPaths(e, texts, u"/s/"_s, u"/d/"_s);
    setNames(e, texts, state == ModifiedInDestination ? QString() : name,
             state == ModifiedInSource ? QString() : name);
    e.FullSize = {size, size};
    e.Modified = {45000.5, 45000.5};
    return e;
}

CompareEntry dirRow(const QString &path)
{
    CompareEntry e;
    setPaths(e, texts, u"/s/"_s + path, u"/d/"_s + path);
    e.Attributes = {Attr::Directory, Attr::Directory};
    e.Marked = true;
    return e;
}

} // namespace

class TestFileListModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_ui = test::FakeInteraction();
        m_engine = std::make_unique<Engine>(m_ui);
    }

    // A check mark set in a filtered list must reach the entry of CompareResults that the row
    // shows, which is what synchronization reads.
    void markReachesCompareResultsThroughFilter()
    {
        m_engine->CompareResults = {
            CompareEntry{}, dirRow(u"a"_s), fileRow(u"same.txt"_s, Identical),
            fileRow(u"new.txt"_s, ModifiedInSource), fileRow(u"old.txt"_s, ModifiedInDestination)};
        // A filter that keeps the directory and the destination-side row only.
        m_engine->VisibleRows = {0, 1, 4};
        FileListModel model(*m_engine);
        QCOMPARE(model.rowCount(), 2);

        const QModelIndex mark = model.index(1, FileListModel::MarkedColumn);
        QVERIFY(model.setData(mark, Qt::Unchecked, Qt::CheckStateRole));
        QVERIFY(!m_engine->CompareResults[4].Marked);
        QVERIFY(m_engine->CompareResults[3].Marked);

        model.markAll(false);
        QVERIFY(!m_engine->CompareResults[1].Marked);
        QVERIFY(m_engine->CompareResults[3].Marked); // not shown, not touched
    }

    // After a failed Compare the results are gone while the list may still name them.
    void danglingRowsReadAsEmpty()
    {
        m_engine->VisibleRows = {0, 1, 2};
        FileListModel model(*m_engine);
        QCOMPARE(model.resultIndex(0), 0);
        QVERIFY(model.index(1, FileListModel::NameColumn).data().isNull());
        QVERIFY(model.setData(model.index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
        model.sort(FileListModel::NameColumn, Qt::AscendingOrder);
        QCOMPARE(m_engine->CompareResults.size(), size_t(1));
    }

    void columnsShowEachSide()
    {
        m_engine->CompareResults = {CompareEntry{}, dirRow(u"sub"_s),
                                    fileRow(u"only-here.txt"_s, ModifiedInSource, 1234567)};
        m_engine->VisibleRows = {0, 1, 2};
        FileListModel model(*m_engine);
        const auto text = [&](int row, int column) {
            return model.index(row, column).data().toString();
        };
        QCOMPARE(text(0, FileListModel::NameColumn), u"/s/sub"_s);
        QVERIFY(text(0, FileListModel::SourceSizeColumn).isEmpty());
        QCOMPARE(text(1, FileListModel::NameColumn), u"only-here.txt"_s);
        QCOMPARE(text(1, FileListModel::SourceSizeColumn), QLocale().toString(1234567));
        QVERIFY(text(1, FileListModel::DestinationSizeColumn).isEmpty());
        QVERIFY(!model.index(1, FileListModel::StateColumn).data(Qt::DecorationRole).isNull());
    }

    void datesCountDaysFrom1899_data()
    {
        QTest::addColumn<double>("days");
        QTest::addColumn<QDateTime>("expected");
        const auto at = [](int y, int m, int d, int h, int min, int s) {
            return QDateTime(QDate(y, m, d), QTime(h, min, s), QTimeZone::utc());
        };
        QTest::newRow("day zero") << 0.0 << at(1899, 12, 30, 0, 0, 0);
        QTest::newRow("noon") << 45000.5 << at(2023, 3, 15, 12, 0, 0);
        QTest::newRow("before day zero") << -1.25 << at(1899, 12, 28, 18, 0, 0);
        QTest::newRow("a second before midnight")
            << (45001.0 - 1.0 / 86400.0) << at(2023, 3, 15, 23, 59, 59);
    }
    void datesCountDaysFrom1899()
    {
        QFETCH(double, days);
        QFETCH(QDateTime, expected);
        const QLocale german(QLocale::German);
        QCOMPARE(FileListModel::formatDate(days, german),
                 german.toString(expected, QLocale::ShortFormat));
    }

    // A large list: sorting, reading the last row and a mark on it stay on the right entry.
    void largeListSortsAndMapsRows()
    {
        constexpr int count = 200'000;
        m_engine->CompareResults.reserve(count + 1);
        for (int i = 0; i < count; ++i)
            m_engine->CompareResults.push_back(
                fileRow(u"f%1"_s.arg(count - i, 7, 10, QChar(u'0')), ModifiedInSource, i));
        m_engine->VisibleRows.resize(count + 1);
        std::iota(m_engine->VisibleRows.begin(), m_engine->VisibleRows.end(), 0);
        FileListModel model(*m_engine);
        QCOMPARE(model.rowCount(), count);

        model.sort(FileListModel::NameColumn, Qt::AscendingOrder);
        QCOMPARE(model.index(0, FileListModel::NameColumn).data().toString(), u"f0000001"_s);
        QCOMPARE(model.resultIndex(0), count);
        QVERIFY(model.setData(model.index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
        QVERIFY(!m_engine->CompareResults[count].Marked);
        QVERIFY(m_engine->CompareResults[1].Marked);

        model.sort(FileListModel::SourceSizeColumn, Qt::DescendingOrder);
        QCOMPARE(model.index(0, FileListModel::NameColumn).data().toString(), u"f0000001"_s);

        model.reload(); // a rebuilt list starts in the engine's order again
        QCOMPARE(model.resultIndex(0), 1);
    }

private:
    test::FakeInteraction m_ui;
    std::unique_ptr<Engine> m_engine;
};

QTEST_MAIN(TestFileListModel)
#include "tst_filelistmodel.moc"

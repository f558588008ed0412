#include <QTest>

#include "core/progressmodel.h"

using namespace duomir;

namespace {

// What a display shows now.
class Display : public ProgressSink
{
public:
    bool visible = false;
    QString percent, from, to, file;
    int width = -1;

    void setVisible(bool v) override { visible = v; }
    void setPercentText(const QString &text) override { percent = text; }
    void setBarWidth(int w) override { width = w; }
    void setFrom(const QString &d) override { from = d; }
    void setTo(const QString &d) override { to = d; }
    void setFileName(const QString &n) override { file = n; }
    int fullBarWidth() const override { return 400; }
};

constexpr std::int64_t GiB = std::int64_t(1) << 30;

} // namespace

class TestProgressModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Percent and width follow the whole run and never go back, whatever the updates say.
    void growsOnly_data()
    {
        QTest::addColumn<std::int64_t>("total");
        QTest::addColumn<QList<std::int64_t>>("steps"); // >= 0 Update, < 0 FileDone(-x)
        QTest::addColumn<QString>("percent");
        QTest::addColumn<int>("width");
        const auto row = [](const char *tag, std::int64_t total, QList<std::int64_t> steps,
                            const char *percent, int width) {
            QTest::newRow(tag) << total << steps << percent << width;
        };
        row("rounds to nearest", 1000, {-5, 0}, "1 %", 2);
        row("a cancelled file does not pull back", 1000, {800, 100}, "80 %", 320);
        row("files done add up", 1000, {-250, -250, 100}, "60 %", 240);
        row("beyond 4 GiB", 10 * GiB, {-6 * GiB, GiB}, "70 %", 280);
        row("grown file stops at 100", 10, {30}, "100 %", 400);
        row("total 0 stays at 0", 0, {-0, 0}, "0 %", 0);
    }
    void growsOnly()
    {
        QFETCH(std::int64_t, total);
        QFETCH(QList<std::int64_t>, steps);
        Display display;
        ProgressModel model;
        model.setSink(&display);
        model.Init(total);
        QVERIFY(model.isVisible());
        for (std::int64_t step : steps)
            step < 0 ? model.FileDone(-step) : model.Update(total, step);
        QTEST(display.percent, "percent");
        QTEST(display.width, "width");
    }

    // Without a display nothing shows. A new run starts again from zero; the directory labels lose
    // the trailing separator.
    void labelsAndRestart()
    {
        Display display;
        ProgressModel model;
        model.Init(100);
        model.Update(100, 50);
        QVERIFY(!model.isVisible());
        model.setSink(&display);
        model.Init(100);
        model.Update(100, 100);
        model.Hide();
        QVERIFY(!display.visible);
        model.Init(100);
        model.ShowFile(u"/s/"_qs, u"/d/"_qs, u"a"_qs);
        model.ShowFile(u"/s/"_qs, u"/d/x/"_qs, u"b"_qs);
        model.Update(100, 10);
        QVERIFY(display.visible);
        QCOMPARE(QStringList({display.percent, display.from, display.to, display.file}),
                 QStringList({u"10 %"_qs, u"/s"_qs, u"/d/x"_qs, u"b"_qs}));
        QCOMPARE(display.width, 40);
    }
};

QTEST_GUILESS_MAIN(TestProgressModel)
#include "tst_progressmodel.moc"

#include <QTest>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

#include "core/copypipeline.h"
#include "core/platform/posixfileops.h"

using namespace duomir;
using namespace std::chrono_literals;

namespace {

constexpr int Copy = 1;
constexpr int Made = 2;
constexpr int Cleared = 3;

// A file layer whose copies run a test's script: each copy learns its source name and may wait on
// the others. Records which copies started. Files above 100 bytes are large.
class ScriptedOps : public PosixFileOps
{
public:
    ScriptedOps() : PosixFileOps(100) {}
    std::function<OpResult(const QString &from, const CopyProgress &)> script;

    std::mutex mutex;
    std::condition_variable changed;
    QStringList started;
    std::set<QString> finished;
    QStringList cleared; // targets made writable

    OpResult clearReadOnly(const TreePath &path) override
    {
        const std::lock_guard lock(mutex);
        cleared << path.relative;
        return {};
    }

    OpResult copyFile(const TreePath &fromPlace, const Seen &, const TreePath &,
                      const std::optional<Seen> &, const CopyProgress &progress,
                      const std::atomic<bool> &) override
    {
        const QString &from = fromPlace.relative;
        {
            const std::lock_guard lock(mutex);
            started << from;
        }
        const OpResult result = script ? script(from, progress) : OpResult{};
        {
            const std::lock_guard lock(mutex);
            finished.insert(from);
        }
        changed.notify_all();
        return result;
    }

    // Waits (at most a few seconds, so that a broken pipeline fails instead of hanging).
    bool waitFor(const std::function<bool()> &condition)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, 5s, condition);
    }
};

// One copy as the walk asks for it; the name stands for both places.
void copyStep(CopyPipeline &pipeline, int index, const QString &name, std::int64_t size,
              int clearWhat = 0)
{
    CopyStep step;
    step.what = Copy;
    step.index = index;
    step.from = step.to = {u"/"_qs, name};
    step.size = size;
    step.clearWhat = clearWhat;
    pipeline.copy(std::move(step));
}

struct Run
{
    ScriptedOps ops;
    std::atomic<bool> cancel = false;
    QStringList reported; // "name" or "name!" for a failure, in the order handed back

    CopyPipeline::Hooks hooks()
    {
        return {.started = [](const CopyStep &) {},
                .progress = [](std::int64_t, std::int64_t) {},
                .yield = [] {},
                .finished =
                    [this](const CopyStep &step) {
                        const QString name = step.isCopy            ? step.from.relative
                                             : step.what == Cleared ? u"cleared"_qs
                                                                    : u"made"_qs;
                        reported << (step.result.ok() ? name : name + u'!');
                    }};
    }
};

} // namespace

class TestCopyPipeline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // "a" finishes only after "d" has: the copies really run side by side, and still every step,
    // the walk's own results among them, is reported in walk order.
    void laterCopiesMayFinishFirstButReportsKeepWalkOrder()
    {
        Run run;
        run.ops.script = [&](const QString &from, const CopyProgress &) -> OpResult {
            if (from == u"a")
                return run.ops.waitFor([&] { return run.ops.finished.count(u"d"_qs) > 0; })
                           ? OpResult{}
                           : OpResult::failure(ETIMEDOUT);
            return from == u"b" ? OpResult::failure(ENOSPC) : OpResult{};
        };

        {
            CopyPipeline pipeline(run.ops, run.cancel, run.hooks(), false);
            copyStep(pipeline, 1, u"a"_qs, 10);
            copyStep(pipeline, 2, u"b"_qs, 10);
            pipeline.add(Made, 3, OpResult::failure(EACCES));
            copyStep(pipeline, 4, u"c"_qs, 10);
            copyStep(pipeline, 5, u"d"_qs, 10);
            pipeline.finish();
        }
        QCOMPARE(run.reported, QStringList({u"a"_qs, u"b!"_qs, u"made!"_qs, u"c"_qs, u"d"_qs}));
    }

    // Copies no worker has taken when Cancel is set are dropped without a report, and their
    // read-only targets stay read-only; every copy that did start is reported, after its target
    // was made writable.
    void cancelDropsWhatHasNotStarted()
    {
        Run run;
        run.ops.script = [&](const QString &from, const CopyProgress &) -> OpResult {
            if (from == u"f0") {
                run.cancel = true;
                return OpResult::failure(ECANCELED);
            }
            std::this_thread::sleep_for(1ms);
            return {};
        };
        CopyPipeline pipeline(run.ops, run.cancel, run.hooks(), false);
        for (int i = 0; i < 30; ++i)
            copyStep(pipeline, i + 1, u"f%1"_qs.arg(i), 1, Cleared);
        pipeline.finish();
        // Cancelled before it began.
        copyStep(pipeline, 31, u"late"_qs, 1000, Cleared);
        QVERIFY(run.ops.started.size() < 30);
        QStringList expected; // in walk order, each after its target was made writable
        for (int i = 0; i < 30; ++i) {
            if (run.ops.started.contains(u"f%1"_qs.arg(i)))
                expected << u"cleared"_qs << (i ? u"f%1"_qs.arg(i) : u"f0!"_qs);
        }
        QCOMPARE(run.reported, expected);
        QStringList started = run.ops.started, cleared = run.ops.cleared;
        started.sort();
        cleared.sort();
        QCOMPARE(cleared, started);
    }
};

QTEST_GUILESS_MAIN(TestCopyPipeline)
#include "tst_copypipeline.moc"

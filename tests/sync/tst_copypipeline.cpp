#include <QTest>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>

#include "core/copypipeline.h"
#include "core/platform/posixfileops.h"

using namespace duomir;
using namespace std::chrono_literals;

namespace {

constexpr int Copy = 1;
constexpr int Made = 2;

// A file layer whose copy of "a" waits until "d" is done and whose copy of "b" fails.
class ScriptedOps : public PosixFileOps
{
public:
    ScriptedOps() : PosixFileOps(100) {}
    std::mutex mutex;
    std::condition_variable changed;
    std::set<QString> finished;

    OpResult copyFile(const TreePath &place, const Seen &, const TreePath &,
                      const std::optional<Seen> &, const CopyProgress &,
                      const std::atomic<bool> &) override
    {
        OpResult result = place.relative == u"b" ? OpResult::failure(ENOSPC) : OpResult{};
        std::unique_lock lock(mutex);
        // At most a few seconds, so that a pipeline that copies one by one fails, not hangs.
        const auto dDone = [&] { return finished.count(u"d"_qs) > 0; };
        if (place.relative == u"a" && !changed.wait_for(lock, 5s, dDone))
            result = OpResult::failure(ETIMEDOUT);
        finished.insert(place.relative);
        changed.notify_all();
        return result;
    }
};

} // namespace

class TestCopyPipeline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // "a" finishes only after "d" has: the copies really run side by side, and still every step,
    // the walk's own results among them, is reported in walk order ("!" for a failure).
    void laterCopiesMayFinishFirstButReportsKeepWalkOrder()
    {
        ScriptedOps ops;
        std::atomic<bool> cancel = false;
        QStringList reported;
        const auto ignored = [](auto &&...) {};
        const CopyPipeline::Hooks hooks{ignored, ignored, ignored, [&](const CopyStep &step) {
                                            const QString name =
                                                step.isCopy ? step.from.relative : u"made"_qs;
                                            reported << (step.result.ok() ? name : name + u'!');
                                        }};
        {
            CopyPipeline pipeline(ops, cancel, hooks, false);
            int index = 0;
            for (const QString &name : {u"a"_qs, u"b"_qs, u"made"_qs, u"c"_qs, u"d"_qs}) {
                CopyStep step;
                step.what = Copy;
                step.index = ++index;
                step.from = step.to = {u"/"_qs, name};
                step.size = 10;
                if (name == u"made")
                    pipeline.add(Made, index, OpResult::failure(EACCES));
                else
                    pipeline.copy(std::move(step));
            }
            pipeline.finish();
        }
        QCOMPARE(reported, QStringList({u"a"_qs, u"b!"_qs, u"made!"_qs, u"c"_qs, u"d"_qs}));
    }
};

QTEST_GUILESS_MAIN(TestCopyPipeline)
#include "tst_copypipeline.moc"

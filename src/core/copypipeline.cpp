#include "core/copypipeline.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace duomir {

namespace {

// Enough copies ahead of the one shown to keep the workers fed past a slow file, few enough that
// Cancel or a failure message stops the run close to where it is seen.
constexpr size_t Lookahead = 32;

// How long the walk's thread waits for the head before it yields to the event loop again.
constexpr std::chrono::milliseconds YieldInterval{15};

} // namespace

int CopyPipeline::workerCount()
{
    // Far beyond the cores more threads still help: most of a small copy is spent waiting, on a
    // source block not yet read, on the inode table, on the directory lock another copy holds.
    // On two cores twelve threads copied a tree of small files a third faster than two did.
    return std::clamp(6 * int(std::thread::hardware_concurrency()), 8, 16);
}

CopyPipeline::CopyPipeline(FileOps &ops, const std::atomic<bool> &cancel, Hooks hooks,
                           bool holdOnFailure)
    : m_ops(ops), m_cancel(cancel), m_hooks(std::move(hooks)), m_holdOnFailure(holdOnFailure),
      m_limit(ops.parallelCopyLimit())
{}

CopyPipeline::~CopyPipeline()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_workAdded.notify_all();
    for (std::thread &worker : m_workers)
        worker.join();
}

void CopyPipeline::copy(CopyStep request)
{
    auto slot = std::make_unique<Slot>();
    CopyStep &step = slot->step;
    step = std::move(request);
    step.isCopy = true;
    const std::int64_t size = step.size;
    if (m_workers.empty() && m_limit > 0 && size <= m_limit)
        startWorkers();
    if (m_limit <= 0 || size > m_limit) {
        finish();
        copyHere(step);
        return;
    }
    while (m_slots.size() >= Lookahead)
        reportHead();
    enqueue(std::move(slot), true);
}

void CopyPipeline::startWorkers()
{
    try {
        for (int i = workerCount(); i > 0; --i)
            m_workers.emplace_back(&CopyPipeline::work, this);
    } catch (const std::system_error &) {
        // The threads that could be had do the work; with none, every copy is made here.
        if (m_workers.empty())
            m_limit = 0;
    }
}

void CopyPipeline::add(int what, int index, OpResult result)
{
    auto slot = std::make_unique<Slot>();
    slot->step.what = what;
    slot->step.index = index;
    slot->step.result = result;
    slot->done = true;
    if (m_slots.empty())
        report(slot->step);
    else
        enqueue(std::move(slot), false);
}

void CopyPipeline::enqueue(std::unique_ptr<Slot> slot, bool forWorkers)
{
    {
        const std::lock_guard lock(m_mutex);
        if (forWorkers)
            m_waiting.push_back(slot.get());
        m_slots.push_back(std::move(slot));
    }
    if (forWorkers)
        m_workAdded.notify_one();
}

void CopyPipeline::finish()
{
    while (!m_slots.empty())
        reportHead();
}

// Making the target writable waits for the copy itself: a copy that Cancel drops leaves its
// target as read-only as it was.
void CopyPipeline::clearTarget(CopyStep &step)
{
    if (step.clearWhat != 0)
        step.cleared = m_ops.clearReadOnly(step.to);
}

void CopyPipeline::copyHere(CopyStep &step)
{
    if (m_cancel)
        return;
    m_hooks.started(step);
    if (m_cancel)
        return; // pressed while the file was shown: not begun, so dropped like a queued copy
    clearTarget(step);
    reportCleared(step); // a Cancel answered here stops the copy at its first chunk
    step.result =
        m_ops.copyFile(step.from, step.fromSeen, step.to, step.toSeen, m_hooks.progress, m_cancel);
    report(step);
}

void CopyPipeline::reportCleared(const CopyStep &copy)
{
    if (copy.clearWhat == 0)
        return;
    CopyStep step;
    step.what = copy.clearWhat;
    step.index = copy.index;
    step.result = copy.cleared;
    report(step);
}

void CopyPipeline::report(const CopyStep &step)
{
    if (isRepeatedCancel(step))
        return;
    const bool hold = m_holdOnFailure && !step.result.ok();
    if (hold)
        setHeld(true);
    m_hooks.finished(step);
    if (hold)
        setHeld(false);
}

// One Cancel stops every copy in flight; the person hears of it once, as after a serial copy.
bool CopyPipeline::isRepeatedCancel(const CopyStep &step)
{
    return step.result.error == ECANCELED && std::exchange(m_cancelReported, true);
}

void CopyPipeline::reportHead()
{
    Slot &head = *m_slots.front();
    std::unique_lock lock(m_mutex);
    const bool show = head.step.isCopy && !head.skipped && !m_cancel;
    lock.unlock();
    if (show)
        m_hooks.started(head.step);
    std::int64_t shown = 0;
    for (bool done = false; !done;) {
        lock.lock();
        if (!head.done)
            m_headDone.wait_for(lock, YieldInterval);
        done = head.done;
        lock.unlock();
        const std::int64_t bytes = head.bytes;
        if (bytes != shown) {
            shown = bytes;
            m_hooks.progress(head.total, bytes);
        } else if (!done) {
            m_hooks.yield();
        }
    }
    lock.lock();
    const std::unique_ptr<Slot> slot = std::move(m_slots.front());
    m_slots.pop_front();
    lock.unlock();

    if (slot->skipped)
        return;
    reportCleared(slot->step);
    report(slot->step);
}

void CopyPipeline::setHeld(bool held)
{
    {
        const std::lock_guard lock(m_mutex);
        m_held = held;
    }
    if (!held)
        m_workAdded.notify_all();
}

void CopyPipeline::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_workAdded.wait(lock, [this] { return m_stopping || (!m_held && !m_waiting.empty()); });
        if (m_stopping)
            return;
        Slot *slot = m_waiting.front();
        m_waiting.pop_front();
        if (m_cancel) {
            slot->skipped = true;
        } else {
            lock.unlock();
            clearTarget(slot->step);
            slot->step.result = m_ops.copyFile(
                slot->step.from, slot->step.fromSeen, slot->step.to, slot->step.toSeen,
                [slot](std::int64_t total, std::int64_t done) {
                    slot->total = total;
                    slot->bytes = done;
                },
                m_cancel);
            lock.lock();
        }
        slot->done = true;
        if (m_slots.front().get() == slot)
            m_headDone.notify_one();
    }
}

} // namespace duomir

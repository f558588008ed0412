#pragma once

#include <QString>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "core/platform/fileops.h"

namespace duomir {

// One outcome of a copy walk: a copy the pipeline makes, or a result the walk made itself (a new
// directory, a target made writable) that must be reported in its place among the copies.
struct CopyStep
{
    bool isCopy = false;
    int what = 0;  // the failure bits for the report
    int index = 0; // row of the comparison
    TreePath from; // copies only
    TreePath to;
    Seen fromSeen;              // the sending file as the comparison saw it
    std::optional<Seen> toSeen; // the file replaced; none when the name was free
    std::int64_t size = 0;
    OpResult result;
    // Copies only: non-zero when the target is read-only. It is made writable just before the
    // copy, on the copy's thread, and that result is reported first under these failure bits.
    int clearWhat = 0;
    OpResult cleared;
};

// Copies small files on worker threads while the walk goes on. Creating many small files is
// mostly kernel time that one thread spends waiting; a few copies in flight keep every core busy.
// The walk's thread alone talks to the person: it shows the copy at the head of the queue, hands
// every step back in walk order and keeps yielding while it waits. A file above the file layer's
// parallel limit is copied alone on the walk's thread once everything before it is reported, so
// the progress and Cancel act on it exactly as in a serial copy, and nothing after it starts
// early. A copy not yet started when Cancel is set is dropped without a report.
class CopyPipeline
{
public:
    struct Hooks
    {
        std::function<void(const CopyStep &)> started; // the copy now shown
        std::function<void(std::int64_t total, std::int64_t done)> progress;
        std::function<void()> yield; // waiting on the head: lets Cancel be pressed
        std::function<void(const CopyStep &)> finished; // every step, in walk order
    };

    // `holdOnFailure`: workers start nothing new while a failure is being reported, so that a
    // person reading a message box can still cancel before the next copies.
    CopyPipeline(FileOps &ops, const std::atomic<bool> &cancel, Hooks hooks, bool holdOnFailure);
    ~CopyPipeline();
    CopyPipeline(const CopyPipeline &) = delete;
    CopyPipeline &operator=(const CopyPipeline &) = delete;

    // `step` holds the copy's what, index, places, seen states, size and clearWhat.
    void copy(CopyStep step);
    // A result the walk made itself.
    void add(int what, int index, OpResult result);
    // Reports every step still queued.
    void finish();

    static int workerCount();

private:
    struct Slot
    {
        CopyStep step;
        bool done = false;
        bool skipped = false;
        std::atomic<std::int64_t> total = 0;
        std::atomic<std::int64_t> bytes = 0;
    };

    void startWorkers();
    void clearTarget(CopyStep &step);
    void copyHere(CopyStep &step);
    void reportCleared(const CopyStep &copy);
    void report(const CopyStep &step);
    void enqueue(std::unique_ptr<Slot> slot, bool forWorkers);
    void reportHead();
    void setHeld(bool held);
    bool isRepeatedCancel(const CopyStep &step);
    void work();

    FileOps &m_ops;
    const std::atomic<bool> &m_cancel;
    Hooks m_hooks;
    const bool m_holdOnFailure;
    std::int64_t m_limit; // 0 when no worker thread could be started
    bool m_cancelReported = false;

    std::mutex m_mutex;
    std::condition_variable m_workAdded;
    std::condition_variable m_headDone;
    std::deque<std::unique_ptr<Slot>> m_slots; // walk order, oldest first
    std::deque<Slot *> m_waiting;              // copies no worker has taken yet
    bool m_held = false;
    bool m_stopping = false;
    std::vector<std::thread> m_workers; // started with the first small copy
};

} // namespace duomir

#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "core/progressmodel.h"
#include "core/syncstats.h"

namespace duomir {

class FileOps;

// The synchronization directions (the fourth toolbar, buttons "#0".."#4").
struct SyncOptions
{
    bool Src = true;
    bool Dest = true;
    bool Reverse = false; // the button exists but is hidden
    bool Delete = false;  // only with exactly one direction
    // Only with exactly one direction, never with Delete: the receiving side loses what the
    // sending side lacks (files and emptied folders) before the copies.
    bool Mirror = false;
};

// What a synchronization run is told and what it keeps while it goes: the directions, the cancel
// request, the bytes it has to copy, its progress display and what it did.
class SyncRun
{
public:
    // `ops` is where the run changes the disk; not owned.
    explicit SyncRun(FileOps &ops) : m_ops(&ops) {}
    SyncRun(const SyncRun &) = delete;
    SyncRun &operator=(const SyncRun &) = delete;

    const SyncOptions &options() const { return m_options; }
    void setOptions(const SyncOptions &options) { m_options = options; }

    FileOps &fileOps() const { return *m_ops; }
    // A dry run or a test puts another file layer in; it must outlive the runs that use it.
    void setFileOps(FileOps &ops) { m_ops = &ops; }

    // Set by Cancel and by termination signals, read by copies on worker threads.
    std::atomic<bool> &cancelFlag() { return m_cancel; }
    bool cancelled() const { return m_cancel; }
    void cancel() { m_cancel = true; }

    // Starts a run: no cancel request, nothing done, nothing to copy yet.
    void begin()
    {
        m_cancel = false;
        m_stats = {};
        m_byteTotal = 0;
    }
    // Bytes the run's copies will move, summed before they start.
    std::int64_t byteTotal() const { return m_byteTotal; }
    void addBytes(std::int64_t bytes) { m_byteTotal += bytes; }

    // Pairs whose deletion step the guard held back in this run (their root rows): the deletion
    // walk leaves them alone.
    std::vector<int> &refusedRoots() { return m_refusedRoots; }
    const std::vector<int> &refusedRoots() const { return m_refusedRoots; }

    // The GUI sets a sink; without one nothing is shown.
    ProgressModel &progress() { return m_progress; }
    SyncStats &stats() { return m_stats; }
    const SyncStats &stats() const { return m_stats; }

private:
    static_assert(std::atomic<bool>::is_always_lock_free);

    SyncOptions m_options;
    FileOps *m_ops;
    std::atomic<bool> m_cancel = false;
    std::int64_t m_byteTotal = 0;
    ProgressModel m_progress;
    SyncStats m_stats;
    std::vector<int> m_refusedRoots;
};

} // namespace duomir

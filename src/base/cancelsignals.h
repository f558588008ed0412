#pragma once

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace duomir {

// While it lives, the given signals cancel the run in order instead of killing the program: the
// copy under way stops between two chunks (its temporary file goes, the old target stays whole)
// and the run ends as after Cancel. A signal handler may do almost nothing, so it only sets the
// cancel flag, remembers the signal and, for an event loop, writes the signal's number into
// `wakeFd`. With `once`, the handler resets itself: a second signal ends the program at once.
// One guard at a time; the previous handlers come back when it goes.
class CancelSignals
{
public:
    struct Options
    {
        int wakeFd = -1;
        bool once = false;
    };
    CancelSignals(std::atomic<bool> &cancel, std::initializer_list<int> signals, Options options);
    ~CancelSignals();
    CancelSignals(const CancelSignals &) = delete;
    CancelSignals &operator=(const CancelSignals &) = delete;

    // The signal that came while a guard lived, or 0.
    static int received();

private:
    static constexpr int MaxSignals = 4;
    int m_signals[MaxSignals] = {};
    struct sigaction m_previous[MaxSignals] = {};
    int m_count = 0;
};

} // namespace duomir

#include "base/cancelsignals.h"

#include <unistd.h>

namespace duomir {

namespace {

std::atomic<bool> *g_cancel = nullptr; // lock-free, so the handler may store to it
int g_wakeFd = -1;
volatile std::sig_atomic_t g_received = 0;

static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void onCancelSignal(int sig)
{
    g_received = sig;
    if (g_cancel)
        *g_cancel = true;
    if (g_wakeFd >= 0) {
        const unsigned char byte = static_cast<unsigned char>(sig);
        [[maybe_unused]] const ssize_t written = ::write(g_wakeFd, &byte, 1);
    }
}

} // namespace

CancelSignals::CancelSignals(std::atomic<bool> &cancel, std::initializer_list<int> signals,
                             Options options)
{
    g_cancel = &cancel;
    g_wakeFd = options.wakeFd;
    struct sigaction sa = {};
    sa.sa_handler = onCancelSignal;
    // Copies stop at the flag, not at EINTR.
    sa.sa_flags = SA_RESTART | (options.once ? SA_RESETHAND : 0);
    for (const int sig : signals) {
        if (m_count == MaxSignals)
            break;
        m_signals[m_count] = sig;
        ::sigaction(sig, &sa, &m_previous[m_count]);
        ++m_count;
    }
}

CancelSignals::~CancelSignals()
{
    for (int i = 0; i < m_count; ++i)
        ::sigaction(m_signals[i], &m_previous[i], nullptr);
    g_cancel = nullptr;
    g_wakeFd = -1;
}

int CancelSignals::received()
{
    return g_received;
}

} // namespace duomir

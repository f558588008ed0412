#include "ui/terminationguard.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace duomir {

namespace {

int g_fds[2] = {-1, -1};
std::atomic<bool> *g_cancel = nullptr; // lock-free, so a handler may store to it
volatile std::sig_atomic_t g_signal = 0;
constexpr int Signals[] = {SIGINT, SIGTERM, SIGHUP};

extern "C" void onTerminationSignal(int sig)
{
    g_signal = sig;
    if (g_cancel)
        *g_cancel = true;
    const unsigned char byte = static_cast<unsigned char>(sig);
    [[maybe_unused]] const ssize_t written = ::write(g_fds[0], &byte, 1);
}

} // namespace

TerminationGuard::TerminationGuard(std::atomic<bool> &cancelFlag, QObject *parent) : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_fds) != 0)
        return;
    g_cancel = &cancelFlag;
    m_notifier = new QSocketNotifier(g_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationGuard::onSignal);
    struct sigaction sa = {};
    sa.sa_handler = onTerminationSignal;
    sa.sa_flags = SA_RESTART;
    for (const int sig : Signals)
        ::sigaction(sig, &sa, nullptr);
}

TerminationGuard::~TerminationGuard()
{
    struct sigaction sa = {};
    sa.sa_handler = SIG_DFL;
    for (const int sig : Signals)
        ::sigaction(sig, &sa, nullptr);
    g_cancel = nullptr;
    for (int &fd : g_fds) {
        if (fd >= 0)
            ::close(fd);
        fd = -1;
    }
}

int TerminationGuard::requestedExitCode() const
{
    return g_signal != 0 ? 128 + g_signal : 0;
}

void TerminationGuard::onSignal()
{
    unsigned char byte = 0;
    if (::read(g_fds[1], &byte, 1) != 1)
        return;
    QCoreApplication::exit(128 + byte);
}

} // namespace duomir

#include "ui/terminationguard.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <sys/socket.h>
#include <unistd.h>

namespace duomir {

TerminationGuard::TerminationGuard(std::atomic<bool> &cancelFlag, QObject *parent) : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_fds) != 0)
        return;
    m_notifier = new QSocketNotifier(m_fds[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationGuard::onSignal);
    m_signals =
        std::make_unique<CancelSignals>(cancelFlag, std::initializer_list{SIGINT, SIGTERM, SIGHUP},
                                        CancelSignals::Options{.wakeFd = m_fds[0]});
}

TerminationGuard::~TerminationGuard()
{
    m_signals.reset();
    for (int &fd : m_fds) {
        if (fd >= 0)
            ::close(fd);
        fd = -1;
    }
}

int TerminationGuard::requestedExitCode() const
{
    const int sig = CancelSignals::received();
    return sig != 0 ? 128 + sig : 0;
}

void TerminationGuard::onSignal()
{
    unsigned char byte = 0;
    if (::read(m_fds[1], &byte, 1) != 1)
        return;
    QCoreApplication::exit(128 + byte);
}

} // namespace duomir

#pragma once

#include <QObject>
#include <atomic>
#include <memory>

#include "base/cancelsignals.h"

class QSocketNotifier;

namespace duomir {

// SIGINT, SIGTERM and SIGHUP end the program in order: the copy under way is cancelled between
// two chunks, then the event loop ends, woken through a socket the signal handler writes to.
class TerminationGuard : public QObject
{
    Q_OBJECT

public:
    explicit TerminationGuard(std::atomic<bool> &cancelFlag, QObject *parent = nullptr);
    ~TerminationGuard() override;

    // The exit code the program should end with (128 + the signal), or 0 when none came.
    int requestedExitCode() const;

private:
    void onSignal();

    int m_fds[2] = {-1, -1};
    QSocketNotifier *m_notifier = nullptr;
    std::unique_ptr<CancelSignals> m_signals;
};

} // namespace duomir

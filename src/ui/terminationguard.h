#pragma once

#include <QObject>
#include <atomic>

class QSocketNotifier;

namespace duomir {

// SIGINT, SIGTERM and SIGHUP end the program in order: the copy under way is cancelled between
// two chunks (so its temporary file goes and the old target stays whole), then the event loop
// ends. A signal handler may do almost nothing, so it only sets the cancel flag and writes the
// signal number into a pipe that the event loop watches.
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

    QSocketNotifier *m_notifier = nullptr;
};

} // namespace duomir

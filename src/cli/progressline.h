#pragma once

#include <QElapsedTimer>
#include <cstdint>
#include <cstdio>

#include "core/progressmodel.h"
#include "core/syncrun.h"

namespace duomir::cli {

// The copy's progress as one live line on a terminal (standard error): files started, bytes of
// the run's total, rate and time left, redrawn at most ten times a second and cleared at the
// end, so that the summary prints on a clean line.
class ProgressLine : public ProgressSink
{
public:
    // The run's byte total is read each time the line is drawn: it is known only once the run
    // has counted its copies.
    ProgressLine(std::FILE *out, const SyncRun &run) : m_out(out), m_run(run) {}

    void setVisible(bool visible) override;
    void setPercentText(const QString &) override {}
    void setBarWidth(int width) override;
    void setFrom(const QString &) override {}
    void setTo(const QString &) override {}
    void setFileName(const QString &name) override;
    int fullBarWidth() const override { return FullWidth; }

    // The comparison's count of entries listed per side, on the same line (throttled).
    void listing(std::int64_t source, std::int64_t destination);
    void endListing();

    // The line as drawn for `bytes` of `total` after `elapsedMs`, `files` started (for tests).
    static QByteArray format(int files, std::int64_t bytes, std::int64_t total,
                             std::int64_t elapsedMs);

private:
    static constexpr int FullWidth = 10000;
    void draw(bool force);

    std::FILE *m_out;
    const SyncRun &m_run;
    QElapsedTimer m_clock;
    QElapsedTimer m_sinceDraw;
    int m_width = 0;
    int m_files = 0;
    bool m_shown = false;
    bool m_listing = false;
};

} // namespace duomir::cli

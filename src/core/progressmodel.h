#pragma once

#include <QString>
#include <cstdint>

namespace duomir {

// What a progress display shows; the GUI's dlgProgress implements it with labels, a terminal
// front end with a status line. The model calls it only when something changed.
class ProgressSink
{
public:
    virtual ~ProgressSink() = default;

    virtual void setVisible(bool visible) = 0;
    virtual void setPercentText(const QString &text) = 0; // "0 %" .. "100 %"
    virtual void setBarWidth(int width) = 0;              // 0 .. fullBarWidth()
    virtual void setFrom(const QString &directory) = 0;
    virtual void setTo(const QString &directory) = 0;
    virtual void setFileName(const QString &name) = 0;
    // The width of the bar at 100 %, in the display's own units; read by Init.
    virtual int fullBarWidth() const = 0;
};

// The progress of one synchronization run over the whole byte total: percentage and bar width
// only ever grow within a run, a total of 0 stays at "0 %". Byte counts are 64-bit.
class ProgressModel
{
public:
    // The sink is not owned; null means no display (nothing is ever visible).
    void setSink(ProgressSink *sink) { m_sink = sink; }
    ProgressSink *sink() const { return m_sink; }

    bool isVisible() const { return m_visible; }

    // Starts a run of `total` bytes and shows the display.
    void Init(std::int64_t total);
    // `bytesCopied` of the file in progress have been written.
    void Update(std::int64_t fileSize, std::int64_t bytesCopied);
    // The file in progress is finished (copied or not); its size counts as done.
    void FileDone(std::int64_t size);
    // Names the copy in progress; the directories are given with their trailing separator.
    void ShowFile(const QString &sourceDir, const QString &destDir, const QString &fileName);
    void Hide();

    int lastPercent() const { return m_lastPercent; }
    int lastWidth() const { return m_lastWidth; }

private:
    void show(std::int64_t done);

    ProgressSink *m_sink = nullptr;
    bool m_visible = false;
    std::int64_t m_total = 0;
    std::int64_t m_finished = 0;
    int m_lastPercent = 0;
    int m_lastWidth = 0;
    int m_fullWidth = 0;
    QString m_from;
    QString m_to;
};

} // namespace duomir

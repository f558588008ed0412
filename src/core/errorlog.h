#pragma once

#include <QDateTime>
#include <QString>
#include <QVariantList>
#include <functional>

#include "core/platform/fileops.h"
#include "core/side.h"

namespace duomir {

// The `what` bits of Reporter::report: which paths of the entry the message and the log line show.
// Bit 1: source text = the entry's directory on the sending side d; bit 2: append the sending
// file name to it; bit 4: destination text = the directory on the receiving side; bit 8: append
// the sending file name to that. The higher bits only tell the operations apart.
namespace What {
inline constexpr int Copy = 143;
inline constexpr int ClearReadOnlyForCopy = 28;
inline constexpr int MakeDirectory = 68;
inline constexpr int ClearReadOnlyForDelete = 19;
inline constexpr int DeleteFile = 35;
inline constexpr int RemoveDirectory = 1;
} // namespace What

class Comparison;
class Interaction;
struct Settings;
struct SyncStats;

// Where the walks' failures and changes go: a message for the person (none when nobody is there),
// the run's failure count and the day's log file. It reads the settings, the data folder and the
// start switches as they are when it writes, so it can be made before they are known.
class Reporter
{
public:
    struct Parts
    {
        Interaction &ui;
        const Settings &settings;
        const QString &dataFolder; // ends in the separator
        const bool &dontAsk;
        const std::function<QDateTime()> &clock; // empty: the system's
        const Comparison &comparison;
        SyncStats &stats;
    };
    explicit Reporter(const Parts &parts) : m(parts) {}

    // Turns a failed file operation on row `entryIndex` of the comparison into a message box
    // (Critical, Ok; not with DontAsk) and a log line; a success does nothing. "Directory not
    // empty" (and EEXIST from rmdir) is expected by the deletion walk and stays silent. Never
    // stops a walk.
    void report(OpResult result, int what, Side d, int entryIndex);

    // With LogActions on, one log line for a change made to row `entryIndex`: `action` ("copy",
    // "replace", "delete", "mkdir") in the column of the error number, an empty text, and the
    // paths the `what` bits name, escaped as on the failure lines.
    void logAction(const QString &action, int what, Side d, int entryIndex) const;

    // The day's log file for the moment `now`: the data folder + "yyyymmdd.log".
    QString logFilePath(const QDateTime &now) const;

    // Appends one line to the day's log when LogToFile is on:
    // "yyyy-MM-dd HH:mm:ss" (local time), TAB, an empty column, then TAB and the fields joined by
    // TAB, ending in CR LF. The file is opened and closed for every line; failures to write are
    // ignored.
    void writeLine(const QVariantList &fields = {}) const;

    // The person a walk lets events through to (Cancel) and reports to.
    Interaction &ui() const { return m.ui; }
    QDateTime now() const { return m.clock ? m.clock() : QDateTime::currentDateTime(); }
    // Whether a person may be asked (no -dontask).
    bool asks() const { return !m.dontAsk; }

private:
    Parts m;
};

} // namespace duomir

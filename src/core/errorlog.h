#pragma once

#include <QDateTime>
#include <QString>
#include <QVariantList>

#include "core/platform/fileops.h"

namespace duomir {

class Engine;

// The `what` bits of ReportResult: which paths of the entry the message and the log line show.
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

// Turns a failed file operation on row `entryIndex` of the comparison into a message box
// (Critical, Ok; not with DontAsk) and a log line; a success does nothing. "Directory not empty"
// (and EEXIST from rmdir) is expected by the deletion walk and stays silent. Never stops a walk.
void ReportResult(Engine &engine, OpResult result, int what, int d, int entryIndex);

// With LogActions on, one log line for a change made to entry `entryIndex`: `action` ("copy",
// "replace", "delete", "mkdir") in the column of the error number, an empty text, and the paths
// the `what` bits name, escaped as on the failure lines.
void LogAction(const Engine &engine, const QString &action, int what, int d, int entryIndex);

// The day's log file for the moment `now`: DataFolder + "yyyymmdd.log".
QString logFilePath(const Engine &engine, const QDateTime &now);

// Appends one line to the day's log when LogToFile is on:
// "yyyy-MM-dd HH:mm:ss" (local time), TAB, an empty column, then TAB and the fields joined by TAB,
// ending in CR LF. The file is opened and closed for every line; failures to write are ignored.
void WriteLogLine(const Engine &engine, const QVariantList &fields = {});

} // namespace duomir

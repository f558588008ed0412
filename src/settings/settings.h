#pragma once

#include <QString>

namespace duomir {

// The program-wide options, read once at start-up by LoadSettings(). A default-constructed record
// is "empty" (all flags off, no texts); LoadSettings() then applies the defaults of absent keys.
struct Settings
{
    QString ExcludeDirs;  // default exclude mask for subdirectories of a new pair
    QString ExcludeFiles; // default exclude mask for files of a new pair
    bool SubDirs = false;
    bool SysDirs = false;
    bool SysFiles = false;
    bool HiddenDirs = false;
    bool HiddenFiles = false;
    double TimeLag = 0.0; // days; the largest time difference that still counts as equal
    bool LogToFile = false;
    // Besides failures, one log line per file copied, replaced or deleted and per folder created.
    bool LogActions = false;
    // A deletion step that would remove more than this share (per cent) of a pair's files on the
    // sending side, or that finds the receiving side empty, asks first (and, unattended, does not
    // run). 100 switches the guard off.
    int MaxDeletePercent = 50;
    // Where a file that a deletion removes or a copy replaces goes.
    enum VersioningMode { ForGood = 0, ToTrash = 1, ToVersionsFolder = 2 };
    int Versioning = ForGood; // LoadSettings: ToTrash where the file says nothing
    // Relative: below the root of the side that loses the file; absolute: that folder itself.
    QString VersionsFolder = QStringLiteral("Duomir Versions");
    int KeepVersionsDays = 30; // run folders older than this go at the start of a run; 0 keeps all
    bool DontShowHint = false;
    bool ButtonBarsWithText = false;
    QString Language;  // language file name without ".lang"
    QString FormPos;   // "Left;Top;Width;Height" of the main window
    int FormState = 0; // 0 normal, 2 maximized

    // The options dialog binds its check-box pairs by index: 0 = directories, 1 = files.
    bool &sys(int i) { return i == 0 ? SysDirs : SysFiles; }
    bool &hidden(int i) { return i == 0 ? HiddenDirs : HiddenFiles; }
};

} // namespace duomir

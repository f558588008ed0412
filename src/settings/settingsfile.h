#pragma once

#include <QString>
#include <array>

#include "settings/settings.h"

namespace duomir {

class IniFile;

// Where the program runs: the executable's folder and the variables that place the user's data
// and configuration. Tests build one around temporary folders; the program takes current().
struct SettingsEnvironment
{
    QString programFolder; // folder of the executable, without a trailing separator
    QString home;          // $HOME
    QString dataHome;      // $XDG_DATA_HOME
    QString configHome;    // $XDG_CONFIG_HOME

    static SettingsEnvironment current();
};

// The folder for profiles and error logs, ending in the separator: $XDG_DATA_HOME/Duomir/, else
// ~/.local/share/Duomir/, and without a home the program folder. Only the last level is created;
// when that fails the path is still returned (later writes there fail and are reported then).
QString InitDataFolder(const SettingsEnvironment &env);

// Duomir.ini beside the executable when that folder is writable or already holds one (a portable
// install), else Duomir.ini in $XDG_CONFIG_HOME/Duomir (default ~/.config/Duomir), whose folder
// is created so that the first write can succeed.
QString settingsFilePath(const SettingsEnvironment &env);

// The folder that holds the language files and the Help pages: the executable's folder when it
// has either, else ../share/duomir beside it when that has either, else the executable's folder.
QString findShareFolder(const QString &programFolder);

// Every field of the record from the file, with the defaults of absent keys and the cuts of the
// read buffers. Nothing is reported: a missing or unreadable file gives the defaults.
Settings LoadSettings(const IniFile &file);

// The writers. Each writes only the keys it owns; failures are silent, as the record already
// holds the new values for the rest of the run.
// Options dialog, Apply: masks, time lag, logging, button-bar text, then the five pair defaults.
void WriteOptions(IniFile &file, const Settings &settings);
void WriteLanguage(IniFile &file, const QString &language);
void WriteDontShowHint(IniFile &file, bool dontShow);

// Main-window placement: Left, Top, Width and Height (twips), and the window state.
using Placement = std::array<float, 4>;
enum class WindowState { Normal = 0, Minimized = 1, Maximized = 2 };

// "Left;Top;Width;Height" as four numbers; missing, empty or non-numeric entries are 0.
Placement parsePlacement(const QString &pos);
// The four values joined by ";", each the shortest decimal text of the single-precision value.
QString placementText(const Placement &placement);

// The main window closes. "Pos" is written only for a normal window whose placement differs from
// the text read at start-up (`startup.FormPos`); "State" only when it differs from the start-up
// state and is not minimized; "FilesColWidth" is removed every time.
void WritePlacementOnClose(IniFile &file, const Settings &startup, WindowState state,
                           const Placement &placement);

} // namespace duomir

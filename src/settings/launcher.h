#pragma once

#include <QString>
#include <QStringList>

namespace duomir {

// What a launcher that starts Duomir holds. On Linux it becomes a freedesktop ".desktop" file.
struct Launcher
{
    QString program;       // absolute path of the executable
    QString workingFolder; // folder the program starts in; empty = none
    QStringList arguments; // one word each, as the program receives them
    QString icon;          // icon name or path; empty = none
    QString name;          // shown name and file name without extension
    QString description;   // comment shown by the desktop
};

// The start arguments of an automatic run: the profile (nothing when empty), then "-auto",
// "-dontask" and "-hide" for the switches that are set, in that order. Kept as words, never as one
// text to split again: a file name may hold the double quote that such a text would group by.
QStringList launcherArguments(const QString &profilePath, bool autoRun, bool dontAsk, bool hide);

// One argument for the Exec key: quoted only when it holds a character the desktop-entry format
// reserves, with '"', '`', '$' and '\' escaped inside the quotes.
QString desktopExecArgument(const QString &argument);

// The Exec value for `program` started with `arguments`. "%" is doubled so that no field code is
// expanded; the result is not yet escaped as a desktop-file string value.
QString desktopExecLine(const QString &program, const QStringList &arguments);

// The whole ".desktop" text for `launcher`, every value escaped as the format's string rules ask.
QString desktopEntryText(const Launcher &launcher);

// The file name of the launcher for `name` in `folder`.
QString launcherFilePath(const QString &folder, const QString &name);

// Writes `launcher` to `linkPath` (an existing file is replaced) and makes it executable, as
// desktops require before they start a launcher. False when `linkPath` or the program is empty or
// the file cannot be written; nothing is reported.
bool CreateShortcut(const QString &linkPath, const Launcher &launcher);

} // namespace duomir

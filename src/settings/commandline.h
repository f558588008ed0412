#pragma once

#include <QString>
#include <QStringList>

namespace duomir {

// What the start-up takes from its command line.
struct CommandLine
{
    bool DontAsk = false;       // "-dontask": no confirmations, messages or progress dialog
    bool Hide = false;          // "-hide": start minimized
    bool AutoRequested = false; // "-auto": synchronize after the profile loaded, then close
    // The profile to load; empty with an empty command line. A line of switches only names its
    // first switch as the profile (the load then reports that it cannot read it).
    QString ProfilePath;
    bool hasProfile() const { return !ProfilePath.isEmpty(); }
};

// The arguments (without the program name) as one command-line text: joined by single blanks,
// an argument that holds a blank wrapped in double quotes, empty arguments left out.
QString joinCommandLine(const QStringList &arguments);

// The switches match anywhere in the text, in any letter case. The profile is the text after the
// first double quote up to the next one (or the end), else the text up to the first blank.
CommandLine parseCommandLine(const QString &text);

// A profile file that exists with zero bytes is not loaded, and "-auto" is then not acted on.
bool isEmptyProfileFile(const QString &path);

} // namespace duomir

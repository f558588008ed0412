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

// The program's arguments as Linux hands them over, already split: a switch counts only as a
// whole argument (any letter case), so a profile named "my-automatic.dyp" is no "-auto"; the
// profile is the first argument that is not a switch, or the first argument when all are.
CommandLine parseArguments(const QStringList &arguments);

// A profile file that exists with zero bytes is not loaded, and "-auto" is then not acted on.
bool isEmptyProfileFile(const QString &path);

} // namespace duomir

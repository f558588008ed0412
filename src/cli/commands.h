#pragma once

#include <QStringList>

namespace duomir::cli {

// Exit codes shared by every command.
enum ExitCode {
    ExitOk = 0,
    ExitFailures = 1, // some file operation failed
    ExitUsage = 2,    // wrong arguments, unreadable profile
    ExitNoRoot = 3,   // a root directory could not be listed
};

// Each command gets the arguments after its own name.
int runCompare(const QStringList &args);
int runSync(const QStringList &args);

} // namespace duomir::cli

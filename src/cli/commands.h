#pragma once

#include <QStringList>

#include "core/exitstatus.h"

namespace duomir::cli {

// Exit codes shared by every command: duomir::ExitStatus (core/exitstatus.h).

// Each command gets the arguments after its own name.
int runCompare(const QStringList &args);
int runSync(const QStringList &args);

} // namespace duomir::cli

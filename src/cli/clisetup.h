#pragma once

namespace duomir {
class Engine;
class Interaction;
} // namespace duomir

namespace duomir::cli {

// What every command does first: the settings (data folder, logging, time lag, pair defaults) and
// the language for message texts, English when the settings name none or a missing one.
void prepareEngine(Engine &engine, Interaction &ui);

} // namespace duomir::cli

namespace duomir::cli {

// Every root of every pair must exist before a command works on it: a typo in a path must not
// turn into one failure per file. Each missing root is named once on standard error ("does not
// exist"); with `createDestination` a missing destination whose parent exists is made first (one
// level, like mkdir). Returns the number of roots still missing.
int checkRoots(const Engine &engine, const char *command, bool createDestination);

// A pair whose include masks are empty takes nothing (a hand-written profile without "IS=*" or
// "IF=*"): it is said once per pair, and the comparison stays as it is.
void warnEmptyIncludes(const Engine &engine, const char *command);

} // namespace duomir::cli

#pragma once

namespace duomir {

class Engine;

// The exit status of a run nobody watches, the same for both programs: a script or a timer tells
// a clean run from one that needs a look.
enum ExitStatus : int {
    ExitOk = 0,              // done, or nothing to do
    ExitFailures = 1,        // some file operation failed, or the run was interrupted
    ExitUsage = 2,           // wrong arguments, an unreadable profile
    ExitNoRoot = 3,          // a root directory could not be listed
    ExitDeletionRefused = 4, // the deletion guard held a pair's deletion back
};

// The status of the automatic run `engine` has made: a root that could not be listed counts
// first, then an unreadable profile, then a deletion held back, then failed operations.
ExitStatus RunExitStatus(const Engine &engine);

} // namespace duomir

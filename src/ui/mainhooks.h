#pragma once

#include "ui/shellhooks.h"

namespace duomir {

class Engine;
class frmMain;

// The hooks through which start-up, shut-down and the options menu reach the main window.
ShellHooks mainWindowHooks(frmMain &window, Engine &engine);

} // namespace duomir

#pragma once

#include <QString>
#include <functional>

namespace duomir {

// What start-up, shut-down and the options menu need from the main window. The main window fills
// these in; tests fill them with recorders. An empty hook does nothing (loadProfile: not loaded).
struct ShellHooks
{
    // Apply the current language to the main window and keep its caption as the base caption.
    std::function<void()> localize;
    // Re-lay out the button bars after the options changed their text setting.
    std::function<void()> layoutButtonBars;
    // Load a profile and compare; false when it could not be loaded (already reported).
    std::function<bool(const QString &path)> loadProfile;
    // The Synchronize command; with Engine::Auto set it closes the program when done.
    std::function<void()> synchronize;
};

} // namespace duomir

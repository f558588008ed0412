#pragma once

#include <functional>

#include "base/interaction.h"

namespace duomir::cli {

// The engine's messages on standard error, one line each, with fixed answers: OK to every
// notice, No to every question (so nothing is ever done that a person was meant to approve).
class CliInteraction : public Interaction
{
public:
    Answer message(Icon icon, Buttons buttons, const QString &text,
                   const QString &title = {}) override;

    // Failed file operations, also without a message box: "error: TEXT: SOURCE -> DESTINATION".
    void failureReported(const QString &error, const QString &source,
                         const QString &destination) override;

    bool personPresent() const override { return false; }

    int messagesShown() const { return m_shown; }

    // While a command works, this is called often; a progress display hangs here.
    void yieldEvents() override
    {
        if (onYield)
            onYield();
    }
    std::function<void()> onYield;

private:
    int m_shown = 0;
};

} // namespace duomir::cli

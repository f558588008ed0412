#pragma once

#include "core/interaction.h"

namespace duomir::cli {

// The engine's messages on standard error, one line each, with fixed answers: OK to every
// notice, No to every question (so nothing is ever done that a person was meant to approve).
class CliInteraction : public Interaction
{
public:
    Answer message(Icon icon, Buttons buttons, const QString &text,
                   const QString &title = {}) override;

    int messagesShown() const { return m_shown; }

private:
    int m_shown = 0;
};

} // namespace duomir::cli

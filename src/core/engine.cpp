#include "core/engine.h"

#include "core/interaction.h"

namespace duomir {

Engine::Engine(Interaction &ui) : m_ui(&ui) {}

} // namespace duomir

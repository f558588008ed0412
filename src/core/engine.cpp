#include "core/engine.h"

#include "core/interaction.h"
#include "core/platform/posixfileops.h"

namespace duomir {

Engine::Engine(Interaction &ui) : fileOps(&PosixFileOps::instance()), m_ui(&ui) {}

} // namespace duomir

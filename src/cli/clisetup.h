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

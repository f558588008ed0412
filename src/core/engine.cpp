#include "core/engine.h"

#include "base/inifile.h"
#include "base/interaction.h"
#include "core/platform/posixfileops.h"

namespace duomir {

Engine::Engine(Interaction &ui)
    : m_ui(&ui), m_run(PosixFileOps::instance()),
      m_reporter({ui, settings, DataFolder, DontAsk, clock, m_comparison, m_run.stats()})
{}

void InitSettings(Engine &engine, const SettingsEnvironment &env)
{
    engine.ProgramFolder = env.programFolder;
    engine.ShareFolder = findShareFolder(env.programFolder);
    engine.DataFolder = InitDataFolder(env);
    engine.SettingsFile = settingsFilePath(env);
    engine.settings = LoadSettings(IniFile(engine.SettingsFile));
}

} // namespace duomir

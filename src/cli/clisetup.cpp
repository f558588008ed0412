#include "cli/clisetup.h"

#include <QFileInfo>

#include "core/engine.h"
#include "settings/settingsfile.h"

namespace duomir::cli {

void prepareEngine(Engine &engine, Interaction &ui)
{
    InitSettings(engine, SettingsEnvironment::current());
    const QString name =
        engine.settings.Language.isEmpty() ? u"English"_qs : engine.settings.Language;
    QString file = Language::filePath(engine.ShareFolder, name);
    if (!QFileInfo::exists(file))
        file = Language::filePath(engine.ShareFolder, u"English"_qs);
    engine.language = Language::load(file, &ui); // a missing file loads nothing
}

} // namespace duomir::cli

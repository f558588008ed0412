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
    QString file = engine.ShareFolder + u'/' + name + u".lang";
    if (!QFileInfo::exists(file))
        file = engine.ShareFolder + u"/English.lang";
    if (QFileInfo::exists(file))
        engine.language = Language::load(file, &ui);
}

} // namespace duomir::cli

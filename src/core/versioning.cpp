#include "core/versioning.h"

#include "core/engine.h"

namespace duomir {

QString keptWhere(const Engine &engine)
{
    switch (engine.settings.Versioning) {
    case Settings::ToTrash:
        return engine.FormatMsg(840);
    case Settings::ToVersionsFolder:
        return engine.FormatMsg(841, {engine.settings.VersionsFolder});
    default:
        return engine.FormatMsg(842);
    }
}

} // namespace duomir

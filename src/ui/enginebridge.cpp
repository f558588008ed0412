#include "ui/enginebridge.h"

#include "core/engine.h"
#include "core/interaction.h"

namespace duomir::bridge {

// Until the engine's commands land these keep the window usable: nothing is scanned or copied.

bool compareAll(Engine &engine)
{
    if (engine.pairs.isEmpty()) {
        engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                            engine.FormatMsg(802));
        return false;
    }
    engine.CompareResults.resize(1);
    buildVisibleRows(engine, engine.filter.FileFilter);
    return true;
}

void buildVisibleRows(Engine &engine, int fileFilter)
{
    engine.filter.FileFilter = fileFilter;
    engine.VisibleRows = engine.CompareResults;
    engine.visibleCounts = {};
    for (size_t i = 1; i < engine.VisibleRows.size(); ++i) {
        if (engine.VisibleRows[i].isDirectory())
            ++engine.visibleCounts.directories;
        else
            ++engine.visibleCounts.files;
    }
}

bool loadProfile(Engine &engine)
{
    engine.pairs.clear();
    engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                        engine.FormatMsg(805, {engine.ProfilePath}));
    return false;
}

void saveProfile(Engine &) {}

} // namespace duomir::bridge

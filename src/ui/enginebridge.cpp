#include "ui/enginebridge.h"

#include "core/comparecommand.h"
#include "core/engine.h"
#include "core/filters.h"
#include "core/profilefile.h"

namespace duomir::bridge {

bool compareAll(Engine &engine)
{
    return Compare(engine);
}

void buildVisibleRows(Engine &engine, int fileFilter)
{
    BuildVisibleRows(engine, fileFilter);
}

bool loadProfile(Engine &engine)
{
    return ReadProfile(engine);
}

void saveProfile(Engine &engine)
{
    SaveProfile(engine, engine.ProfilePath);
}

} // namespace duomir::bridge

#pragma once

#include <QString>

#include "core/platform/fileops.h"

namespace duomir {

class Engine;

// One sentence for the person: where the files that this run deletes or replaces go (the Trash,
// a versions folder, or nowhere).
QString keptWhere(const Engine &engine);

// Where this run keeps deleted and replaced files, as the settings say; the run's own folder in
// a versions folder is named by the engine's clock.
Keeping keepingFor(const Engine &engine);

// The versions folder below `root` ("/"-separated, relative to it), empty when the files are not
// kept in a folder below that root. Such a folder is never compared.
QString versionsFolderBelow(const Engine &engine, const QString &root);

// Before a run changes anything: the file operations learn where files go, and run folders
// older than KeepVersionsDays go from the versions folders of every pair the run touches
// (`start` as for the walks: 0 for all pairs).
void BeginKeeping(Engine &engine, int start);

} // namespace duomir

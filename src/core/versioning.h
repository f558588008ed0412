#pragma once

#include <QString>

namespace duomir {

class Engine;

// One sentence for the person: where the files that this run deletes or replaces go (the Trash,
// a versions folder, or nowhere).
QString keptWhere(const Engine &engine);

} // namespace duomir

#pragma once

#include <QString>

namespace duomir {
class Engine;
}

namespace duomir::cli {

// A plain comparison of two trees into Engine::CompareResults (rows in key order, files before
// subdirectories, times to the second, no masks or switches) for the sync command until the
// engine's own Compare is available here. Returns false when a root cannot be listed; `error`
// then names it.
bool compareTrees(Engine &engine, const QString &source, const QString &destination,
                  QString &error);

} // namespace duomir::cli

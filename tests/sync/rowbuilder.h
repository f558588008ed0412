#pragma once

#include <QString>

#include "core/engine.h"

namespace duomir::test {

// Fills Engine::CompareResults with rows for files and directories that a test laid out under two
// roots, reading each side's facts from the disk the way a comparison would; rows must be added in
// key order: in each directory its files, then its subdirectories, each before its contents. The
// State follows the times and sizes unless given.
class RowBuilder
{
public:
    RowBuilder(Engine &engine, const QString &sourceRoot, const QString &destinationRoot);

    int dir(const QString &relative, bool marked = true);
    int file(const QString &relative);
    int file(const QString &relative, std::int16_t state, bool marked);

private:
    int add(const QString &relative, bool directory, std::int16_t state, bool stateGiven,
            bool marked, bool markedGiven);

    Engine &m_engine;
    QString m_roots[2];
};

} // namespace duomir::test

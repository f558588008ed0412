#pragma once

#include <QIcon>

namespace duomir {

// Small line-art icons drawn at run time, so the program needs no image files and they stay sharp
// at any scale.
enum class Glyph {
    ToDestination, // source newer: arrow to the right
    ToSource,      // destination newer: arrow to the left
    BothWays,
    Identical,
    AllFiles,
    OneSide, // a file on one side only
    BothSides,
    EmptyFolder,
    Delete,
    DeleteInSource,      // the file list: Synchronize deletes the row's source file
    DeleteInDestination, // ... its destination file
    Mirror,
    Reverse,
    Compare,
    Synchronize,
};

QIcon glyphIcon(Glyph glyph);

} // namespace duomir

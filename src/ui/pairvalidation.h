#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "core/syncpaths.h" // withoutTrailingSeparator, which the pair dialog applies

namespace duomir {

struct DirPair;
class DirPairList;
class Interaction;

// Message text by key with its parameters (the language's FormatMsg in the program).
using MessageText = std::function<QString(int key, const QStringList &params)>;

// Checks `candidate`, meant for slot `slot` of `pairs`, against itself and every other pair, asking
// the person about each doubtful case. Returns true when every check passed or was accepted with
// Yes; a warning or a No refuses.
bool confirmPair(const DirPair &candidate, int slot, const DirPairList &pairs, Interaction &ui,
                 const MessageText &text);

} // namespace duomir

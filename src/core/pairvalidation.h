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

// The one thing wrong with a pair on its own, as the key of the message that says it: 20810 a
// root missing, 20820 both the same, 20830 the destination inside the source (with
// subdirectories), 20840 the source inside the destination or the two differing only in case;
// 0 when none. `wholeNames`: a root lies inside another only below a separator ("/data2" is not
// inside "/data"), where the pair dialog compares the beginnings character by character.
int pairConflict(const DirPair &pair, bool wholeNames);

// Checks `candidate`, meant for slot `slot` of `pairs`, against itself and every other pair, asking
// the person about each doubtful case. Returns true when every check passed or was accepted with
// Yes; a warning or a No refuses.
bool confirmPair(const DirPair &candidate, int slot, const DirPairList &pairs, Interaction &ui,
                 const MessageText &text);

} // namespace duomir

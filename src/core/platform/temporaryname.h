#pragma once

#include <cstddef>
#include <string>

namespace duomir {

// A copy writes into ".duomir-XXXXXXXX.tmp" beside its target: short enough for every file system,
// plain ASCII so that no file system refuses it, and recognisable, so that the scanner never lists
// one as the user's file and a later run can remove what a killed run left behind.
std::string newTemporaryName();
bool isTemporaryName(const char *name, std::size_t length);

} // namespace duomir

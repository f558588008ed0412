#pragma once

#include <QString>

namespace duomir {

class Engine;

// Profile files: an INI file with section "0" for the view state (ED = ShowEmptyDirs, F1 =
// FileFilter, F2 = SideFilter, SO0..SO3 = the four synchronization buttons) and one section per
// pair with the keys S, D, Su, HD, HF, SD, SF, IS, ES, IF, EF.

// Loads engine.ProfilePath: empties the pair list and the scans, sets MarkAll, reads the view
// state (missing keys 0; a filter number that names no button leaves that filter at 0) and makes
// every section other than "0" and the unnamed one a pair, in file order (missing switches on,
// missing texts empty), then runs Compare and clears ProfileModified.
// A missing file or one without sections shows message 805 and returns false; the list stays
// empty and ProfilePath keeps the failed path. `unlistedRoots` as for Compare.
bool LoadProfile(Engine &engine, int *unlistedRoots = nullptr);

// LoadProfile without the closing Compare, for a front end that runs its own Compare command
// (with its progress display) right after.
bool ReadProfile(Engine &engine);

// Writes the view state and the pairs into `path` key by key (sections "1".."N" in list order)
// and makes it engine.ProfilePath; clears ProfileModified. Nothing else in the file is touched,
// so sections beyond N of a longer list saved there before remain and load again as pairs.
// Returns false when a write failed (the caller may report it; the design keeps quiet).
bool SaveProfile(Engine &engine, const QString &path);

// The window caption after a load or save: the profile's file name without its last extension,
// " · ", then `baseCaption`.
QString profileCaption(const QString &profilePath, const QString &baseCaption);

} // namespace duomir

#pragma once

namespace duomir {

class Engine;

// Before the deletion step of a synchronization: per pair, a deletion on `side` that would remove
// more than Settings::MaxDeletePercent of that side's files, or that finds the receiving side
// holding nothing at all (an unplugged drive leaves an empty mount point), is asked about (warning,
// the counts, No the default); unattended it does not run and is reported. The refused pairs'
// root rows go to Engine::DeletionRefusedRoots, which DeleteEntries leaves alone; the copies of
// the run are not affected. `start` as for DeleteEntries.
void GuardDeletions(Engine &engine, int side, int start);

} // namespace duomir

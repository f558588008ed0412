#pragma once

#include "core/side.h"

namespace duomir {

class Engine;

// The non-widget logic of the synchronize button and the file list's popup commands. The GUI
// calls these from its handlers and keeps the widget work to itself: disabling and enabling
// cmdCompare/cmdSynch, remembering and restoring the scroll position, running Compare again,
// closing the window.

enum class SyncGate {
    Refused,      // stale list, nothing to do without Auto, or the person said No
    CloseProgram, // Auto with an empty list: close the main window
    Proceed,      // go on: disable the buttons, then RunSynchronizeCommand
};

// Steps before a synchronize run: message 803 when the list is stale (shown even with DontAsk),
// the empty-list check, confirmation 804 (not with DontAsk).
SyncGate ConfirmSynchronize(Engine &engine, bool listIsStale);

// Sets the status labels (852), lets events run once and calls Synchronize(0). Returns its
// result: true means the caller compares again (or, with Auto, closes the program).
bool RunSynchronizeCommand(Engine &engine);

// The popup's "synchronize this folder": labels 852, then Synchronize(entry). No confirmation.
bool RunSynchronizeEntry(Engine &engine, int entry);

// The popup's copy: confirmation 811 (not with DontAsk), then labels 853 and CopySelected.
// Returns false when the person said No; otherwise the caller always compares again.
bool ConfirmCopySelected(Engine &engine);
void RunCopySelected(Engine &engine, Side d, int entry);

// The popup's delete on `side`: confirmation 801 (not with DontAsk), then labels 854 and
// DeleteEntries(side, entry, 0), which deletes whether or not the other side has the entry.
bool ConfirmDeleteSelected(Engine &engine);
void RunDeleteSelected(Engine &engine, Side side, int entry);

} // namespace duomir

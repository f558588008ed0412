#include "core/synccommands.h"

#include "base/interaction.h"
#include "core/deleteentries.h"
#include "core/engine.h"
#include "core/synchronize.h"
#include "core/syncplan.h"
#include "core/versioning.h"

namespace duomir {

namespace {

bool confirmed(Engine &engine, int key, Interaction::Icon icon, const QString &details = {})
{
    if (engine.DontAsk)
        return true;
    QString text = engine.FormatMsg(key);
    if (!details.isEmpty())
        text += u"\r\n\r\n" + details;
    return engine.ui().message(icon, Interaction::Buttons::YesNo, text) == Interaction::Answer::Yes;
}

void showBusy(Engine &engine, int key)
{
    Interaction &ui = engine.ui();
    ui.setStatusLabel(0, QString());
    ui.setStatusLabel(2, QString());
    ui.setStatusLabel(1, engine.FormatMsg(key));
    ui.yieldEvents();
}

} // namespace

SyncGate ConfirmSynchronize(Engine &engine, bool listIsStale)
{
    if (listIsStale) {
        engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                            engine.FormatMsg(803));
        return SyncGate::Refused;
    }
    if (engine.comparison().rows().size() <= 1)
        return engine.Auto ? SyncGate::CloseProgram : SyncGate::Refused;
    // The question says what the run will do, with the numbers of this list and these options.
    if (!confirmed(engine, 804, Interaction::Icon::Exclamation,
                   engine.DontAsk ? QString() : DescribePlan(engine, PlanSynchronize(engine))))
        return SyncGate::Refused;
    return SyncGate::Proceed;
}

bool RunSynchronizeCommand(Engine &engine)
{
    return RunSynchronizeEntry(engine, 0);
}

bool RunSynchronizeEntry(Engine &engine, int entry)
{
    showBusy(engine, 852);
    return Synchronize(engine, entry);
}

bool ConfirmCopySelected(Engine &engine)
{
    return confirmed(engine, 811, Interaction::Icon::Question);
}

void RunCopySelected(Engine &engine, Side d, int entry)
{
    showBusy(engine, 853);
    CopySelected(engine, d, entry);
}

bool ConfirmDeleteSelected(Engine &engine)
{
    return confirmed(engine, 801, Interaction::Icon::Question);
}

void RunDeleteSelected(Engine &engine, Side side, int entry)
{
    showBusy(engine, 854);
    engine.run().stats() = {};
    BeginKeeping(engine, entry);
    DeleteEntries(engine.comparison(), engine.run(), engine.reporter(), side, entry);
}

} // namespace duomir

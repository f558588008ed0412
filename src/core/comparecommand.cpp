#include "core/comparecommand.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <system_error>

#include "base/interaction.h"
#include "core/engine.h"
#include "core/filters.h"
#include "core/masks.h"
#include "core/merge.h"
#include "core/scanner.h"
#include "core/sortkeys.h"
#include "core/versioning.h"

namespace duomir {

QString compareRoot(const QString &pairText)
{
    if (pairText.isEmpty() || pairText.endsWith(u'/'))
        return pairText;
    return pairText + u'/';
}

namespace {

// How often the calling thread lets events run while it waits for the other side's scan.
constexpr std::chrono::milliseconds YieldInterval{10};

void warn(Engine &engine, int key, const QStringList &params = {})
{
    engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                        engine.FormatMsg(key, params));
}

} // namespace

bool Compare(Engine &engine, int *unlistedRoots)
{
    int unlisted = 0;
    if (engine.pairs.upperBound() < 1) {
        warn(engine, 802);
        return false;
    }
    Interaction &ui = engine.ui();
    Comparison &comparison = engine.comparison();
    comparison.clear();

    bool ok = true;
    for (int p = 1; p <= engine.pairs.count(); ++p) {
        const DirPair pair = engine.pairs[p];
        ui.setProgressAnimation(true);
        ui.setStatusLabel(0, QString());
        ui.setStatusLabel(2, QString());
        ui.setStatusLabel(1, engine.FormatMsg(850));

        const std::array<QString, 2> roots{compareRoot(pair.Source), compareRoot(pair.Destination)};
        const MaskSet directoryMasks = MaskSet::fromTexts(pair.IncludeDirs, pair.ExcludeDirs);
        const MaskSet fileMasks = MaskSet::fromTexts(pair.IncludeFiles, pair.ExcludeFiles);

        // Both sides are listed at once: the destination on a worker thread, the source here,
        // where the scanner keeps yielding to the message loop. Only this thread talks to the
        // person, so 806 and 807 keep their order. The scans are needed only until their rows
        // exist, which keeps the peak memory of a large comparison to one pair's scans plus the
        // rows; their texts live on with the rows.
        const int utcOffset = currentUtcOffset();
        std::array<FileArray, 2> scans;
        const std::array<SharedTexts, 2> texts{std::make_shared<TextStore>(),
                                               std::make_shared<TextStore>()};
        std::array<ScanExtras, 2> extras;
        for (Side side : Sides) {
            extras[size_t(side)].skipFolder = versionsFolderBelow(engine, roots[size_t(side)]);
            comparison.listed(side) = 0;
            extras[size_t(side)].listed = &comparison.listed(side);
        }
        auto scanDestination = [&, root = roots[1]] {
            return ScanDirectory(root, directoryMasks, fileMasks, pair, scans[1], *texts[1],
                                 nullptr, utcOffset, &extras[1]);
        };
        std::future<bool> destinationScan;
        try {
            destinationScan = std::async(std::launch::async, scanDestination);
        } catch (const std::system_error &) {
            // No thread to be had: the scan runs here when its result is asked for.
            destinationScan = std::async(std::launch::deferred, scanDestination);
        }
        const bool sourceFailed = ScanDirectory(roots[0], directoryMasks, fileMasks, pair, scans[0],
                                                *texts[0], &ui, utcOffset, &extras[0]);
        if (sourceFailed) {
            ++unlisted;
            ++engine.UnlistedRootsSeen;
            warn(engine, 806, {roots[0]});
        }
        while (destinationScan.wait_for(YieldInterval) == std::future_status::timeout)
            ui.yieldEvents();
        const bool destinationFailed = destinationScan.get();

        if (destinationFailed) {
            ++unlisted;
            ++engine.UnlistedRootsSeen;
            warn(engine, 807, {roots[1]});
            comparison.clear();
            ok = false;
            break;
        }

        ui.setStatusLabel(1, engine.FormatMsg(851));
        ui.yieldEvents();
        const SortKeys sourceKeys = MakeSortKeys(keyStart(pair.Source));
        const SortKeys destinationKeys = MakeSortKeys(keyStart(pair.Destination));
        ui.yieldEvents();
        SortEntries(scans[0], 0, static_cast<qsizetype>(scans[0].size()) - 1, sourceKeys);
        ui.yieldEvents();
        SortEntries(scans[1], 0, static_cast<qsizetype>(scans[1].size()) - 1, destinationKeys);
        ui.yieldEvents();

        // A copy onto a FAT or exFAT drive gets a time up to two seconds off: within that, files
        // are the same whatever the setting says, or every run would copy them again.
        constexpr Date TwoSeconds = 2.0 / 86400;
        const bool coarse = extras[0].coarseTimes || extras[1].coarseTimes;
        const Date lag =
            coarse ? std::max(engine.settings.TimeLag, TwoSeconds) : engine.settings.TimeLag;
        PairListing listing;
        listing.sourceUnlisted = sourceFailed;
        listing.texts = texts;
        for (Side side : Sides) {
            listing.leftovers[size_t(side)] = std::move(extras[size_t(side)].leftovers);
            listing.roots[size_t(side)] = {extras[size_t(side)].rootDevice,
                                           extras[size_t(side)].rootInode};
        }
        comparison.addPair(
            [&](CompareArray &rows) {
                MergeAndClassify({scans[0], scans[1], sourceKeys, destinationKeys, roots,
                                  comparison.markAll(), lag, comparison.texts()},
                                 rows);
            },
            std::move(listing), utcOffset);
    }

    // After 807 the list on screen is left as it was.
    if (ok) {
        comparison.countStates();
        BuildVisibleRows(comparison, engine.language, ui);
    }
    ui.setProgressAnimation(false);
    if (unlistedRoots)
        *unlistedRoots = unlisted;
    return ok;
}

} // namespace duomir

#include "core/deletionguard.h"

#include "base/interaction.h"
#include "core/engine.h"
#include "core/errorlog.h"
#include "core/syncpaths.h"

namespace duomir {

namespace {

struct PairCount
{
    int sendingFiles = 0;
    int deletions = 0;
    bool receivingHoldsAnything = false;
};

PairCount countPair(const CompareArray &rows, int root, Side side)
{
    PairCount c;
    const Side other = otherSide(side);
    for (std::size_t i = std::size_t(root) + 1; i < rows.size() && !isPairRootRow(rows[i]); ++i) {
        const CompareEntry &x = rows[i];
        c.receivingHoldsAnything = c.receivingHoldsAnything || !x.lacks(other);
        if (x.isDirectory() || x.lacks(side))
            continue;
        ++c.sendingFiles;
        if (x.Marked && x.lacks(other))
            ++c.deletions;
    }
    return c;
}

} // namespace

std::vector<OversizedDeletion> FindOversizedDeletions(const Comparison &comparison, int limit,
                                                      Side side, int start)
{
    std::vector<OversizedDeletion> found;
    const CompareArray &rows = comparison.rows();
    if (rows.size() < 2)
        return found;
    const int first = start > 0 ? pairRootRow(rows, start) : 1;
    for (int root = first; root < int(rows.size()); ++root) {
        if (!isPairRootRow(rows[size_t(root)]))
            continue;
        if (start > 0 && root != first)
            break;
        if (comparison.isInUnlistedPair(root))
            continue; // such a pair deletes nothing anyway
        const PairCount c = countPair(rows, root, side);
        const bool emptied = !c.receivingHoldsAnything && c.sendingFiles > 0;
        const bool tooMany =
            limit < 100 && qint64(c.deletions) * 100 > qint64(limit) * c.sendingFiles;
        if (c.deletions == 0 || (!emptied && !tooMany))
            continue;
        found.push_back({root, c.deletions, c.sendingFiles, pairRoot(rows[size_t(root)], side)});
    }
    return found;
}

void GuardDeletions(Engine &engine, Side side, int start, bool mirror)
{
    engine.run().refusedRoots().clear();
    const QString limit = QString::number(engine.settings.MaxDeletePercent);
    for (const OversizedDeletion &d : FindOversizedDeletions(
             engine.comparison(), engine.settings.MaxDeletePercent, side, start)) {
        const QStringList params{QString::number(d.deletions), QString::number(d.files), d.root,
                                 limit};
        if (!engine.DontAsk && engine.ui().personPresent() &&
            engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::YesNo,
                                engine.FormatMsg(mirror ? 822 : 820, params)) ==
                Interaction::Answer::Yes)
            continue;
        engine.run().refusedRoots().push_back(d.rootRow);
        ++engine.DeletionsRefused;
        if (engine.DontAsk || !engine.ui().personPresent())
            engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                                engine.FormatMsg(mirror ? 823 : 821, params));
        engine.reporter().writeLine(
            {QStringLiteral("DeletionRefused"), d.deletions, d.files, d.root, QString()});
    }
}

} // namespace duomir

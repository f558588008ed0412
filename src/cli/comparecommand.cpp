#include "core/comparecommand.h"

#include <QFileInfo>
#include <cstdio>

#include "cli/cliinteraction.h"
#include "cli/clisetup.h"
#include "cli/commands.h"
#include "cli/pairoptions.h"
#include "cli/rowwriter.h"
#include "core/engine.h"
#include "core/filters.h"
#include "core/platform/nativename.h"
#include "core/profilefile.h"

namespace duomir::cli {

namespace {

struct ViewOptions
{
    FilterState filter;
    RowWriter::Format format = RowWriter::Format::Tsv;
};

int usageError(const QString &text)
{
    std::fprintf(stderr, "duomir-cli compare: %s\n", toNative(text).constData());
    std::fputs("Usage: duomir-cli compare PROFILE | --source DIR --destination DIR [options]\n"
               "  (see duomir-cli --help)\n",
               stderr);
    return ExitUsage;
}

QString parseView(const QStringList &rest, ViewOptions &view)
{
    for (qsizetype i = 0; i < rest.size(); ++i) {
        const QString &a = rest[i];
        const QString value = i + 1 < rest.size() ? rest[i + 1] : QString();
        auto pick = [&](const QStringList &names, int &target) -> QString {
            const qsizetype index = names.indexOf(value);
            if (index < 0)
                return a + u" takes one of " + names.join(u", ") + u", not '" + value + u"'";
            target = static_cast<int>(index);
            ++i;
            return {};
        };
        QString error;
        if (a == u"--filter") {
            error =
                pick({u"all"_qs, u"modified"_qs, u"source"_qs, u"destination"_qs, u"identical"_qs},
                     view.filter.FileFilter);
        } else if (a == u"--side") {
            error = pick({u"all"_qs, u"both"_qs, u"one"_qs}, view.filter.SideFilter);
        } else if (a == u"--format") {
            int f = 0;
            error = pick({u"tsv"_qs, u"json"_qs}, f);
            view.format = f == 0 ? RowWriter::Format::Tsv : RowWriter::Format::Json;
        } else if (a == u"--empty-dirs") {
            view.filter.ShowEmptyDirs = true;
        } else {
            error = u"unknown option '" + a + u"'";
        }
        if (!error.isEmpty())
            return error;
    }
    return {};
}

} // namespace

int runCompare(const QStringList &args)
{
    PairOptions pairOptions;
    QString error =
        parsePairOptions(args, {u"--filter"_qs, u"--side"_qs, u"--format"_qs}, pairOptions);
    ViewOptions view;
    if (error.isEmpty())
        error = parseView(pairOptions.rest, view);
    if (!error.isEmpty())
        return usageError(error);

    CliInteraction ui;
    Engine engine(ui);
    prepareEngine(engine, ui);
    error = applyPairOptions(pairOptions, engine);
    if (!error.isEmpty())
        return usageError(error);

    int unlisted = 0;
    if (!pairOptions.adHoc()) {
        engine.ProfilePath = QFileInfo(pairOptions.profile).absoluteFilePath();
        if (!ReadProfile(engine)) {
            std::fprintf(stderr, "duomir-cli compare: cannot read the profile %s\n",
                         toNative(engine.ProfilePath).constData());
            return ExitUsage;
        }
    }
    if (const int refused = refuseNestedPairs(engine, pairOptions, "compare"); refused != 0)
        return refused;
    if (!Compare(engine, &unlisted) && unlisted == 0)
        return ExitUsage; // an empty pair list; Compare has said so (802)

    warnUnlistedFolders(engine, "compare");
    // The command line decides the view, whatever the profile's toolbars said.
    engine.filter = view.filter;
    BuildVisibleRows(engine, view.filter.FileFilter);

    {
        RowWriter writer(stdout, view.format);
        for (std::size_t r = 1; r < engine.VisibleRows.size(); ++r)
            writer.row(engine.CompareResults[engine.VisibleRows[r]]);
        writer.finish();
    }
    const auto &c = engine.compareCounters;
    std::fprintf(stderr,
                 "duomir-cli compare: %d rows shown (%d files, %d directories); compared: %d "
                 "newer in source, %d identical, %d newer in destination\n",
                 static_cast<int>(engine.VisibleRows.size()) - 1, engine.visibleCounts.files,
                 engine.visibleCounts.directories, c[0], c[1], c[2]);
    return unlisted > 0 ? ExitNoRoot : ExitOk;
}

} // namespace duomir::cli

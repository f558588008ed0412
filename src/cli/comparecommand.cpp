#include "core/comparecommand.h"

#include <QFileInfo>
#include <cstdio>

#include "base/nativename.h"
#include "cli/cliinteraction.h"
#include "cli/clisetup.h"
#include "cli/commands.h"
#include "cli/pairoptions.h"
#include "cli/rowwriter.h"
#include "core/engine.h"
#include "core/filters.h"
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
        auto pick = [&]<typename T>(const QStringList &names, T &target) -> QString {
            const qsizetype index = names.indexOf(value);
            if (index < 0)
                return a + u" takes one of " + names.join(u", ") + u", not '" + value + u"'";
            target = static_cast<T>(index);
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

const char *const compareUsage =
    R"(Usage: duomir-cli compare PROFILE | --source DIR --destination DIR [options]

Compares and lists every row: TSV (one header line, then one row a line) or JSON on standard
output, messages and a summary on standard error.

Options:
  --filter all|modified|source|destination|identical   rows to list (default all)
  --side all|both|one   rows on both sides or on one side only (default all)
  --empty-dirs          keep identical directories with nothing listed beneath them
  --format tsv|json     TSV (raw name bytes; \ tab CR LF escaped) or JSON (default tsv)
  (pair options and --time-lag as in duomir-cli --help)

The state column:
  -1  newer in the source (or only there, or the same time with another size)
   0  identical (within the time lag)
   1  newer in the destination (or only there)

Exit status:
  0  compared
  2  usage error, unreadable profile or nested pair
  3  a root directory could not be listed
)";

int runCompare(const QStringList &args)
{
    if (args.contains(u"--help"_qs) || args.contains(u"-h"_qs)) {
        std::fputs(compareUsage, stdout);
        return ExitOk;
    }
    PairOptions pairOptions;
    QString error =
        parsePairOptions(args, {u"--filter"_qs, u"--side"_qs, u"--format"_qs}, pairOptions);
    ViewOptions view;
    // An option nobody knows explains the rest of the line: in "--dest backup" the second word
    // is no profile but the typo's value.
    if (const QString optionError = parseView(pairOptions.rest, view);
        !optionError.isEmpty() && (error.isEmpty() || optionError.startsWith(u"unknown option")))
        error = optionError;
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
                         nameForLine(engine.ProfilePath).constData());
            return ExitUsage;
        }
    }
    if (const int refused = refuseNestedPairs(engine, pairOptions, "compare"); refused != 0)
        return refused;
    warnEmptyIncludes(engine, "compare");
    if (checkRoots(engine, "compare", false) > 0)
        return ExitNoRoot;
    if (!Compare(engine, &unlisted) && unlisted == 0)
        return ExitUsage; // an empty pair list; Compare has said so (802)

    warnUnlistedFolders(engine, "compare");
    // The command line decides the view, whatever the profile's toolbars said.
    Comparison &comparison = engine.comparison();
    comparison.setFilter(view.filter);
    BuildVisibleRows(comparison, engine.language, engine.ui());

    {
        RowWriter writer(stdout, view.format);
        for (int r = 1; r <= comparison.visibleCount(); ++r)
            writer.row(comparison.visibleRow(r));
        writer.finish();
    }
    const auto &c = comparison.counters();
    const RowCounts &shown = comparison.visibleCounts();
    std::fprintf(stderr,
                 "duomir-cli compare: %d rows shown (%d files, %d directories); compared: %d "
                 "newer in source, %d identical, %d newer in destination\n",
                 comparison.visibleCount(), shown.files, shown.directories, c[0], c[1], c[2]);
    return unlisted > 0 ? ExitNoRoot : ExitOk;
}

} // namespace duomir::cli

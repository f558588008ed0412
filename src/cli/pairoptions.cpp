#include "cli/pairoptions.h"

#include <QDir>
#include <QFileInfo>
#include <cstdio>

#include "base/nativename.h"
#include "base/timelag.h"
#include "cli/commands.h"
#include "core/engine.h"
#include "core/pairvalidation.h"

namespace duomir::cli {

namespace {

// A directory as a stored pair text: absolute, without a trailing separator (except "/").
QString pairText(const QString &dir)
{
    if (dir.isEmpty())
        return dir;
    return QDir::cleanPath(QDir::current().absoluteFilePath(dir)); // drops a trailing "/"
}

} // namespace

QString parsePairOptions(const QStringList &args, const QStringList &valueOptions, PairOptions &out)
{
    static const QStringList switches{u"--no-subdirs"_qs, u"--system-dirs"_qs, u"--hidden-dirs"_qs,
                                      u"--system-files"_qs, u"--hidden-files"_qs};
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        auto value = [&](std::optional<QString> &target) -> QString {
            if (i + 1 >= args.size())
                return a + u" needs a value";
            if (target.has_value())
                return a + u" given twice";
            target = args[++i];
            return {};
        };
        QString error;
        if (a == u"--source") {
            error = value(out.source);
        } else if (a == u"--destination") {
            error = value(out.destination);
        } else if (a == u"--include-dirs") {
            error = value(out.includeDirs);
        } else if (a == u"--exclude-dirs") {
            error = value(out.excludeDirs);
        } else if (a == u"--include-files") {
            error = value(out.includeFiles);
        } else if (a == u"--exclude-files") {
            error = value(out.excludeFiles);
        } else if (a == u"--allow-nested") {
            out.allowNested = true;
        } else if (a == u"--time-lag") {
            std::optional<QString> text;
            error = value(text);
            if (error.isEmpty()) {
                // What is not a time is refused rather than read as no lag.
                out.timeLag = parseTimeLag(*text);
                if (!out.timeLag)
                    error = u"--time-lag wants HH:MM:SS, not '" + *text + u"'";
            }
        } else if (switches.contains(a)) {
            out.switches << a;
        } else if (valueOptions.contains(a)) {
            if (i + 1 >= args.size())
                return a + u" needs a value";
            out.rest << a << args[++i];
        } else if (a.startsWith(u"-") && a.size() > 1) {
            out.rest << a;
        } else if (out.profile.isEmpty()) {
            out.profile = a;
        } else {
            error = u"unexpected argument '" + a + u"'";
        }
        if (!error.isEmpty())
            return error;
    }
    if (out.adHoc() && !out.profile.isEmpty())
        return u"give either a profile or --source and --destination"_qs;
    if (out.adHoc() && (!out.source || !out.destination))
        return u"--source and --destination go together"_qs;
    if (!out.adHoc() && out.profile.isEmpty())
        return u"name a profile or give --source and --destination"_qs;
    if (!out.adHoc() && (!out.switches.isEmpty() || out.includeDirs || out.excludeDirs ||
                         out.includeFiles || out.excludeFiles))
        return u"pair options need --source and --destination"_qs;
    return {};
}

QString applyPairOptions(const PairOptions &options, Engine &engine)
{
    if (options.timeLag)
        engine.settings.TimeLag = *options.timeLag;
    engine.pairs.clear();
    if (!options.adHoc())
        return {};
    DirPair pair = DirPair::newFromSettings(engine.settings);
    pair.Source = pairText(*options.source);
    pair.Destination = pairText(*options.destination);
    for (const QString &s : options.switches) {
        if (s == u"--no-subdirs")
            pair.SubDirs = false;
        else if (s == u"--system-dirs")
            pair.SysDirs = true;
        else if (s == u"--hidden-dirs")
            pair.HiddenDirs = true;
        else if (s == u"--system-files")
            pair.SysFiles = true;
        else if (s == u"--hidden-files")
            pair.HiddenFiles = true;
    }
    if (options.includeDirs)
        pair.IncludeDirs = *options.includeDirs;
    if (options.excludeDirs)
        pair.ExcludeDirs = *options.excludeDirs;
    if (options.includeFiles)
        pair.IncludeFiles = *options.includeFiles;
    if (options.excludeFiles)
        pair.ExcludeFiles = *options.excludeFiles;
    engine.pairs.append(pair);
    return {};
}

int warnUnlistedFolders(const Engine &engine, const char *command)
{
    int count = 0;
    for (std::size_t r = 1; r < engine.comparison().rows().size(); ++r) {
        const CompareEntry &x = engine.comparison().rows()[r];
        for (Side side : Sides) {
            if (x.lacks(side) || !x.isDirectory() || !(x.Attributes[size_t(side)] & Attr::Unlisted))
                continue;
            ++count;
            std::fprintf(stderr,
                         "duomir-cli %s: warning: a folder could not be listed, so nothing below "
                         "it is deleted or replaced: %s\n",
                         command, nameForLine(x.path(side)).constData());
        }
    }
    return count;
}

int refuseNestedPairs(const Engine &engine, const PairOptions &options, const char *command)
{
    if (options.allowNested)
        return 0;
    for (int p = 1; p <= engine.pairs.count(); ++p) {
        const DirPair &pair = engine.pairs[p];
        // As the file system resolves them: a link or ".." in one root must neither hide a
        // nesting nor make one up.
        DirPair resolved = pair;
        for (QString *root : {&resolved.Source, &resolved.Destination}) {
            const QString real = QFileInfo(*root).canonicalFilePath();
            *root = real.isEmpty() ? QDir::cleanPath(*root) : real;
        }
        const int key = pairConflict(resolved, true);
        if (key != 20820 && key != 20830 && key != 20840)
            continue;
        std::fprintf(
            stderr, "duomir-cli %s: %s -> %s: %s\nRefused; --allow-nested runs such a pair.\n",
            command, nameForLine(pair.Source).constData(),
            nameForLine(pair.Destination).constData(), toNative(engine.FormatMsg(key)).constData());
        return ExitUsage;
    }
    return 0;
}

} // namespace duomir::cli

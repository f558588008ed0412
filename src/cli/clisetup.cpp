#include "cli/clisetup.h"

#include <QFileInfo>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

#include "base/nativename.h"
#include "core/engine.h"
#include "settings/settingsfile.h"

namespace duomir::cli {

void prepareEngine(Engine &engine, Interaction &ui)
{
    InitSettings(engine, SettingsEnvironment::current());
    const QString name =
        engine.settings.Language.isEmpty() ? u"English"_qs : engine.settings.Language;
    QString file = Language::filePath(engine.ShareFolder, name);
    if (!QFileInfo::exists(file))
        file = Language::filePath(engine.ShareFolder, u"English"_qs);
    engine.language = Language::load(file, &ui); // a missing file loads nothing
}

} // namespace duomir::cli

namespace duomir::cli {

void warnEmptyIncludes(const Engine &engine, const char *command)
{
    for (int r = 1; r <= engine.pairs.count(); ++r) {
        const DirPair &pair = engine.pairs[r];
        const bool noFiles = pair.IncludeFiles.trimmed().isEmpty();
        const bool noDirs = pair.IncludeDirs.trimmed().isEmpty();
        if (!noFiles && !noDirs)
            continue;
        const char *what = noFiles && noDirs ? "files (IF) nor subdirectories (IS)"
                           : noFiles         ? "files (IF)"
                                             : "subdirectories (IS)";
        std::fprintf(stderr,
                     "duomir-cli %s: warning: pair %d (%s) has an empty include mask for %s: it "
                     "takes none of them; write \"*\" to take all\n",
                     command, r, nameForLine(pair.Source).constData(), what);
    }
}

int checkRoots(const Engine &engine, const char *command, bool createDestination)
{
    int missing = 0;
    for (int r = 1; r <= engine.pairs.count(); ++r) {
        const DirPair &pair = engine.pairs[r];
        const std::array<QString, 2> roots{pair.Source, pair.Destination};
        for (Side side : Sides) {
            const QByteArray path = toNative(roots[size_t(side)]);
            struct stat st;
            // A relative root, or another trouble than absence, is the comparison's to report.
            if (!path.startsWith('/') || ::stat(path.constData(), &st) == 0 || errno != ENOENT)
                continue;
            const char *what = side == 0 ? "source" : "destination";
            if (side == 1 && createDestination) {
                if (::mkdir(path.constData(), 0777) == 0) {
                    std::fprintf(stderr, "duomir-cli %s: created the destination directory %s\n",
                                 command, path.constData());
                    continue;
                }
                std::fprintf(stderr,
                             "duomir-cli %s: the destination directory %s does not exist and "
                             "cannot be created: %s\n",
                             command, path.constData(), std::strerror(errno));
            } else {
                std::fprintf(stderr, "duomir-cli %s: the %s directory %s does not exist%s\n",
                             command, what, path.constData(),
                             side == 1 ? " (give --create-destination to create it)" : "");
            }
            ++missing;
        }
    }
    return missing;
}

} // namespace duomir::cli

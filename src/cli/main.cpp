#include <QCoreApplication>
#include <QTextStream>
#include <cstdio>
#include <cstring>

#include "base/nativename.h"
#include "cli/commands.h"
#include <malloc.h>

namespace {

const char *const usage = R"(Usage: duomir-cli COMMAND [OPTIONS]

Keeps pairs of directories in step, without a window.

Commands:
  compare PROFILE | --source DIR --destination DIR   compare and list the rows
  sync PROFILE | --source DIR --destination DIR      synchronize the marked rows

Pair options (with --source/--destination; a new pair's defaults otherwise):
  --no-subdirs --system-dirs --hidden-dirs --system-files --hidden-files
      hidden: the name begins with "." (--hidden-dirs takes .ssh, .config, .git and the like);
      system: sockets, FIFOs and device nodes (listed, never copied)
  --include-dirs M --exclude-dirs M --include-files M --exclude-files M
  --time-lag HH:MM:SS   largest time difference that still counts as equal
  --allow-nested        run a pair whose one root lies inside the other (refused otherwise)

Compare options:
  --filter all|modified|source|destination|identical   rows to list (default all)
  --side all|both|one   rows on both sides or on one side only (default all)
  --empty-dirs          keep identical directories with nothing listed beneath them
  --format tsv|json     TSV (raw name bytes; \ tab CR LF escaped) or JSON (default tsv)
  Rows go to standard output, messages and a summary to standard error.
  Exit status: 0 compared, 2 usage error, unreadable profile or nested pair, 3 a root could not
  be listed.

Sync options (see duomir-cli sync --help):
  --direction both|to-destination|to-source   (default: the profile's, or both)
  --delete      with one direction: delete on the sending side what the receiving side lacks
  --log         write the day's log even when logging is off
  -n, --dry-run print what would change; change nothing
  -v, --verbose print each change once it is made
  --progress, -q/--quiet  a live progress line on standard error (default: on a terminal)
  --create-destination, --mkdir  create a missing destination directory (one level)
  --mirror      with one direction: delete on the receiving side what the sending side lacks
  --no-delete   neither delete nor mirror, whatever the profile says
  --max-delete PERCENT  hold back a deletion of more than PERCENT of a pair's files (default 50)
  --versioning none|trash|folder[=DIR]  where deleted and replaced files go (default: the Trash)
  Exit status: 0 done or nothing to do, 1 an operation failed or no direction was chosen,
  2 usage error, unreadable profile or nested pair, 3 a root could not be listed, 4 a deletion
  was held back by the guard.

Options:
  -h, --help       show this help and exit
  -V, --version    show the version and exit
)";

} // namespace

int main(int argc, char *argv[])
{
    // Arguments are bytes like the file names they carry: decode them the way names are decoded,
    // so a path that is not valid UTF-8 reaches the file system unchanged.
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << duomir::fromNative(argv[i], std::strlen(argv[i]));

#ifdef __GLIBC__
    // Large arrays (scans, key tables, rows) get pages of their own and give them back when freed,
    // instead of staying in the heap after glibc raises its threshold past them.
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
#endif
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("duomir-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(DUOMIR_VERSION));

    if (args.isEmpty() || args.first() == u"--help" || args.first() == u"-h") {
        std::fputs(usage, args.isEmpty() ? stderr : stdout);
        return args.isEmpty() ? duomir::ExitUsage : duomir::ExitOk;
    }
    if (args.first() == u"--version" || args.first() == u"-V") {
        QTextStream(stdout) << "duomir-cli " << QStringLiteral(DUOMIR_VERSION) << '\n';
        return 0;
    }
    const QString command = args.first();
    if (command == u"compare")
        return duomir::cli::runCompare(args.mid(1));
    if (command == u"sync")
        return duomir::cli::runSync(args.mid(1));
    QTextStream(stderr) << "duomir-cli: unknown command '" << args.first()
                        << "' (see duomir-cli --help)\n";
    return duomir::ExitUsage;
}

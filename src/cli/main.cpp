#include <QCoreApplication>
#include <QTextStream>
#include <cstdio>

#include "cli/commands.h"

namespace {

const char *const usage = R"(Usage: duomir-cli COMMAND [OPTIONS]

Keeps pairs of directories in step, without a window.

Commands:
  compare PROFILE | --source DIR --destination DIR   compare and list the rows
  sync PROFILE | --source DIR --destination DIR      synchronize the marked rows

Options:
  -h, --help       show this help and exit
  -V, --version    show the version and exit
)";

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("duomir-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(DUOMIR_VERSION));

    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty() || args.first() == u"--help" || args.first() == u"-h") {
        std::fputs(usage, args.isEmpty() ? stderr : stdout);
        return args.isEmpty() ? duomir::cli::ExitUsage : duomir::cli::ExitOk;
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
    return duomir::cli::ExitUsage;
}

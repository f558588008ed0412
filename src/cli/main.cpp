#include <QCoreApplication>
#include <QTextStream>
#include <cstdio>

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
        return args.isEmpty() ? 2 : 0;
    }
    if (args.first() == u"--version" || args.first() == u"-V") {
        QTextStream(stdout) << "duomir-cli " << QStringLiteral(DUOMIR_VERSION) << '\n';
        return 0;
    }
    QTextStream(stderr) << "duomir-cli: unknown command '" << args.first()
                        << "' (see duomir-cli --help)\n";
    return 2;
}

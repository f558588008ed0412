#include <QTextStream>

#include "cli/commands.h"

namespace duomir::cli {

int runSync(const QStringList &)
{
    QTextStream(stderr) << "duomir-cli sync: not available yet\n";
    return ExitUsage;
}

} // namespace duomir::cli

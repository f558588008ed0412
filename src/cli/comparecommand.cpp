#include <QTextStream>

#include "cli/commands.h"

namespace duomir::cli {

int runCompare(const QStringList &)
{
    QTextStream(stderr) << "duomir-cli compare: not available yet\n";
    return ExitUsage;
}

} // namespace duomir::cli

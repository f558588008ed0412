#include "settings/commandline.h"

#include <QFileInfo>

namespace duomir {

CommandLine parseArguments(const QStringList &arguments)
{
    CommandLine cl;
    QString firstOther;
    for (const QString &arg : arguments) {
        const QString word = arg.toLower();
        if (word == u"-dontask")
            cl.DontAsk = true;
        else if (word == u"-hide")
            cl.Hide = true;
        else if (word == u"-auto")
            cl.AutoRequested = true;
        else if (firstOther.isEmpty() && !arg.isEmpty())
            firstOther = arg;
    }
    cl.ProfilePath = firstOther.isEmpty() ? arguments.value(0) : firstOther;
    return cl;
}

bool isEmptyProfileFile(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isDir() && info.size() == 0;
}

} // namespace duomir

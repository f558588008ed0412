#include "settings/commandline.h"

#include <QFileInfo>

namespace duomir {

QString joinCommandLine(const QStringList &arguments)
{
    QStringList parts;
    for (const QString &arg : arguments) {
        if (arg.isEmpty())
            continue;
        const bool blank = arg.contains(u' ') || arg.contains(u'\t');
        parts.append(blank ? QString(u'"' + arg + u'"') : arg);
    }
    return parts.join(u' ');
}

CommandLine parseCommandLine(const QString &text)
{
    CommandLine cl;
    const QString line = text.trimmed();
    cl.DontAsk = line.contains(u"-dontask", Qt::CaseInsensitive);
    cl.Hide = line.contains(u"-hide", Qt::CaseInsensitive);
    cl.AutoRequested = line.contains(u"-auto", Qt::CaseInsensitive);
    if (line.isEmpty())
        return cl;
    const qsizetype quote = line.indexOf(u'"');
    if (quote >= 0) {
        const qsizetype end = line.indexOf(u'"', quote + 1);
        cl.ProfilePath = line.mid(quote + 1, end < 0 ? -1 : end - quote - 1);
    } else {
        cl.ProfilePath = line.left(line.indexOf(u' '));
    }
    return cl;
}

bool isEmptyProfileFile(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isDir() && info.size() == 0;
}

} // namespace duomir

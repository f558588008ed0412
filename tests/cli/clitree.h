#pragma once

#include <QFile>

#include "common/clirun.h"
#include "common/temptree.h"

namespace duomir::test {

// duomir-cli with `args` split at blanks; "@x" is x in the test's tree, whose "home" holds the
// program's settings and logs.
inline CliRun run(const TempTree &tree, const QString &args, const QString &program = {})
{
    QStringList list = args.split(u' ', Qt::SkipEmptyParts);
    for (QString &a : list) {
        if (a.startsWith(u'@'))
            a = tree.path(a.mid(1));
    }
    return runCli(list, tree.path(u"home"_qs), program);
}

// A profile of the pair s and d in the test's tree, with `view` in its section [0].
inline void writeProfile(TempTree &tree, const QString &name, const QByteArray &view,
                         const QByteArray &masks = "IS=*\nIF=*\n")
{
    tree.file(name, "[0]\n" + view + "\n[1]\nS=" + QFile::encodeName(tree.path(u"s"_qs)) +
                        "\nD=" + QFile::encodeName(tree.path(u"d"_qs)) + "\n" + masks);
}

} // namespace duomir::test

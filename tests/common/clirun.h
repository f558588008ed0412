#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>
#include <memory>

namespace duomir::test {

struct CliRun
{
    int code = -1; // -1 when the program did not end in time
    QByteArray out;
    QByteArray err;
};

// Starts duomir-cli (or a copy of it at `program`) with HOME and the XDG folders inside `home`,
// so that the settings and logs of a run stay in the test's tree.
inline std::unique_ptr<QProcess> startCli(const QStringList &args, const QString &home,
                                          const QString &program = {})
{
    auto p = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"HOME"_qs, home);
    env.insert(u"XDG_CONFIG_HOME"_qs, home + u"/config");
    env.insert(u"XDG_DATA_HOME"_qs, home + u"/data");
    p->setProcessEnvironment(env);
    p->start(program.isEmpty() ? qEnvironmentVariable("DUOMIR_BIN_DIR") + u"/duomir-cli" : program,
             args);
    return p;
}

inline CliRun runCli(const QStringList &args, const QString &home, const QString &program = {})
{
    const auto p = startCli(args, home, program);
    if (!p->waitForFinished(60000))
        return {};
    return {p->exitCode(), p->readAllStandardOutput(), p->readAllStandardError()};
}

} // namespace duomir::test

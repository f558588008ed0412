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

// The test's environment with HOME and the XDG folders moved inside `home`, so that the settings
// and logs of a program started with it stay in the test's tree.
inline QProcessEnvironment environmentIn(const QString &home)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"HOME"_qs, home);
    env.insert(u"XDG_CONFIG_HOME"_qs, home + u"/config");
    env.insert(u"XDG_DATA_HOME"_qs, home + u"/data");
    env.insert(u"XDG_RUNTIME_DIR"_qs, home + u"/run");
    return env;
}

// Starts duomir-cli (or a copy of it at `program`) in environmentIn(home).
inline std::unique_ptr<QProcess> startCli(const QStringList &args, const QString &home,
                                          const QString &program = {})
{
    auto p = std::make_unique<QProcess>();
    p->setProcessEnvironment(environmentIn(home));
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

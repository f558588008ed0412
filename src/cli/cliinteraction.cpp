#include "cli/cliinteraction.h"

#include <cstdio>

#include "base/nativename.h"

namespace duomir::cli {

Interaction::Answer CliInteraction::message(Icon icon, Buttons buttons, const QString &text,
                                            const QString &title)
{
    ++m_shown;
    if (onYield)
        std::fputs("\r\033[K", stderr); // a message starts on a line of its own
    const char *kind = icon == Icon::Critical      ? "error"
                       : icon == Icon::Exclamation ? "warning"
                       : icon == Icon::Question    ? "question"
                                                   : "note";
    QString line = text;
    line.replace(u"\r\n"_qs, u" "_qs).replace(u'\n', u' ');
    if (!title.isEmpty())
        line = title + u": " + line;
    const QByteArray bytes = toNative(line);
    std::fprintf(stderr, "duomir-cli: %s: %s%s\n", kind, bytes.constData(),
                 buttons == Buttons::Ok ? "" : " [answered No]");
    return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
}

void CliInteraction::failureReported(const QString &error, const QString &source,
                                     const QString &destination)
{
    // Names go out as the bytes they are on disk, so the line names the very file; control bytes
    // are escaped, so one failure is one line.
    std::fprintf(stderr, "duomir-cli: error: %s\n",
                 failureLine(error, source, destination).constData());
}

} // namespace duomir::cli

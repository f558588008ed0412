#include "settings/launcher.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStringList>
#include <algorithm>

namespace duomir {

namespace {

// Characters that force quoting of an Exec argument.
bool isReserved(QChar c)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    return reserved.contains(c);
}

// A desktop-file string value: backslash and control characters escaped.
QString escapeValue(const QString &value)
{
    QString out;
    out.reserve(value.size());
    for (const QChar c : value) {
        switch (c.unicode()) {
        case u'\\':
            out += u"\\\\";
            break;
        case u'\n':
            out += u"\\n";
            break;
        case u'\t':
            out += u"\\t";
            break;
        case u'\r':
            out += u"\\r";
            break;
        default:
            out += c;
        }
    }
    return out;
}

// Leading blanks of a value are dropped by readers unless written as "\s".
QString escapeLeadingBlank(const QString &escaped)
{
    if (escaped.startsWith(u' '))
        return u"\\s" + escaped.mid(1);
    return escaped;
}

} // namespace

QStringList launcherArguments(const QString &profilePath, bool autoRun, bool dontAsk, bool hide)
{
    QStringList args;
    if (!profilePath.isEmpty())
        args << profilePath;
    if (autoRun)
        args << QStringLiteral("-auto");
    if (dontAsk)
        args << QStringLiteral("-dontask");
    if (hide)
        args << QStringLiteral("-hide");
    return args;
}

QString desktopExecArgument(const QString &argument)
{
    QString arg = argument;
    arg.replace(u'%', QStringLiteral("%%"));
    const bool needsQuotes = arg.isEmpty() || std::any_of(arg.cbegin(), arg.cend(),
                                                          [](QChar c) { return isReserved(c); });
    if (!needsQuotes)
        return arg;
    QString quoted = QStringLiteral("\"");
    for (const QChar c : arg) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        quoted += c;
    }
    quoted += u'"';
    return quoted;
}

QString desktopExecLine(const QString &program, const QStringList &arguments)
{
    QStringList parts{desktopExecArgument(program)};
    for (const QString &word : arguments)
        parts.append(desktopExecArgument(word));
    return parts.join(u' ');
}

QString desktopEntryText(const Launcher &launcher)
{
    auto line = [](QStringView key, const QString &value) -> QString {
        return key + u'=' + escapeLeadingBlank(escapeValue(value)) + u'\n';
    };
    QString text = QStringLiteral("[Desktop Entry]\nType=Application\nVersion=1.0\n");
    // A line break cannot stand in a name; the shown name is one line.
    text += line(u"Name", QString(launcher.name).replace(u'\n', u' '));
    if (!launcher.description.isEmpty())
        text += line(u"Comment", launcher.description);
    text += line(u"Exec", desktopExecLine(launcher.program, launcher.arguments));
    if (!launcher.workingFolder.isEmpty())
        text += line(u"Path", launcher.workingFolder);
    if (!launcher.icon.isEmpty())
        text += line(u"Icon", launcher.icon);
    text += QStringLiteral("Terminal=false\n");
    return text;
}

QString launcherFilePath(const QString &folder, const QString &name)
{
    return QDir(folder).filePath(name + u".desktop");
}

bool CreateShortcut(const QString &linkPath, const Launcher &launcher)
{
    if (linkPath.isEmpty() || launcher.program.isEmpty())
        return false;
    QSaveFile file(linkPath);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(desktopEntryText(launcher).toUtf8());
    if (!file.commit())
        return false;
    // Executable for whoever may read it.
    auto perms = QFile::permissions(linkPath) | QFileDevice::ExeOwner | QFileDevice::ExeUser;
    if (perms & QFileDevice::ReadGroup)
        perms |= QFileDevice::ExeGroup;
    if (perms & QFileDevice::ReadOther)
        perms |= QFileDevice::ExeOther;
    return QFile::setPermissions(linkPath, perms);
}

} // namespace duomir

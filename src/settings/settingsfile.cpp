#include "settings/settingsfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/inifile.h"
#include "base/timelag.h"

namespace duomir {

namespace {

const QString Product = QStringLiteral("Duomir");

QString join(const QString &folder, const QString &name)
{
    if (folder.endsWith(u'/'))
        return folder + name;
    return folder + u'/' + name;
}

QString settingsFileName()
{
    return Product + u".ini";
}

QString flag(bool on)
{
    return on ? QStringLiteral("1") : QStringLiteral("0");
}

bool holdsResources(const QString &folder)
{
    const QDir dir(folder);
    return dir.exists(QStringLiteral("Help")) ||
           !dir.entryList({QStringLiteral("*.lang")}, QDir::Files).isEmpty();
}

} // namespace

SettingsEnvironment SettingsEnvironment::current()
{
    SettingsEnvironment env;
    env.programFolder = QCoreApplication::applicationDirPath();
    env.home = qEnvironmentVariable("HOME");
    env.dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    env.configHome = qEnvironmentVariable("XDG_CONFIG_HOME");
    return env;
}

QString InitDataFolder(const SettingsEnvironment &env)
{
    // Relative XDG values are to be ignored, as the base directory rules ask.
    QString base;
    if (QDir::isAbsolutePath(env.dataHome))
        base = env.dataHome;
    else if (!env.home.isEmpty())
        base = join(env.home, QStringLiteral(".local/share"));
    if (base.isEmpty())
        return join(env.programFolder, QString());

    // A fresh account may not have ~/.local/share yet; without it an unattended run would have
    // nowhere to put its log, so the whole path is made.
    const QString folder = join(base, Product);
    if (!QFileInfo(folder).isDir())
        QDir().mkpath(folder);
    return folder + u'/';
}

QString settingsFilePath(const SettingsEnvironment &env)
{
    const QString portable = join(env.programFolder, settingsFileName());
    // Beside the program only in a portable install made on purpose: a writable program folder
    // alone (an install into /usr/local/bin run as root) would share one user's settings with all.
    if (QFileInfo::exists(portable))
        return portable;

    QString base;
    if (QDir::isAbsolutePath(env.configHome))
        base = env.configHome;
    else if (!env.home.isEmpty())
        base = join(env.home, QStringLiteral(".config"));
    if (base.isEmpty())
        return portable;
    const QString folder = join(base, Product);
    QDir().mkpath(folder);
    return join(folder, settingsFileName());
}

QString findShareFolder(const QString &programFolder)
{
    const QString installed =
        QDir::cleanPath(join(programFolder, QStringLiteral("../share/duomir")));
    if (!holdsResources(programFolder) && holdsResources(installed))
        return installed;
    return programFolder;
}

Settings LoadSettings(const IniFile &file)
{
    const QString exclude = QStringLiteral("Exclude");
    const QString include = QStringLiteral("Include");
    const QString general = QStringLiteral("General");
    const QString form = QStringLiteral("Form");
    const auto on = [&](const QString &section, const char16_t *key, int def) {
        return file.readInt(section, QString::fromUtf16(key), def) != 0;
    };

    Settings s;
    s.ExcludeDirs = file.readString(exclude, QStringLiteral("Dirs"), {}, 32766);
    s.ExcludeFiles = file.readString(exclude, QStringLiteral("Files"), {}, 32766);
    s.SubDirs = on(include, u"SubDirs", 1);
    s.SysDirs = on(include, u"SysDirs", 0);
    s.SysFiles = on(include, u"SysFiles", 0);
    s.HiddenDirs = on(include, u"HiddenDirs", 0);
    s.HiddenFiles = on(include, u"HiddenFiles", 0);
    s.TimeLag = timeLagFromText(
        file.readString(general, QStringLiteral("TimeLag"), QStringLiteral("0"), 19));
    s.FormPos = file.readString(form, QStringLiteral("Pos"), {}, 99);
    s.FormState = file.readInt(form, QStringLiteral("State"), 0);
    s.LogToFile = on(general, u"LogToFile", 0);
    s.LogActions = on(general, u"LogActions", 0);
    s.MaxDeletePercent =
        std::clamp(file.readInt(general, QStringLiteral("MaxDeletePercent"), 50), 0, 100);
    s.Versioning = std::clamp(file.readInt(general, QStringLiteral("Versioning"), 1), 0, 2);
    s.VersionsFolder =
        file.readString(general, QStringLiteral("VersionsFolder"), s.VersionsFolder, 4096);
    if (s.VersionsFolder.isEmpty())
        s.VersionsFolder = Settings().VersionsFolder;
    s.KeepVersionsDays = std::max(0, file.readInt(general, QStringLiteral("KeepVersionsDays"), 30));
    s.DontShowHint = on(general, u"DontShowHint", 0);
    s.ButtonBarsWithText = on(general, u"ButtonBarsWithText", 0);
    s.Language = file.readString(general, QStringLiteral("Language"), {}, 254);
    return s;
}

void WriteOptions(IniFile &file, const Settings &s)
{
    const QString exclude = QStringLiteral("Exclude");
    const QString include = QStringLiteral("Include");
    const QString general = QStringLiteral("General");
    file.beginBatch();
    file.writeString(exclude, QStringLiteral("Dirs"), s.ExcludeDirs);
    file.writeString(exclude, QStringLiteral("Files"), s.ExcludeFiles);
    file.writeString(general, QStringLiteral("TimeLag"), timeLagToText(s.TimeLag));
    file.writeString(general, QStringLiteral("LogToFile"), flag(s.LogToFile));
    file.writeString(general, QStringLiteral("LogActions"), flag(s.LogActions));
    file.writeString(general, QStringLiteral("Versioning"), QString::number(s.Versioning));
    file.writeString(general, QStringLiteral("VersionsFolder"), s.VersionsFolder);
    file.writeString(general, QStringLiteral("ButtonBarsWithText"), flag(s.ButtonBarsWithText));
    file.writeString(include, QStringLiteral("SubDirs"), flag(s.SubDirs));
    file.writeString(include, QStringLiteral("SysDirs"), flag(s.SysDirs));
    file.writeString(include, QStringLiteral("SysFiles"), flag(s.SysFiles));
    file.writeString(include, QStringLiteral("HiddenDirs"), flag(s.HiddenDirs));
    file.writeString(include, QStringLiteral("HiddenFiles"), flag(s.HiddenFiles));
    file.endBatch();
}

void WriteLanguage(IniFile &file, const QString &language)
{
    file.writeString(QStringLiteral("General"), QStringLiteral("Language"), language);
}

void WriteDontShowHint(IniFile &file, bool dontShow)
{
    file.writeString(QStringLiteral("General"), QStringLiteral("DontShowHint"), flag(dontShow));
}

Placement parsePlacement(const QString &pos)
{
    Placement p{};
    const QStringList parts = pos.split(u';');
    for (int i = 0; i < 4 && i < parts.size(); ++i) {
        bool ok = false;
        const double v = parts[i].trimmed().toDouble(&ok);
        p[i] = ok && std::isfinite(v) ? float(v) : 0.0f;
    }
    return p;
}

QString placementText(const Placement &placement)
{
    QStringList parts;
    for (float v : placement) {
        char buf[64];
        const auto r =
            std::to_chars(buf, buf + sizeof buf, v == 0.0f ? 0.0f : v, std::chars_format::fixed);
        parts.append(r.ec == std::errc() ? QString::fromLatin1(buf, r.ptr - buf)
                                         : QStringLiteral("0"));
    }
    return parts.join(u';');
}

void WritePlacementOnClose(IniFile &file, const Settings &startup, WindowState state,
                           const Placement &placement)
{
    const QString form = QStringLiteral("Form");
    file.beginBatch(); // one rewrite of the file, not one a key
    if (state == WindowState::Normal && parsePlacement(startup.FormPos) != placement)
        file.writeString(form, QStringLiteral("Pos"), placementText(placement));
    if (int(state) != startup.FormState && state != WindowState::Minimized)
        file.writeString(form, QStringLiteral("State"), QString::number(int(state)));
    file.deleteKey(QStringLiteral("General"), QStringLiteral("FilesColWidth"));
    file.endBatch();
}

} // namespace duomir

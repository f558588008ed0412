#include "core/profilefile.h"

#include "core/comparecommand.h"
#include "core/engine.h"
#include "core/interaction.h"
#include "settings/inifile.h"

namespace duomir {

namespace {

const QString ViewSection = QStringLiteral("0");

QString flag(bool on)
{
    return on ? QStringLiteral("1") : QStringLiteral("0");
}

// A null text would delete the key: an empty field is written as an empty value.
QString text(const QString &value)
{
    return value.isNull() ? QStringLiteral("") : value;
}

int filterValue(int value, int highest)
{
    return value >= 0 && value <= highest ? value : 0;
}

} // namespace

bool ReadProfile(Engine &engine)
{
    engine.pairs.clear();
    engine.MarkAll = true;

    const IniFile file(engine.ProfilePath);
    const QStringList sections = file.sectionNames();
    if (sections.isEmpty() ||
        (sections.size() == 1 && sections.first().isEmpty() && file.keys(QString()).isEmpty())) {
        engine.ProfileUnreadable = true;
        engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                            engine.FormatMsg(805, {engine.ProfilePath}));
        return false;
    }

    FilterState &filter = engine.filter;
    filter.ShowEmptyDirs = file.readInt(ViewSection, QStringLiteral("ED"), 0) != 0;
    filter.FileFilter = filterValue(file.readInt(ViewSection, QStringLiteral("F1"), 0), 4);
    filter.SideFilter = filterValue(file.readInt(ViewSection, QStringLiteral("F2"), 0), 2);
    bool *const sync[5] = {&engine.sync.Src, &engine.sync.Dest, &engine.sync.Reverse,
                           &engine.sync.Delete, &engine.sync.Mirror};
    for (int i = 0; i < 5; ++i)
        *sync[i] = file.readInt(ViewSection, u"SO" + QString::number(i), 0) != 0;
    // The two kinds of deletion exclude each other; a hand-written profile with both deletes
    // the way the older switch does.
    engine.sync.Mirror = engine.sync.Mirror && !engine.sync.Delete;

    for (const QString &section : sections) {
        if (section.isEmpty() || section == ViewSection)
            continue;
        DirPair pair = DirPair::fromProfileDefaults();
        auto readText = [&](const char16_t *key) {
            return file.readString(section, QString::fromUtf16(key), QString());
        };
        auto readSwitch = [&](const char16_t *key) {
            return file.readInt(section, QString::fromUtf16(key), 1) != 0;
        };
        pair.Source = readText(u"S");
        pair.Destination = readText(u"D");
        pair.SubDirs = readSwitch(u"Su");
        pair.HiddenDirs = readSwitch(u"HD");
        pair.HiddenFiles = readSwitch(u"HF");
        pair.SysDirs = readSwitch(u"SD");
        pair.SysFiles = readSwitch(u"SF");
        pair.IncludeDirs = readText(u"IS");
        pair.ExcludeDirs = readText(u"ES");
        pair.IncludeFiles = readText(u"IF");
        pair.ExcludeFiles = readText(u"EF");
        engine.pairs.append(pair);
    }
    return true;
}

bool LoadProfile(Engine &engine, int *unlistedRoots)
{
    if (!ReadProfile(engine))
        return false;
    Compare(engine, unlistedRoots);
    engine.ProfileModified = false;
    return true;
}

bool SaveProfile(Engine &engine, const QString &path)
{
    engine.ProfilePath = path;
    IniFile file(path);
    file.beginBatch();
    bool ok = true;
    auto write = [&](const QString &section, const char16_t *key, const QString &value) {
        ok = file.writeString(section, QString::fromUtf16(key), text(value)) && ok;
    };
    const FilterState &filter = engine.filter;
    write(ViewSection, u"ED", flag(filter.ShowEmptyDirs));
    write(ViewSection, u"F1", QString::number(filter.FileFilter));
    write(ViewSection, u"F2", QString::number(filter.SideFilter));
    write(ViewSection, u"SO0", flag(engine.sync.Src));
    write(ViewSection, u"SO1", flag(engine.sync.Dest));
    write(ViewSection, u"SO2", flag(engine.sync.Reverse));
    write(ViewSection, u"SO3", flag(engine.sync.Delete));
    write(ViewSection, u"SO4", flag(engine.sync.Mirror));

    for (int r = 1; r <= engine.pairs.count(); ++r) {
        const DirPair &pair = engine.pairs[r];
        const QString section = QString::number(r);
        write(section, u"S", pair.Source);
        write(section, u"D", pair.Destination);
        write(section, u"Su", flag(pair.SubDirs));
        write(section, u"HD", flag(pair.HiddenDirs));
        write(section, u"HF", flag(pair.HiddenFiles));
        write(section, u"SD", flag(pair.SysDirs));
        write(section, u"SF", flag(pair.SysFiles));
        write(section, u"IS", pair.IncludeDirs);
        write(section, u"ES", pair.ExcludeDirs);
        write(section, u"IF", pair.IncludeFiles);
        write(section, u"EF", pair.ExcludeFiles);
    }
    ok = file.endBatch() && ok;
    engine.ProfileModified = false;
    return ok;
}

QString profileCaption(const QString &profilePath, const QString &baseCaption)
{
    QString name = profilePath.mid(profilePath.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot >= 0)
        name.truncate(dot);
    return name + u" · " + baseCaption;
}

} // namespace duomir

#include "core/profilefile.h"

#include "base/inifile.h"
#include "base/interaction.h"
#include "core/comparecommand.h"
#include "core/engine.h"

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

// A pair's keys in the order the file lists them: the two roots, the switches by their codes,
// the masks.
struct TextKey
{
    const char16_t *key;
    QString DirPair::*field;
};
constexpr TextKey RootKeys[] = {{u"S", &DirPair::Source}, {u"D", &DirPair::Destination}};
constexpr PairSwitch SwitchKeys[] = {PairSwitch::SubDirs, PairSwitch::HiddenDirs,
                                     PairSwitch::HiddenFiles, PairSwitch::SysDirs,
                                     PairSwitch::SysFiles};
constexpr TextKey MaskKeys[] = {{u"IS", &DirPair::IncludeDirs},
                                {u"ES", &DirPair::ExcludeDirs},
                                {u"IF", &DirPair::IncludeFiles},
                                {u"EF", &DirPair::ExcludeFiles}};

// A value that names no button reads as the first one.
template <typename View> View filterValue(int value, View highest)
{
    return value >= 0 && value <= int(highest) ? View(value) : View{};
}

} // namespace

bool ReadProfile(Engine &engine)
{
    engine.pairs.clear();
    engine.comparison().setMarkAll(true);

    const IniFile file(engine.ProfilePath);
    const QStringList sections = file.sectionNames();
    if (sections.isEmpty() ||
        (sections.size() == 1 && sections.first().isEmpty() && file.keys(QString()).isEmpty())) {
        engine.ProfileUnreadable = true;
        engine.ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                            engine.FormatMsg(805, {engine.ProfilePath}));
        return false;
    }

    FilterState filter;
    filter.ShowEmptyDirs = file.readInt(ViewSection, QStringLiteral("ED"), 0) != 0;
    filter.FileFilter =
        filterValue(file.readInt(ViewSection, QStringLiteral("F1"), 0), FileView::Identical);
    filter.SideFilter =
        filterValue(file.readInt(ViewSection, QStringLiteral("F2"), 0), SideView::DifferentNames);
    engine.comparison().setFilter(filter);
    SyncOptions options;
    bool *const sync[5] = {&options.Src, &options.Dest, &options.Reverse, &options.Delete,
                           &options.Mirror};
    for (int i = 0; i < 5; ++i)
        *sync[i] = file.readInt(ViewSection, u"SO" + QString::number(i), 0) != 0;
    // The two kinds of deletion exclude each other; a hand-written profile with both deletes
    // the way the older switch does.
    options.Mirror = options.Mirror && !options.Delete;
    engine.run().setOptions(options);

    for (const QString &section : sections) {
        if (section.isEmpty() || section == ViewSection)
            continue;
        DirPair pair = DirPair::fromProfileDefaults();
        for (const auto &[key, field] : RootKeys)
            pair.*field = file.readString(section, QString::fromUtf16(key), QString());
        for (const PairSwitch s : SwitchKeys)
            switchField(pair, s) = file.readInt(section, switchCode(s), 1) != 0;
        for (const auto &[key, field] : MaskKeys)
            pair.*field = file.readString(section, QString::fromUtf16(key), QString());
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
    auto write = [&](const QString &section, const QString &key, const QString &value) {
        ok = file.writeString(section, key, text(value)) && ok;
    };
    const FilterState &filter = engine.comparison().filter();
    write(ViewSection, u"ED"_qs, flag(filter.ShowEmptyDirs));
    write(ViewSection, u"F1"_qs, QString::number(int(filter.FileFilter)));
    write(ViewSection, u"F2"_qs, QString::number(int(filter.SideFilter)));
    const SyncOptions &options = engine.run().options();
    write(ViewSection, u"SO0"_qs, flag(options.Src));
    write(ViewSection, u"SO1"_qs, flag(options.Dest));
    write(ViewSection, u"SO2"_qs, flag(options.Reverse));
    write(ViewSection, u"SO3"_qs, flag(options.Delete));
    write(ViewSection, u"SO4"_qs, flag(options.Mirror));

    for (int r = 1; r <= engine.pairs.count(); ++r) {
        const DirPair &pair = engine.pairs[r];
        const QString section = QString::number(r);
        for (const auto &[key, field] : RootKeys)
            write(section, QString::fromUtf16(key), pair.*field);
        for (const PairSwitch s : SwitchKeys)
            write(section, switchCode(s), flag(switchValue(pair, s)));
        for (const auto &[key, field] : MaskKeys)
            write(section, QString::fromUtf16(key), pair.*field);
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

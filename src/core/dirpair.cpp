#include "core/dirpair.h"

#include <array>

#include "settings/settings.h"

namespace duomir {

DirPair DirPair::newFromSettings(const Settings &settings)
{
    DirPair pair;
    pair.SubDirs = settings.SubDirs;
    pair.SysDirs = settings.SysDirs;
    pair.SysFiles = settings.SysFiles;
    pair.HiddenDirs = settings.HiddenDirs;
    pair.HiddenFiles = settings.HiddenFiles;
    pair.IncludeDirs = QStringLiteral("*");
    pair.ExcludeDirs = settings.ExcludeDirs;
    pair.IncludeFiles = QStringLiteral("*");
    pair.ExcludeFiles = settings.ExcludeFiles;
    return pair;
}

PairSwitch switchInDisplayOrder(int position)
{
    static constexpr std::array order{PairSwitch::SubDirs, PairSwitch::SysDirs,
                                      PairSwitch::HiddenDirs, PairSwitch::SysFiles,
                                      PairSwitch::HiddenFiles};
    return order.at(static_cast<size_t>(position));
}

QString switchCode(PairSwitch s)
{
    switch (s) {
    case PairSwitch::SubDirs:
        return QStringLiteral("Su");
    case PairSwitch::SysDirs:
        return QStringLiteral("SD");
    case PairSwitch::HiddenDirs:
        return QStringLiteral("HD");
    case PairSwitch::SysFiles:
        return QStringLiteral("SF");
    case PairSwitch::HiddenFiles:
        return QStringLiteral("HF");
    }
    return {};
}

bool &switchField(DirPair &pair, PairSwitch s)
{
    switch (s) {
    case PairSwitch::SubDirs:
        return pair.SubDirs;
    case PairSwitch::SysDirs:
        return pair.SysDirs;
    case PairSwitch::HiddenDirs:
        return pair.HiddenDirs;
    case PairSwitch::SysFiles:
        return pair.SysFiles;
    case PairSwitch::HiddenFiles:
        break;
    }
    return pair.HiddenFiles;
}

bool switchValue(const DirPair &pair, PairSwitch s)
{
    return switchField(const_cast<DirPair &>(pair), s);
}

int DirPairList::append(const DirPair &pair)
{
    m_slots.push_back(pair);
    return count();
}

void DirPairList::removeAt(int slot)
{
    if (slot < 1 || slot > count())
        return;
    m_slots.erase(m_slots.begin() + slot);
}

void DirPairList::removeLast()
{
    if (count() > 0)
        m_slots.pop_back();
}

void DirPairList::clear()
{
    m_slots.resize(1);
}

} // namespace duomir

#pragma once

#include <QString>
#include <vector>

namespace duomir {

struct Settings;

// One line of the user's work list. The field order is the record's; the display order of the
// switches (Su, SD, HD, SF, HF) differs on purpose, see switchInDisplayOrder().
struct DirPair
{
    QString Source;
    QString Destination;
    bool SubDirs = true;
    bool SysDirs = true;
    bool SysFiles = true;
    bool HiddenDirs = true;
    bool HiddenFiles = true;
    QString IncludeDirs;
    QString ExcludeDirs;
    QString IncludeFiles;
    QString ExcludeFiles;

    // A pair read from a profile entry that lacks keys: empty paths and masks, every switch on.
    static DirPair fromProfileDefaults() { return DirPair{}; }
    // A pair made by Add: switches and exclude masks follow the options, include masks are "*".
    static DirPair newFromSettings(const Settings &settings);

    friend bool operator==(const DirPair &, const DirPair &) = default;
};

// The switches as the user sees them: grid columns 2..6 and the popup entries &1..&5.
enum class PairSwitch { SubDirs, SysDirs, HiddenDirs, SysFiles, HiddenFiles };
inline constexpr int PairSwitchCount = 5;

// Display position 0..4 -> switch; the two-letter code shown to the user and used as profile key.
PairSwitch switchInDisplayOrder(int position);
QString switchCode(PairSwitch s);
bool &switchField(DirPair &pair, PairSwitch s);
bool switchValue(const DirPair &pair, PairSwitch s);

// The program-wide pair list. Slot 0 is never a pair: pairs are slots 1..count(), so a list with no
// pairs still holds slot 0 and its upper bound is 0.
class DirPairList
{
public:
    DirPairList() : m_slots(1) {}

    int count() const { return static_cast<int>(m_slots.size()) - 1; }
    int upperBound() const { return count(); }
    bool isEmpty() const { return count() == 0; }

    DirPair &operator[](int slot) { return m_slots.at(static_cast<size_t>(slot)); }
    const DirPair &operator[](int slot) const { return m_slots.at(static_cast<size_t>(slot)); }

    // Appends a pair as the new last slot and returns its index.
    int append(const DirPair &pair);
    // Removes slot r (1..count()), moving the later pairs one slot down.
    void removeAt(int slot);
    // Drops the last slot again (an Add whose dialog was cancelled).
    void removeLast();
    // Back to slot 0 alone.
    void clear();

    friend bool operator==(const DirPairList &, const DirPairList &) = default;

private:
    std::vector<DirPair> m_slots;
};

} // namespace duomir

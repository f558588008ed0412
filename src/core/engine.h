#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>
#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

#include "core/dirpair.h"
#include "core/fileentry.h"
#include "core/platform/fileops.h"
#include "core/progressmodel.h"
#include "core/scanner.h"
#include "core/syncpaths.h"
#include "core/syncstats.h"
#include "core/textstore.h"
#include "localization/language.h"
#include "settings/settings.h"
#include "settings/settingsfile.h"

namespace duomir {

class FileOps;
class Interaction;

// The file-list filter selection (the three filter toolbars).
struct FilterState
{
    int FileFilter = 0; // 0 all, 1 modified, 2 modified in source, 3 in destination, 4 identical
    int SideFilter = 0; // 0 all, 1 in both directories, 2 in one directory only
    bool ShowEmptyDirs = false;
};

// The synchronization directions (the fourth toolbar, buttons "#0".."#4").
struct SyncOptions
{
    bool Src = true;
    bool Dest = true;
    bool Reverse = false; // the button exists but is hidden
    bool Delete = false;  // only with exactly one direction
    // Only with exactly one direction, never with Delete: the receiving side loses what the
    // sending side lacks (files and emptied folders) before the copies.
    bool Mirror = false;
};

// Counts shown under the file list after each rebuild of the visible rows.
struct RowCounts
{
    int files = 0;
    int directories = 0;
};

// Told before and after the rows a view shows change shape: the comparison's rows or the visible
// ones. Between the two calls the rows must not be read; after the second they may have any count.
class RowsObserver
{
public:
    virtual void rowsAboutToChange() = 0;
    virtual void rowsChanged() = 0;

protected:
    ~RowsObserver() = default;
};

// The one object that owns everything a run of Duomir keeps: settings, the pair list, the file
// arrays, the filter and sync selections and the profile state. Front ends hold one Engine and
// reach every command through it; the engine reaches the person only through Interaction.
class Engine
{
public:
    explicit Engine(Interaction &ui);

    Interaction &ui() const { return *m_ui; }

    // Settings and folders, fixed at start-up.
    Settings settings;
    QString SettingsFile;
    QString DataFolder;    // ends in the separator
    QString ProgramFolder; // folder of the executable
    QString ShareFolder;   // folder of the language files and Help pages
    Language language;

    // Start switches.
    bool DontAsk = false;
    bool Auto = false;
    // A run that asks nothing may still show its progress (a terminal's status line).
    bool ProgressWhenUnattended = false;
    // Entries the running comparison has listed so far per side, read by a progress display
    // while the destination is listed on another thread.
    std::array<std::atomic<std::int64_t>, 2> Listed{};
    // What an automatic run met before its end, for its exit status: roots that could not be
    // listed (806, 807) and a profile that could not be read (805).
    int UnlistedRootsSeen = 0;
    bool ProfileUnreadable = false;
    // Pairs whose deletion step the guard held back in this run (their root rows), and how many
    // were held back since the program started.
    std::vector<int> DeletionRefusedRoots;
    int DeletionsRefused = 0;

    // Pairs and profile.
    DirPairList pairs;
    QString ProfilePath;
    bool ProfileModified = false;

    // The comparison's rows, and the stores their paths and names live in (the scans' and one
    // for the paths the comparison derives); they go together.
    CompareArray CompareResults{1};
    std::vector<SharedTexts> CompareTexts{std::make_shared<TextStore>()};
    // A store that lives as long as the rows, for texts of rows made here.
    TextStore &texts() const { return *CompareTexts.front(); }
    std::array<QString, 2> CompareRoots;
    // The time-zone offset the last comparison turned file times into dates with: the file
    // operations turn the dates back to check that a file is still as it was seen.
    int CompareUtcOffset = 0;
    Seen seen(const CompareEntry &e, int side) const
    {
        return {e.FullSize[size_t(side)],
                DateToFileTime(e.Modified[size_t(side)], CompareUtcOffset),
                e.ModifiedNs[size_t(side)]};
    }
    // Temporary files that copies of killed runs left behind, as the last comparison found them:
    // the root row of their pair, the side and the full path. The next copy into that side
    // removes those no copy holds any more.
    struct Leftover
    {
        int rootRow;
        int side;
        QString path;
    };
    std::vector<Leftover> Leftovers;
    // Per pair (its root row), which directories the comparison listed as the two roots.
    QHash<int, std::array<RootIdentity, 2>> RootIdentities;
    bool MarkAll = true;
    // Entries the last comparison would send: [0] source to destination, [1] identical rows,
    // [2] destination to source.
    std::array<int, 3> compareCounters{};

    // View selection and the rows it admits: indices into CompareResults, so that a check mark
    // set in the list is the one synchronization reads (element 0 has no meaning).
    FilterState filter;
    RowIndexArray VisibleRows = RowIndexArray(1, 0);
    RowCounts visibleCounts;
    // Rows of the pairs whose source root could not be listed (message 806), first and last
    // index; the first is the pair's root row. Such a pair is compared against an empty source,
    // so every destination file looks missing in the source: deleting on the destination what the
    // source lacks would wipe it, so deletion leaves these rows alone. Copies towards a missing
    // source are tried and fail, reported; into a source folder that exists but could not be
    // read nothing is copied, as it may hold newer files that nobody has seen.
    struct RowRange
    {
        int first;
        int last;
    };
    std::vector<RowRange> UnlistedRows;
    bool isInUnlistedPair(int row) const
    {
        for (const RowRange &r : UnlistedRows) {
            if (row >= r.first && row <= r.last)
                return true;
        }
        return false;
    }
    // Whether a folder above `row` exists on `side` but could not be listed there: whatever the
    // row lacks on that side may be there unseen. A walk that starts below such a folder never
    // meets its row, so it asks here.
    bool isBelowUnlisted(int row, int side) const
    {
        const QString &path = CompareResults[size_t(row)].path(side);
        for (int i = row - 1; i >= 1; --i) {
            const CompareEntry &x = CompareResults[size_t(i)];
            if (x.isDirectory() && !x.lacks(side) &&
                (x.Attributes[size_t(side)] & Attr::Unlisted) &&
                liesInside(path, insidePrefix(x.path(side))))
                return true;
        }
        return false;
    }
    bool isInUnseenSource(int row) const
    {
        for (const RowRange &r : UnlistedRows) {
            if (row >= r.first && row <= r.last) {
                const std::uint32_t root = CompareResults[size_t(r.first)].Attributes[0];
                return root != Attr::Invalid && (root & Attr::Directory) != 0;
            }
        }
        return false;
    }

    // Observers hear of every change of the rows' shape; one that goes away says so first.
    void addRowsObserver(RowsObserver *observer) { m_rowsObservers.push_back(observer); }
    void removeRowsObserver(RowsObserver *observer) { std::erase(m_rowsObservers, observer); }
    // While one lives, the rows may change shape; the observers hear of it before and after.
    // Nested changes tell them once.
    class RowsChange
    {
    public:
        explicit RowsChange(Engine &engine) : m_engine(engine)
        {
            if (m_engine.m_rowsChanging++ == 0) {
                for (RowsObserver *o : m_engine.m_rowsObservers)
                    o->rowsAboutToChange();
            }
        }
        ~RowsChange()
        {
            if (--m_engine.m_rowsChanging == 0) {
                for (RowsObserver *o : m_engine.m_rowsObservers)
                    o->rowsChanged();
            }
        }
        RowsChange(const RowsChange &) = delete;
        RowsChange &operator=(const RowsChange &) = delete;

    private:
        Engine &m_engine;
    };

    // Empties the comparison result and, with it, the visible rows that point into it.
    void resetCompareResults()
    {
        const RowsChange change(*this);
        CompareArray(1).swap(CompareResults);
        RowIndexArray(1, 0).swap(VisibleRows);
        CompareTexts.assign(1, std::make_shared<TextStore>());
        UnlistedRows.clear();
        Leftovers.clear();
        RootIdentities.clear();
    }
    int visibleCount() const { return static_cast<int>(VisibleRows.size()) - 1; }
    CompareEntry &visibleRow(int r)
    {
        return CompareResults[static_cast<size_t>(VisibleRows[static_cast<size_t>(r)])];
    }
    const CompareEntry &visibleRow(int r) const
    {
        return CompareResults[static_cast<size_t>(VisibleRows[static_cast<size_t>(r)])];
    }

    // Synchronization run state.
    SyncOptions sync;
    // Set by Cancel and by termination signals, read by copies on worker threads.
    std::atomic<bool> CancelFlag = false;
    static_assert(std::atomic<bool>::is_always_lock_free);
    std::int64_t ByteTotal = 0;
    ProgressModel progress; // the GUI sets a sink; without one nothing is shown
    SyncStats syncStats;
    // Where synchronization changes the disk; not owned. The real file system by default.
    FileOps *fileOps;

    // The local time for log lines; tests replace the clock.
    std::function<QDateTime()> clock;
    QDateTime now() const { return clock ? clock() : QDateTime::currentDateTime(); }

    QString FormatMsg(int key, const QStringList &params = {}) const
    {
        return language.FormatMsg(QString::number(key), params);
    }

private:
    Interaction *m_ui;
    std::vector<RowsObserver *> m_rowsObservers;
    int m_rowsChanging = 0;
};

// Fills engine.ProgramFolder, ShareFolder, DataFolder, SettingsFile and settings, in that order.
void InitSettings(Engine &engine, const SettingsEnvironment &env);

} // namespace duomir

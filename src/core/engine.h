#pragma once

#include <QDateTime>
#include <QString>
#include <functional>

#include "core/comparison.h"
#include "core/dirpair.h"
#include "core/errorlog.h"
#include "core/syncrun.h"
#include "localization/language.h"
#include "settings/settings.h"
#include "settings/settingsfile.h"

namespace duomir {

class Interaction;

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
    // What an automatic run met before its end, for its exit status: roots that could not be
    // listed (806, 807) and a profile that could not be read (805).
    int UnlistedRootsSeen = 0;
    bool ProfileUnreadable = false;
    // How many pairs' deletion steps the guard held back since the program started.
    int DeletionsRefused = 0;

    // Pairs and profile.
    DirPairList pairs;
    QString ProfilePath;
    bool ProfileModified = false;

    // The last comparison and the rows the file list shows of it.
    Comparison &comparison() { return m_comparison; }
    const Comparison &comparison() const { return m_comparison; }
    // The directions, cancel request, progress and statistics of synchronization runs.
    SyncRun &run() { return m_run; }
    const SyncRun &run() const { return m_run; }
    // Where the walks' failures and changes go: the person, the failure count, the day's log.
    Reporter &reporter() { return m_reporter; }
    const Reporter &reporter() const { return m_reporter; }

    // The local time for log lines; tests replace the clock.
    std::function<QDateTime()> clock;
    QDateTime now() const { return m_reporter.now(); }

    QString FormatMsg(int key, const QStringList &params = {}) const
    {
        return language.FormatMsg(QString::number(key), params);
    }

private:
    Interaction *m_ui;
    Comparison m_comparison;
    SyncRun m_run;
    Reporter m_reporter;
};

// Fills engine.ProgramFolder, ShareFolder, DataFolder, SettingsFile and settings, in that order.
void InitSettings(Engine &engine, const SettingsEnvironment &env);

} // namespace duomir

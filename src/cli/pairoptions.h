#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "core/dirpair.h"

namespace duomir {
class Engine;
}

namespace duomir::cli {

// What names the pairs of a command: a profile, or one ad-hoc pair given by options.
//   PROFILE                        a profile file
//   --source DIR --destination DIR an ad-hoc pair with the defaults of a new pair, changed by
//   --no-subdirs --system-dirs --hidden-dirs --system-files --hidden-files
//   --include-dirs M --exclude-dirs M --include-files M --exclude-files M
//   --time-lag HH:MM:SS            the lag for this run (default: the setting)
struct PairOptions
{
    QString profile;
    std::optional<QString> source;
    std::optional<QString> destination;
    QStringList switches; // the switch options in the order given
    std::optional<QString> includeDirs, excludeDirs, includeFiles, excludeFiles;
    std::optional<double> timeLag; // days
    bool allowNested = false;      // --allow-nested: a root inside the other is run anyway
    QStringList rest;              // options this parser does not know, in order, with values

    bool adHoc() const { return source.has_value() || destination.has_value(); }
};

// Takes the pair options out of `args`; other options go to `rest`, those named in
// `valueOptions` together with their value. Returns an error text, empty when fine.
QString parsePairOptions(const QStringList &args, const QStringList &valueOptions,
                         PairOptions &out);

// Fills engine.pairs and the time lag: the ad-hoc pair (defaults from engine.settings), or
// nothing for a profile (the caller loads it). Returns an error text, empty when fine.
QString applyPairOptions(const PairOptions &options, Engine &engine);

// A pair whose one root lies inside the other (with subdirectories) or equals it would compare a
// tree with itself, and a sync would nest one level deeper on every run. Unless --allow-nested
// was given, says so for the first such pair (the pair dialog's text) and returns the usage exit
// status; 0 when every pair is fine.
int refuseNestedPairs(const Engine &engine, const PairOptions &options, const char *command);

// Names every folder the comparison could not list (its contents unseen: nothing below it is
// deleted or replaced) on standard error, once each; returns how many there were.
int warnUnlistedFolders(const Engine &engine, const char *command);

} // namespace duomir::cli

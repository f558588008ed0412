#include "core/versioning.h"

#include <QDir>
#include <QRegularExpression>
#include <sys/stat.h>

#include "base/nativename.h"
#include "core/engine.h"
#include "core/errorlog.h"
#include "core/syncpaths.h"
#include "core/walkplaces.h"

namespace duomir {

namespace {

const QString RunFolderFormat = QStringLiteral("yyyy-MM-dd HHmmss");

// "Duomir Versions", "backup//old/": the relative folder as a clean list of names; empty when a
// name would lead out of the root.
QString cleanRelative(const QString &folder)
{
    QStringList names;
    for (const QString &name : folder.split(u'/', Qt::SkipEmptyParts)) {
        if (name == u"." || name == u"..")
            return {};
        names << name;
    }
    return names.join(u'/');
}

QString homeTrash()
{
    QString data = qEnvironmentVariable("XDG_DATA_HOME");
    if (!data.startsWith(u'/'))
        data = QDir::homePath() + QStringLiteral("/.local/share");
    // A fresh account may not have it yet; without it the home volume's trash would be sought
    // at the top of the volume.
    QDir().mkpath(data);
    return data + QStringLiteral("/Trash");
}

} // namespace

QString keptWhere(const Engine &engine)
{
    switch (engine.settings.Versioning) {
    case Settings::ToTrash:
        return engine.FormatMsg(840);
    case Settings::ToVersionsFolder:
        return engine.FormatMsg(841, {engine.settings.VersionsFolder});
    default:
        return engine.FormatMsg(842);
    }
}

Keeping keepingFor(const Engine &engine)
{
    Keeping k;
    switch (engine.settings.Versioning) {
    case Settings::ToTrash:
        k.mode = Keeping::Mode::Trash;
        k.homeTrash = homeTrash();
        break;
    case Settings::ToVersionsFolder: {
        k.mode = Keeping::Mode::Folder;
        const QString &folder = engine.settings.VersionsFolder;
        k.folder = folder.startsWith(u'/') ? QDir::cleanPath(folder) : cleanRelative(folder);
        // A name that would lead out of the root keeps nothing: nothing is deleted either.
        if (k.folder.isEmpty())
            k.folder = QStringLiteral("..");
        k.runFolder = engine.now().toString(RunFolderFormat);
        break;
    }
    default:
        break;
    }
    return k;
}

QString versionsFolderBelow(const Engine &engine, const QString &root)
{
    if (engine.settings.Versioning != Settings::ToVersionsFolder)
        return {};
    const QString &folder = engine.settings.VersionsFolder;
    if (!folder.startsWith(u'/'))
        return cleanRelative(folder);
    const QString clean = QDir::cleanPath(folder);
    const QString inside = withoutTrailingSeparator(root) + u'/';
    return clean.startsWith(inside) ? clean.mid(inside.size()) : QString();
}

namespace {

// Removes the run folders in `folder` that are older than `oldest`, each named in the log.
void expireRunFolders(Engine &engine, const TreePath &folder, const QDateTime &oldest)
{
    static const QRegularExpression runName(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d{6}$"));
    QStringList names;
    if (!engine.run().fileOps().listFolders(folder, names).ok())
        return;
    for (const QString &name : std::as_const(names)) {
        const QDateTime made = QDateTime::fromString(name, RunFolderFormat);
        if (!runName.match(name).hasMatch() || !made.isValid() || made >= oldest)
            continue;
        TreePath old = folder;
        old.relative = old.relative.isEmpty() ? name : old.relative + u'/' + name;
        if (engine.run().fileOps().removeTree(old).ok())
            engine.reporter().writeLine(
                {QStringLiteral("remove-old-versions"), QString(), QString(), old.full()});
    }
    engine.run().fileOps().walkEnded();
}

} // namespace

void BeginKeeping(Engine &engine, int start)
{
    const Keeping keeping = keepingFor(engine);
    engine.run().fileOps().setKeeping(keeping);
    const int days = engine.settings.KeepVersionsDays;
    if (keeping.mode != Keeping::Mode::Folder || days <= 0)
        return;
    const QDateTime oldest = engine.now().addDays(-days);
    // One folder named by the person keeps the files of every pair.
    if (keeping.folder.startsWith(u'/')) {
        expireRunFolders(engine, TreePath(keeping.folder, QString()), oldest);
        return;
    }
    const CompareArray &rows = engine.comparison().rows();
    const int first = start > 0 ? pairRootRow(rows, start) : 1;
    for (int root = first; root < int(rows.size()); ++root) {
        if (!isPairRootRow(rows[size_t(root)]))
            continue;
        if (start > 0 && root != first)
            break;
        PairPlaces places;
        places.enter(engine.comparison(), root);
        for (Side side : Sides) {
            TreePath folder = places.place(side, pairRoot(rows[size_t(root)], side));
            folder.relative = keeping.folder;
            if (placeKnown(folder))
                expireRunFolders(engine, folder, oldest);
        }
    }
}

} // namespace duomir

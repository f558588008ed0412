// Renders every shell dialog to a PNG for review: screenshots <share folder> <language> <out
// folder>.
#include <QApplication>
#include <QDir>
#include <QTimer>

#include "common/fakeinteraction.h"
#include "core/engine.h"
#include "ui/dlgabout.h"
#include "ui/dlghint.h"
#include "ui/dlglanguage.h"
#include "ui/dlgmakelink.h"
#include "ui/dlgoptions.h"

using namespace duomir;

namespace {

void shoot(QDialog &dlg, const QString &file)
{
    dlg.show();
    dlg.adjustSize();
    QApplication::processEvents();
    dlg.grab().save(file);
    dlg.hide();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList args = QApplication::arguments();
    if (args.size() < 4)
        return 2;
    test::FakeInteraction ui;
    Engine engine(ui);
    engine.ProgramFolder = args[1];
    engine.ShareFolder = args[1];
    engine.settings.Language = args[2];
    engine.language =
        Language::load(QDir(args[1]).filePath(args[2] + QStringLiteral(".lang")), &ui);
    engine.settings.SubDirs = true;
    engine.settings.TimeLag = 2.0 / 86400;
    engine.settings.ExcludeDirs = QStringLiteral("Temp;Recycled");
    engine.settings.ExcludeFiles = QStringLiteral("*.tmp;*.bak");
    engine.settings.Versioning = Settings::ToTrash; // as a fresh installation starts
    engine.ProfilePath = QStringLiteral("/home/user/Profiles/photos.dyp");
    const QDir out(args[3]);
    const QString suffix = u'-' + args[2] + QStringLiteral(".png");

    dlgOptions options(engine);
    shoot(options, out.filePath(QStringLiteral("dlgOptions") + suffix));
    dlgLanguage language(engine);
    shoot(language, out.filePath(QStringLiteral("dlgLanguage") + suffix));
    dlgMakeLink link(engine);
    shoot(link, out.filePath(QStringLiteral("dlgMakeLink") + suffix));
    dlgHint hint(engine);
    shoot(hint, out.filePath(QStringLiteral("dlgHint") + suffix));
    dlgAbout about(engine);
    shoot(about, out.filePath(QStringLiteral("dlgAbout") + suffix));
    return 0;
}

// Renders the main window after a compare of a real tree, the pair dialog and the progress
// dialog into PNG files, for a look at the layout in each language:
//   duomir_screenshots <output folder> [language name]
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

#include "common/temptree.h"
#include "core/engine.h"
#include "core/synccommands.h"
#include "ui/dlgdirs.h"
#include "ui/dlgprogress.h"
#include "ui/frmmain.h"
#include "ui/guiinteraction.h"

using namespace duomir;

namespace {

void buildTree(test::TempTree &tree)
{
    const qint64 older = 1700000000;
    const qint64 newer = older + 86400;
    for (const char *name :
         {"Projects/report.odt", "Projects/budget 2024.ods", "Photos/img_0001.jpg",
          "Photos/img_0002.jpg", "Photos/Holidays/beach.jpg", "notes.txt"})
        tree.file(QStringLiteral("src/") + QString::fromUtf8(name), QByteArray(2048, 'a'), older);
    tree.file(QStringLiteral("dst/Projects/report.odt"), QByteArray(1900, 'b'), older - 3600);
    tree.file(QStringLiteral("dst/Projects/budget 2024.ods"), QByteArray(2048, 'a'), older);
    tree.file(QStringLiteral("dst/Photos/img_0001.jpg"), QByteArray(2048, 'a'), older);
    tree.file(QStringLiteral("dst/notes.txt"), QByteArray(4096, 'c'), newer);
    tree.file(QStringLiteral("dst/Archive/2019.zip"), QByteArray(50000, 'z'), older);
    tree.file(QStringLiteral("other/a.txt"), QByteArray(10, 'x'), older);
    tree.dir(QStringLiteral("backup/a rather long destination path/that wraps inside its "
                            "column/other"));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    const QString languageName = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString();
    QDir().mkpath(out);

    test::TempTree tree;
    buildTree(tree);

    GuiInteraction gui;
    Engine engine(gui);
    if (!languageName.isEmpty()) {
        const QString share = qEnvironmentVariable("DUOMIR_SOURCE_DIR") + QStringLiteral("/share/");
        engine.language = Language::load(share + languageName + QStringLiteral(".lang"), &gui);
    }
    DirPair pair = DirPair::newFromSettings(engine.settings);
    pair.Source = tree.path(QStringLiteral("src"));
    pair.Destination = tree.path(QStringLiteral("dst"));
    pair.SubDirs = true;
    engine.pairs.append(pair);
    pair.Source = tree.path(QStringLiteral("other"));
    pair.Destination = tree.path(QStringLiteral("backup/a rather long destination path/that wraps "
                                                "inside its column/other"));
    engine.pairs.append(pair);

    frmMain window(engine);
    window.localize();
    window.resize(1100, 720);
    window.show();
    window.setCurrentSlot(1);
    window.runCompare();
    QApplication::processEvents();
    const QString suffix = languageName.isEmpty() ? QString() : u'-' + languageName.toLower();
    window.grab().save(out + QStringLiteral("/main") + suffix + QStringLiteral(".png"));

    // One direction with Mirror: the arrow column shows what goes, and the confirmation counts it.
    engine.settings.Versioning = Settings::ToTrash;
    window.toolbarButton(3, 1)->trigger();
    window.toolbarButton(3, 4)->trigger();
    QApplication::processEvents();
    window.grab().save(out + QStringLiteral("/main-mirror") + suffix + QStringLiteral(".png"));
    QTimer::singleShot(300, [&] {
        if (QWidget *box = QApplication::activeModalWidget()) {
            box->grab().save(out + QStringLiteral("/confirm-synchronize") + suffix +
                             QStringLiteral(".png"));
            box->close();
        }
    });
    ConfirmSynchronize(engine, false);

    // Qt's own file dialog, in the language's locale, in the folder of the compared trees.
    engine.DataFolder = tree.root() + u'/';
    QTimer::singleShot(500, [&] {
        if (QWidget *dialog = QApplication::activeModalWidget()) {
            dialog->grab().save(out + QStringLiteral("/save-profile") + suffix +
                                QStringLiteral(".png"));
            dialog->close();
        }
    });
    window.chooseProfileFile(true);

    for (const char *name : {"mnuPop1", "mnuPop3"}) {
        auto *menu = window.findChild<QMenu *>(QString::fromLatin1(name));
        menu->popup(window.mapToGlobal(QPoint(200, 200)));
        QApplication::processEvents();
        menu->grab().save(out + u'/' + QString::fromLatin1(name) + suffix + QStringLiteral(".png"));
        menu->hide();
    }

    dlgDirs dirs(engine, &window);
    dirs.Init(1);
    dirs.show();
    QApplication::processEvents();
    dirs.grab().save(out + QStringLiteral("/pair-dialog") + suffix + QStringLiteral(".png"));
    dirs.hide();

    auto *progress = window.findChild<dlgProgress *>();
    engine.run().progress().Init(10'000'000);
    engine.run().progress().ShowFile(tree.path(QStringLiteral("src/Photos/")),
                                     tree.path(QStringLiteral("dst/Photos/")),
                                     QStringLiteral("img_0002.jpg"));
    engine.run().progress().FileDone(3'000'000);
    engine.run().progress().Update(4'000'000, 1'200'000);
    QApplication::processEvents();
    progress->grab().save(out + QStringLiteral("/progress-dialog") + suffix +
                          QStringLiteral(".png"));
    return 0;
}

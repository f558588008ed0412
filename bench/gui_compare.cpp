// Times the main window on one pair: Compare (scan, merge, list), a filter click, a sort by name
// and a scroll to the end, offscreen, with the real file list model.
//   duomir_gui_bench SOURCE DESTINATION
#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QTableView>
#include <QTextStream>
#include <cstdio>

#include "core/engine.h"
#include "core/interaction.h"
#include "ui/filelistmodel.h"
#include "ui/frmmain.h"

namespace {

// Answers every question with its default and never blocks.
class SilentInteraction : public duomir::Interaction
{
public:
    Answer message(Icon, Buttons buttons, const QString &text, const QString &) override
    {
        QTextStream(stderr) << text << '\n';
        return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }
};

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 3) {
        std::fputs("usage: duomir_gui_bench SOURCE DESTINATION\n", stderr);
        return 2;
    }
    SilentInteraction ui;
    duomir::Engine engine(ui);
    duomir::DirPair pair = duomir::DirPair::newFromSettings(engine.settings);
    pair.SubDirs = true;
    pair.Source = QString::fromLocal8Bit(argv[1]);
    pair.Destination = QString::fromLocal8Bit(argv[2]);
    engine.pairs.append(pair);

    duomir::frmMain window(engine);
    window.resize(1100, 720);
    window.show();
    QApplication::processEvents();

    QTextStream out(stdout);
    QElapsedTimer timer;
    const auto lap = [&](const char *what) {
        QApplication::processEvents();
        out << what << ": " << timer.elapsed() << " ms\n";
        out.flush();
    };

    timer.start();
    window.runCompare();
    lap("compare (scan, merge, list)");
    out << "rows: " << window.fileModel()->rowCount() << '\n';

    timer.restart();
    window.toolbarButton(1, 1)->trigger(); // all modified files
    lap("filter click (modified)");
    timer.restart();
    window.toolbarButton(1, 0)->trigger(); // all files again
    lap("filter click (all)");

    timer.restart();
    window.fileModel()->sort(duomir::FileListModel::NameColumn, Qt::AscendingOrder);
    lap("sort by name");

    timer.restart();
    QScrollBar *bar = window.fileList()->verticalScrollBar();
    for (int step = 0; step <= 20; ++step) {
        bar->setValue(bar->maximum() * step / 20);
        window.fileList()->viewport()->repaint();
    }
    lap("scroll through the list (21 repaints)");
    return 0;
}

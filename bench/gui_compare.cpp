// Times the main window on one pair: Compare (scan, merge, list), a filter click, a sort by name
// and a scroll to the end, offscreen, with the real file list model; then, given a second pair of
// identical trees, its Compare and a Synchronize that finds nothing to do. Each step reports the
// memory the process holds after it and the most it ever held.
//   duomir_gui_bench SOURCE DESTINATION [SAME_SOURCE SAME_DESTINATION]
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QScrollBar>
#include <QTableView>
#include <QTextStream>
#include <cstdio>

#include "base/interaction.h"
#include "core/engine.h"
#include "ui/filelistmodel.h"
#include "ui/frmmain.h"

namespace {

// Answers every question with yes (so a Synchronize goes ahead) and never blocks.
class SilentInteraction : public duomir::Interaction
{
public:
    Answer message(Icon, Buttons buttons, const QString &text, const QString &) override
    {
        QTextStream(stderr) << text << '\n';
        return buttons == Buttons::Ok ? Answer::Ok : Answer::Yes;
    }
};

// "VmRSS" or "VmHWM" of this process, in KiB.
long statusKiB(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(6).trimmed().split(' ').value(0).toLong();
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc != 3 && argc != 5) {
        std::fputs("usage: duomir_gui_bench SOURCE DESTINATION [SAME_SOURCE SAME_DESTINATION]\n",
                   stderr);
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
    std::int64_t entries = 0;
    const auto lap = [&](const char *what) {
        QApplication::processEvents();
        const long rss = statusKiB("VmRSS");
        out << what << ": " << timer.elapsed() << " ms, holding " << rss / 1024 << " MiB (peak "
            << statusKiB("VmHWM") / 1024 << " MiB)";
        if (entries > 0)
            out << ", " << rss * 1024 / entries << " bytes per entry";
        out << '\n';
        out.flush();
    };
    timer.start();
    lap("window shown");

    timer.start();
    window.runCompare();
    entries = engine.Listed[0] + engine.Listed[1];
    lap("compare (scan, merge, list)");
    out << "entries: " << entries << ", rows: " << window.fileModel()->rowCount() << '\n';

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
    if (argc == 5) {
        engine.pairs[1].Source = QString::fromLocal8Bit(argv[3]);
        engine.pairs[1].Destination = QString::fromLocal8Bit(argv[4]);
        timer.restart();
        window.runCompare();
        entries = engine.Listed[0] + engine.Listed[1];
        lap("compare of identical trees");
        timer.restart();
        window.runSynchronize();
        lap("synchronize, nothing to do (and compare again)");
    }
    return 0;
}

#include <QApplication>

#include "core/engine.h"
#include "ui/frmmain.h"
#include "ui/guiinteraction.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Duomir"));
    QApplication::setApplicationVersion(QStringLiteral(DUOMIR_VERSION));

    duomir::GuiInteraction gui;
    duomir::Engine engine(gui);
    duomir::frmMain window(engine);
    window.localize();
    window.show();
    return QApplication::exec();
}

#include <QApplication>

#include "ui/frmmain.h"

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Duomir"));
    QApplication::setApplicationVersion(QStringLiteral(DUOMIR_VERSION));

    duomir::frmMain window;
    window.show();
    return QApplication::exec();
}

#include "ui/frmmain.h"

namespace duomir {

frmMain::frmMain(QWidget *parent) : QMainWindow(parent)
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Duomir"));
    resize(900, 640);
}

} // namespace duomir

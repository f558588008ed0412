#include "ui/mousepointer.h"

#include <QCursor>
#include <QGuiApplication>

namespace duomir {

MousePointer::MousePointer()
{
    QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
}

MousePointer::~MousePointer()
{
    QGuiApplication::restoreOverrideCursor();
}

} // namespace duomir

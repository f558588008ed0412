#include "ui/mousepointer.h"

#include <QCursor>
#include <QGuiApplication>

namespace duomir {

void MousePointer::hold()
{
    if (!m_held)
        QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    m_held = true;
}

void MousePointer::release()
{
    if (m_held)
        QGuiApplication::restoreOverrideCursor();
    m_held = false;
}

} // namespace duomir

#include "ui/modal.h"

#include <QApplication>
#include <QDialog>

namespace duomir {

namespace {

ModalRunner &runner()
{
    static ModalRunner r;
    return r;
}

std::function<void()> &beeper()
{
    static std::function<void()> b;
    return b;
}

} // namespace

int execModal(QDialog &dialog)
{
    if (runner())
        return runner()(dialog);
    return dialog.exec();
}

ModalRunner setModalRunner(ModalRunner r)
{
    return std::exchange(runner(), std::move(r));
}

void beep()
{
    if (beeper())
        beeper()();
    else
        QApplication::beep();
}

std::function<void()> setBeeper(std::function<void()> b)
{
    return std::exchange(beeper(), std::move(b));
}

} // namespace duomir

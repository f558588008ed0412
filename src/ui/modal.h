#pragma once

#include <functional>

class QDialog;

namespace duomir {

// Every modal dialog of the program is run through here, so that tests can script a dialog (choose,
// accept, record the order) instead of racing exec() with timers.
using ModalRunner = std::function<int(QDialog &)>;

int execModal(QDialog &dialog);

// Replaces the runner; an empty function restores exec(). Returns the previous runner.
ModalRunner setModalRunner(ModalRunner runner);

// The beep of a refused action or of the first start.
void beep();
std::function<void()> setBeeper(std::function<void()> beeper);

} // namespace duomir

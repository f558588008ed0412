#pragma once

#include <QMainWindow>

namespace duomir {

class frmMain : public QMainWindow
{
    Q_OBJECT

public:
    explicit frmMain(QWidget *parent = nullptr);
};

} // namespace duomir

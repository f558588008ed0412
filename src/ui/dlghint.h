#pragma once

#include <QDialog>

class QPlainTextEdit;

namespace duomir {

class Engine;

// The introduction shown at start-up until the user ticks it away.
class dlgHint : public QDialog
{
    Q_OBJECT

public:
    explicit dlgHint(Engine &engine, QWidget *parent = nullptr);

    // The parts "hint1" .. "hint10" of the language, joined as they stand.
    static QString hintText(const Engine &engine);

private:
    Engine &m_engine;
};

} // namespace duomir

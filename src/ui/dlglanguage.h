#pragma once

#include <QDialog>

class QComboBox;

namespace duomir {

class Engine;

// Lists the language files and stores the choice. It cannot be left without a language chosen.
class dlgLanguage : public QDialog
{
    Q_OBJECT

public:
    explicit dlgLanguage(Engine &engine, QWidget *parent = nullptr);

    void done(int result) override;

Q_SIGNALS:
    // The language was set and loaded; open windows localize themselves again.
    void languageChanged();

private:
    void choose();

    Engine &m_engine;
    QComboBox *m_cboLanguage = nullptr;
};

} // namespace duomir

#pragma once

#include <QDialog>
#include <QUrl>

class QLabel;

namespace duomir {

class Engine;

// The program's version and two links from the language file: its web page and a contact address.
class dlgAbout : public QDialog
{
    Q_OBJECT

public:
    explicit dlgAbout(Engine &engine, QWidget *parent = nullptr);

    QUrl homePageUrl() const;
    // A new mail to the contact address with the program and its version as subject.
    QUrl mailUrl() const;

private:
    Engine &m_engine;
    QLabel *m_lblVersion = nullptr;
};

} // namespace duomir

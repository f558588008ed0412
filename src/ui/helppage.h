#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace duomir {

class Engine;

// Each window names its help page in this dynamic property ("Main.htm", "Options.htm", ...).
inline constexpr char HelpPageProperty[] = "helpPage";

void setHelpPage(QWidget *window, const QString &page);

// The help page in the folder of the current language: <program folder>/Help/<language>/<page>.
QString helpPagePath(const Engine &engine, const QString &page);

// Closes any open popup menu or drop-down, then opens the help page of `window` with the desktop's
// default handler. A missing page is left to that handler.
void openHelpFor(const Engine &engine, QWidget *window);

// F1 anywhere in the program: swallowed and turned into the help page of the window it was meant
// for (the window under an open popup, when there is one). Installed once on the application.
class HelpKey : public QObject
{
public:
    explicit HelpKey(const Engine &engine, QObject *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    const Engine &m_engine;
};

} // namespace duomir

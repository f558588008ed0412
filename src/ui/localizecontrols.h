#pragma once

#include <QAnyStringView>
#include <QString>

class QObject;
class QWidget;

namespace duomir {

class Language;

// Every localizable widget and QAction carries its number in the language file as the dynamic
// property "helpId" (an int; 0 or absent = not localized). Numbers by window: frmMain and its menus
// 1000-1999, dlgOptions 10000-10799, dlgDirs 20000-20799, dlgLanguage 30000-30799, dlgProgress
// 40000-40799, dlgMakeLink 50000-50799, dlgHint 60000-60799, dlgAbout 70000-70799. Message keys of
// a window start at its base + 800 (10800, 20800, ...).
inline constexpr char HelpIdProperty[] = "helpId";

void setHelpId(QObject *object, int id);
int helpId(const QObject *object);

// Gives a widget or action the name tests and the language file's tools find it by, and its number.
template <class T> T *named(T *object, QAnyStringView name, int id)
{
    object->setObjectName(name.toString());
    setHelpId(object, id);
    return object;
}

// Applies the language's texts and tool tips to `form` (its window title included) and to every
// widget and action below it. Does nothing when no language file is loaded.
void LocalizeControls(QWidget *form, const Language &language);

// The language's own locale (its key "locale", e.g. "de_DE") becomes the program's: dates and
// numbers follow it, and Qt's own dialogs (file dialogs, standard buttons) speak it where Qt's
// translations are installed.
void ApplyLanguageLocale(const Language &language);

} // namespace duomir

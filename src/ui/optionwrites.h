#pragma once

#include <QString>
#include <optional>

namespace duomir {

class Engine;

// The settings keys the dialogs own, each written the moment the user changes it.
void WriteOptions(const Engine &engine); // the options dialog's ten keys, in their fixed order
void WriteLanguage(const Engine &engine);
void WriteDontShowHint(const Engine &engine);

// The time lag as "hh:mm:ss" text; nullopt when the text is no time of day.
std::optional<double> timeLagFromText(const QString &text);
QString timeLagText(double days);

} // namespace duomir

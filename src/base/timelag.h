#pragma once

#include <QString>
#include <optional>

namespace duomir {

// The "TimeLag" setting is a time of day in the file ("00:00:02") and a day fraction in memory
// (2 / 86400). Reading accepts "H:MM:SS", "HH:MM:SS", "H:MM" and "0"; any other text means no
// lag (0). Hours may exceed 23, so that a lag of a day or more written here reads back unchanged.
double timeLagFromText(const QString &text);
// The same reading, with no value for a text that is not such a time.
std::optional<double> parseTimeLag(const QString &text);

// Whole seconds as "HH:MM:SS", two digits each (more for the hours of a lag of 100 hours and
// more); a negative or non-finite value is written as "00:00:00".
QString timeLagToText(double days);

} // namespace duomir

#pragma once

#include <QByteArray>
#include <array>
#include <cstdio>
#include <utility>

#include "core/fileentry.h"

namespace duomir::cli {

// Writes compared rows to a stream as TSV or JSON, through one buffer and without building a
// QString per field. Names leave as the bytes the file system holds: TSV writes them raw except
// that "\" , tab, CR and LF are escaped as \\, \t, \r and \n (so every row stays one line and the
// bytes can be recovered); JSON writes valid UTF-8 and a byte that is not UTF-8 as \udcXX (the
// escape Python's surrogateescape reads back).
class RowWriter
{
public:
    enum class Format { Tsv, Json };

    RowWriter(std::FILE *out, Format format);
    ~RowWriter();
    RowWriter(const RowWriter &) = delete;
    RowWriter &operator=(const RowWriter &) = delete;

    void row(const CompareEntry &entry);
    // Closes the JSON array and flushes.
    void finish();

private:
    void jsonField(QStringView head, QAnyStringView tail);
    void path(const CompareEntry &entry, Side side);
    void flushIfFull();

    std::FILE *m_out;
    Format m_format;
    QByteArray m_buffer;
    // Per side: the last path written and its TSV bytes. Paths are known by their address, so a
    // writer serves the rows of one comparison.
    std::array<std::pair<const QString *, QByteArray>, 2> m_lastPath{};
    bool m_first = true;
    bool m_finished = false;
};

// A Date as "YYYY-MM-DD HH:MM:SS" (it is local time already).
void appendDate(QByteArray &out, Date value);

} // namespace duomir::cli

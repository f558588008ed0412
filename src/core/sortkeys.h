#pragma once

#include <QString>

#include "base/casefold.h"
#include "core/fileentry.h"

namespace duomir {

// The marks of a sort key (described below), and a unit of a name and of Path as it stands in
// one. A name may hold the marks' own units (Linux allows every byte but "/" and NUL); they stand
// in a key as U+DC01 and U+DC02, lone surrogates that no decoded name holds (nativename.h uses
// U+DC80..U+DCFF only), so that two different paths never share a key.
inline constexpr char16_t KeyDirectoryMark = 0x0001;
inline constexpr char16_t KeyFileMark = 0x0002;
inline char16_t keyNameUnit(char16_t c)
{
    return c <= KeyFileMark ? char16_t(0xDC00 + c) : upperUnit(c);
}
inline char16_t keyPathUnit(char16_t c)
{
    return c == u'/' ? KeyDirectoryMark : keyNameUnit(c);
}

// The order of two names as the keys of two files (or two folders) of one directory order them:
// unit by unit upper-cased, a name that begins another first. -1, 0 or 1.
int compareNameKeys(NameUnits a, NameUnits b);
// The exact order of two names: unit by unit, case counting.
int compareNamesExactly(NameUnits a, NameUnits b);

// The sort key of an entry, after the path text of its side's pair with length L:
//   take Path from position L+1 on (1-based), separators replaced by U+0001, then
//   a directory: that text upper-cased, then U+0001;
//   a file:      that text upper-cased, then U+0002, then Name upper-cased.
// Keys are compared by 16-bit code units, so a directory sorts before everything in it, files
// before subdirectories, and the root (key U+0001) first. A pair text stored without its final
// separator shifts every key but the root's by one U+0001, so its entries pair only with a side
// stored alike.
//
// Keys are not kept with the entries: SortKeys reads them on the fly from Path and Name, so a
// scan of a million entries carries no second copy of every name (SortEntries builds a table of
// them for the length of one sort only). Entries of one directory share their
// Path, which the comparison recognises and skips.
class SortKeys
{
public:
    SortKeys() = default;
    // `start` is one more than the length of the pair's directory text as stored.
    explicit SortKeys(qsizetype start) : m_offset(start > 0 ? start - 1 : 0) {}

    // The whole key as text (for tests and diagnostics).
    QString text(const FileEntry &entry) const;

    // -1, 0 or 1 as the key of `a` (on this side) sorts before, with or after the key of `b` (on
    // `other`'s side).
    int compare(const FileEntry &a, const SortKeys &other, const FileEntry &b) const;

    // Keys first; entries whose keys are equal (case twins on one side, which Linux allows) are
    // ordered by their exact relative path and name, code unit by code unit.
    bool less(const FileEntry &a, const FileEntry &b) const;

    // The exact (case-sensitive) order of two entries whose keys are equal.
    int compareExact(const FileEntry &a, const SortKeys &other, const FileEntry &b) const;

    qsizetype offset() const { return m_offset; }

private:
    qsizetype m_offset = 0;
};

// The `start` of a side's keys for its pair text. The file system's root "/" counts as the empty
// text that stood for a drive's root ("C:"), so its entries pair with a side stored without its
// final separator, as every other root is.
inline qsizetype keyStart(const QString &pairText)
{
    return (pairText == u"/" ? 0 : pairText.size()) + 1;
}

// Prepares the keys of one side. `start` as for SortKeys.
inline SortKeys MakeSortKeys(qsizetype start)
{
    return SortKeys(start);
}

// Sorts entries[low..high] by key with the case-twin tie-break (std::sort, a large run in two
// halves on two threads; keys and tie-break together are unique within one side, so the order is
// total and repeatable).
void SortEntries(FileArray &entries, qsizetype low, qsizetype high, const SortKeys &keys);

} // namespace duomir

#include "core/scanner.h"

#include <QDateTime>
#include <algorithm>
#include <iterator>
#include <vector>

#include "core/dirpair.h"
#include "core/interaction.h"
#include "core/masks.h"
#include "core/platform/dirlister.h"
#include "core/platform/nativename.h"

namespace duomir {

namespace {

constexpr QChar Separator = u'/';
constexpr std::size_t ChunkSize = 1 << 14;

// Skip an item that is hidden while hidden items are not wanted, or system while system items
// are not wanted.
bool passesHiddenSystem(std::uint32_t attributes, bool takeHidden, bool takeSystem)
{
    if ((attributes & Attr::Hidden) && !takeHidden)
        return false;
    if ((attributes & Attr::System) && !takeSystem)
        return false;
    return true;
}

class Scanner
{
public:
    Scanner(const MaskSet &directoryMasks, const MaskSet &fileMasks, const DirPair &flags,
            FileArray &entries, Interaction *ui, int utcOffset)
        : m_directoryMasks(directoryMasks), m_fileMasks(fileMasks), m_flags(flags),
          m_entries(entries), m_ui(ui), m_utcOffset(utcOffset)
    {}

    bool scanRoot(const QString &directory);

private:
    bool scan(const QString &directory, const QByteArray &nativeDirectory, bool root);
    FileEntry &append()
    {
        if (m_chunks.empty() || m_chunks.back().size() == ChunkSize) {
            m_chunks.emplace_back();
            m_chunks.back().reserve(ChunkSize);
        }
        return m_chunks.back().emplace_back();
    }
    void collect();
    void yield()
    {
        if (m_ui)
            m_ui->yieldEvents();
    }

    const MaskSet &m_directoryMasks;
    const MaskSet &m_fileMasks;
    const DirPair &m_flags;
    FileArray &m_entries;
    // Entries gather in fixed blocks and move into `m_entries` once, at its final size: a
    // growing array would hold its old and new buffer at once on every growth.
    std::vector<FileArray> m_chunks;
    Interaction *m_ui;
    int m_utcOffset;
    bool m_rootListed = false;
};

bool Scanner::scanRoot(const QString &directory)
{
    m_entries.clear();
    m_entries.emplace_back();
    FileEntry &root = m_entries.front();
    root.Path = directory.endsWith(Separator) ? directory.chopped(1) : directory;
    root.Attributes = directory.isEmpty() ? Attr::Invalid : pathAttributes(toNative(directory));
    if (directory.isEmpty())
        return true; // never "/": an empty root text names no directory
    scan(directory, toNative(directory), true);
    collect();
    return !m_rootListed;
}

void Scanner::collect()
{
    std::size_t total = m_entries.size();
    for (const FileArray &chunk : m_chunks)
        total += chunk.size();
    m_entries.reserve(total);
    for (FileArray &chunk : m_chunks) {
        std::move(chunk.begin(), chunk.end(), std::back_inserter(m_entries));
        FileArray().swap(chunk);
    }
    m_chunks.clear();
}

bool Scanner::scan(const QString &directory, const QByteArray &nativeDirectory, bool root)
{
    std::vector<ListedItem> items;
    if (!listDirectory(nativeDirectory, root, items))
        return false;
    if (root)
        m_rootListed = true;

    for (ListedItem &item : items) {
        if (item.attributes & Attr::Directory) {
            if (passesHiddenSystem(item.attributes, m_flags.HiddenDirs, m_flags.SysDirs) &&
                !item.name.startsWith(u'.') && m_flags.SubDirs &&
                MatchesMasks(item.name, m_directoryMasks)) {
                FileEntry &e = append();
                e.Path = directory + item.name;
                e.Name = std::move(item.name);
                e.Attributes = item.attributes;
                const QString inner = e.Path + Separator;
                QByteArray nativeInner = nativeDirectory + item.native + '/';
                yield();
                // The directory stays in the list as an empty one, but marked: nothing is known of
                // its contents, so deletion must not take them for missing. A failed listing adds
                // no entries, so `e` still refers to this directory.
                if (!scan(inner, nativeInner, false))
                    e.Attributes |= Attr::Unlisted;
            }
        } else if (passesHiddenSystem(item.attributes, m_flags.HiddenFiles, m_flags.SysFiles) &&
                   MatchesMasks(item.name, m_fileMasks)) {
            FileEntry &e = append();
            e.Path = directory; // shared by every file of this directory
            e.Name = std::move(item.name);
            e.Attributes = item.attributes;
            e.Modified = FileTimeToDate(item.mtime, m_utcOffset);
            e.Size = static_cast<std::int32_t>(static_cast<std::uint32_t>(item.size));
            e.FullSize = item.size;
        }
        yield();
    }
    return true;
}

} // namespace

int currentUtcOffset()
{
    return QDateTime::currentDateTime().offsetFromUtc();
}

Date FileTimeToDate(std::int64_t seconds, int utcOffset)
{
    // 1970-01-01 is day 25569 of the count that starts on 1899-12-30.
    const std::int64_t local = seconds + utcOffset;
    return 25569.0 + static_cast<double>(local) / 86400.0;
}

bool ScanDirectory(const QString &directory, const MaskSet &directoryMasks,
                   const MaskSet &fileMasks, const DirPair &flags, FileArray &entries,
                   Interaction *ui)
{
    return ScanDirectory(directory, directoryMasks, fileMasks, flags, entries, ui,
                         currentUtcOffset());
}

bool ScanDirectory(const QString &directory, const MaskSet &directoryMasks,
                   const MaskSet &fileMasks, const DirPair &flags, FileArray &entries,
                   Interaction *ui, int utcOffset)
{
    Scanner scanner(directoryMasks, fileMasks, flags, entries, ui, utcOffset);
    return scanner.scanRoot(directory);
}

} // namespace duomir

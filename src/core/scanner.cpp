#include "core/scanner.h"

#include <QDateTime>
#include <QScopeGuard>
#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <mutex>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

#include "base/interaction.h"
#include "base/nativename.h"
#include "core/dirpair.h"
#include "core/masks.h"
#include "core/platform/anchor.h"
#include "core/platform/coarseclock.h"
#include "core/platform/dirlister.h"
#include "core/sortkeys.h"

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
            FileArray &entries, TextStore &texts, Interaction *ui, int utcOffset,
            ScanExtras *extras)
        : m_directoryMasks(directoryMasks), m_fileMasks(fileMasks), m_flags(flags),
          m_entries(entries), m_texts(texts), m_ui(ui), m_utcOffset(utcOffset), m_extras(extras)
    {}

    bool scanRoot(const QString &directory);

private:
    // `directory` ends in the separator and lives in the store: the files here share it.
    bool scan(const QString *directory, int fd);
    // Takes what the listing of `directory` (open as `fd`) holds, and walks into its folders.
    void walk(const QString *directory, int fd, const Listing &listing);
    void adoptTemporaries(const QString &directory, const std::vector<QByteArray> &names)
    {
        if (m_extras) {
            for (const QByteArray &name : names)
                m_extras->leftovers.push_back(directory + fromNative(name));
        }
    }
    FileEntry &append()
    {
        if (m_chunks.empty() || m_chunks.back().size() == ChunkSize) {
            m_chunks.emplace_back();
            m_chunks.back().reserve(ChunkSize);
        }
        return m_chunks.back().emplace_back();
    }
    void collect();
    // The versions folder and the trash folders of a volume (.Trash, .Trash-1000) hold what
    // runs put aside: comparing them would copy them to the other side.
    bool isKeptFolder(const QString &directory, QStringView name) const
    {
        if (name.startsWith(u".Trash")) {
            const QStringView rest = name.mid(6);
            bool number = rest.size() > 1 && rest[0] == u'-';
            for (qsizetype i = 1; number && i < rest.size(); ++i)
                number = rest[i].isDigit();
            if (rest.isEmpty() || number)
                return true;
        }
        return !m_skipFolder.isEmpty() && directory.size() + name.size() == m_skipFolder.size() &&
               m_skipFolder.startsWith(directory) && m_skipFolder.endsWith(name);
    }
    void yield()
    {
        if (m_ui)
            m_ui->yieldEvents();
    }

    const MaskSet &m_directoryMasks;
    const MaskSet &m_fileMasks;
    const DirPair &m_flags;
    FileArray &m_entries;
    TextStore &m_texts;
    // Entries gather in fixed blocks and move into `m_entries` once, at its final size: a
    // growing array would hold its old and new buffer at once on every growth.
    std::vector<FileArray> m_chunks;
    Interaction *m_ui;
    int m_utcOffset;
    ScanExtras *m_extras;
    std::vector<QByteArray> m_temporaries;
    std::vector<char16_t> m_name;          // the name being looked at, decoded
    std::unique_ptr<ListingAhead> m_ahead; // on a network file system
    QString m_skipFolder;                  // full path of a folder never listed
    bool m_rootListed = false;
};

// A scan keeps one descriptor open per level of depth; the soft limit (often 1,024) would cut a
// deep tree short where the hard one would not.
void raiseDescriptorLimit()
{
    static std::once_flag once;
    std::call_once(once, [] {
        struct rlimit limit;
        if (::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
            limit.rlim_cur = limit.rlim_max;
            ::setrlimit(RLIMIT_NOFILE, &limit);
        }
    });
}

bool Scanner::scanRoot(const QString &directory)
{
    raiseDescriptorLimit();
    m_entries.clear();
    m_entries.emplace_back();
    FileEntry &root = m_entries.front();
    root.setPath(m_texts.addPath(directory.endsWith(Separator) ? directory.chopped(1) : directory));
    // Never "/": an empty root text names no directory. A NUL would end the text the system
    // sees early, so such a root names a directory other than its own: it cannot be listed.
    // A relative root would be read against whatever folder the program was started in.
    const bool named = directory.startsWith(u'/') && !directory.contains(QChar(0));
    root.Attributes = named ? pathAttributes(toNative(directory)) : Attr::Invalid;
    if (!named)
        return true;
    // The root is the directory its text names, a link there included; below it every folder is
    // opened from its parent's descriptor without following a link, so no swapped-in link leads
    // the listing elsewhere and depth is no limit.
    if (m_extras && !m_extras->skipFolder.isEmpty())
        m_skipFolder = root.path() + Separator + m_extras->skipFolder;
    const Fd fd(::open(toNative(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const int threads = m_extras && m_extras->listingThreads >= 0 ? m_extras->listingThreads
                        : fd.valid()                              ? listingThreadsFor(fd.get())
                                                                  : 0;
    if (threads > 0)
        m_ahead = std::make_unique<ListingAhead>(threads);
    m_rootListed = fd.valid() && scan(m_texts.addPath(root.path() + Separator), fd.get());
    struct stat st;
    if (m_rootListed && m_extras && ::fstat(fd.get(), &st) == 0) {
        m_extras->rootDevice = st.st_dev;
        m_extras->rootInode = st.st_ino;
        m_extras->coarseTimes = keepsCoarseTimes(fd.get());
    }
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

bool Scanner::scan(const QString *directory, int fd)
{
    Listing listing;
    m_temporaries.clear();
    if (!listDirectory(fd, listing, m_extras ? &m_temporaries : nullptr))
        return false;
    adoptTemporaries(*directory, m_temporaries);
    walk(directory, fd, listing);
    return true;
}

void Scanner::walk(const QString *directory, int fd, const Listing &listing)
{
    if (m_extras && m_extras->listed)
        m_extras->listed->fetch_add(std::int64_t(listing.items.size()), std::memory_order_relaxed);
    // What is taken, in the order of the sort keys (sortkeys.h): the files, then each folder
    // followed by what it holds. A whole scan then comes out sorted, and the sort after it only
    // has to check that (case twins among folders are the exception it still sorts).
    struct Taken
    {
        const ListedItem *item;
        QAnyStringView name;
        NameUnits units;
    };
    std::vector<Taken> files;
    std::vector<Taken> folders;
    const auto take = [this](std::vector<Taken> &into, const ListedItem &item, QStringView name) {
        const QAnyStringView kept = m_texts.add(name);
        into.push_back({&item, kept, NameUnits::of(kept)});
    };
    for (const ListedItem &item : listing.items) {
        m_name.resize(item.nameLength);
        const QStringView name(
            m_name.data(),
            qsizetype(decodeNative(listing.name(item), item.nameLength, m_name.data())));
        if (item.attributes & Attr::Directory) {
            // A dot folder (.ssh, .config, .git) is a hidden one, taken with HiddenDirs.
            if (!isKeptFolder(*directory, name) &&
                passesHiddenSystem(item.attributes, m_flags.HiddenDirs, m_flags.SysDirs) &&
                m_flags.SubDirs && MatchesMasks(name, m_directoryMasks))
                take(folders, item, name);
        } else if (passesHiddenSystem(item.attributes, m_flags.HiddenFiles, m_flags.SysFiles) &&
                   MatchesMasks(name, m_fileMasks)) {
            take(files, item, name);
        }
        yield();
    }
    const auto byKey = [](const Taken &a, const Taken &b) {
        const int c = compareNameKeys(a.units, b.units);
        return c != 0 ? c < 0 : compareNamesExactly(a.units, b.units) < 0;
    };
    std::sort(files.begin(), files.end(), byKey);
    std::sort(folders.begin(), folders.end(), byKey);

    for (const Taken &file : files) {
        FileEntry &e = append();
        e.setPath(directory); // shared by every file of this directory
        e.setName(file.name);
        e.Attributes = file.item->attributes;
        e.Modified = FileTimeToDate(file.item->mtime, m_utcOffset);
        e.ModifiedNs = file.item->mtimeNs;
        e.FullSize = file.item->size;
    }
    // Folders listed ahead are asked for a few at a time, so that the listings waiting to be
    // walked stay few however wide the tree. Whatever was asked is taken before `fd` closes.
    const std::size_t askAhead = 32;
    std::vector<std::shared_ptr<ListingAhead::Request>> asked(m_ahead ? folders.size() : 0);
    std::size_t nextAsk = 0;
    const auto takeTheRest = qScopeGuard([&] {
        for (const auto &request : asked) {
            if (request)
                m_ahead->take(*request);
        }
    });
    for (std::size_t k = 0; k < folders.size(); ++k) {
        const Taken &folder = folders[k];
        QString path = *directory;
        path.append(folder.name.toString());
        const QString *inner = m_texts.addPath(path + Separator);
        FileEntry &e = append();
        e.setPath(m_texts.addPath(std::move(path)));
        e.setName(folder.name);
        e.Attributes = folder.item->attributes;
        yield();
        // The directory stays in the list as an empty one, but marked: nothing is known of its
        // contents, so deletion must not take them for missing. A failed listing adds no
        // entries, so `e` still refers to this directory.
        bool listed = false;
        if (m_ahead) {
            for (; nextAsk < folders.size() && nextAsk < k + askAhead; ++nextAsk)
                asked[nextAsk] = m_ahead->ask(fd, listing.name(*folders[nextAsk].item));
            ListingAhead::Outcome outcome = m_ahead->take(*asked[k]);
            asked[k].reset();
            listed = outcome.listed;
            if (listed) {
                adoptTemporaries(*inner, outcome.temporaries);
                walk(inner, outcome.fd.get(), outcome.listing);
            }
        } else {
            const Fd child(openDirectoryAt(fd, listing.name(*folder.item)));
            listed = child.valid() && scan(inner, child.get());
        }
        if (!listed)
            e.Attributes |= Attr::Unlisted;
    }
}

} // namespace

int currentUtcOffset()
{
    return QDateTime::currentDateTime().offsetFromUtc();
}

Date FileTimeToDate(std::int64_t seconds, int utcOffset)
{
    const std::int64_t local = seconds + utcOffset;
    return UnixEpochAsDate + static_cast<double>(local) / 86400.0;
}

std::int64_t DateToFileTime(Date date, int utcOffset)
{
    return std::llround((date - UnixEpochAsDate) * 86400.0) - utcOffset;
}

bool ScanDirectory(const QString &directory, const MaskSet &directoryMasks,
                   const MaskSet &fileMasks, const DirPair &flags, FileArray &entries,
                   TextStore &texts, Interaction *ui, int utcOffset, ScanExtras *extras)
{
    Scanner scanner(directoryMasks, fileMasks, flags, entries, texts, ui, utcOffset, extras);
    return scanner.scanRoot(directory);
}

} // namespace duomir

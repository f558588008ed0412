#include "cli/interimcompare.h"

#include <QFile>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

#include "core/engine.h"

namespace duomir::cli {

namespace {

struct Item
{
    bool present[2] = {false, false};
    struct stat st[2];
};

using Listing = std::map<QByteArray, Item>;

bool list(const QByteArray &dir, int side, Listing &out)
{
    DIR *d = ::opendir(dir.constData());
    if (!d)
        return false;
    const int fd = ::dirfd(d);
    while (dirent *e = ::readdir(d)) {
        const QByteArray name(e->d_name);
        if (name == "." || name == "..")
            continue;
        Item &item = out[name];
        if (::fstatat(fd, e->d_name, &item.st[side], AT_SYMLINK_NOFOLLOW) == 0)
            item.present[side] = true;
    }
    ::closedir(d);
    return true;
}

std::uint32_t attributes(const struct stat &st, const QByteArray &name)
{
    std::uint32_t a = 0;
    if (S_ISDIR(st.st_mode))
        a |= Attr::Directory;
    else if (S_ISLNK(st.st_mode))
        a |= Attr::Reparse;
    else if (!S_ISREG(st.st_mode))
        a |= Attr::System;
    if (!S_ISLNK(st.st_mode) && !(st.st_mode & S_IWUSR))
        a |= Attr::ReadOnly;
    if (name.startsWith('.'))
        a |= Attr::Hidden;
    return a;
}

class Walker
{
public:
    explicit Walker(Engine &engine) : m_engine(engine) {}

    void walk(const QByteArray (&dirs)[2])
    {
        Listing items;
        for (int side = 0; side < 2; ++side)
            list(dirs[side], side, items);
        std::vector<const Listing::value_type *> subdirs;
        for (const auto &entry : items) {
            const Item &item = entry.second;
            bool isDir[2];
            for (int s = 0; s < 2; ++s)
                isDir[s] = item.present[s] && S_ISDIR(item.st[s].st_mode);
            // A name that is a file on one side and a directory on the other gives two rows.
            if ((item.present[0] && !isDir[0]) || (item.present[1] && !isDir[1]))
                fileRow(dirs, entry.first, item, !isDir[0] && item.present[0],
                        !isDir[1] && item.present[1]);
            if (isDir[0] || isDir[1])
                subdirs.push_back(&entry);
        }
        for (const auto *entry : subdirs) {
            const Item &item = entry->second;
            const bool on[2] = {item.present[0] && S_ISDIR(item.st[0].st_mode),
                                item.present[1] && S_ISDIR(item.st[1].st_mode)};
            const QByteArray sub[2] = {dirs[0] + '/' + entry->first, dirs[1] + '/' + entry->first};
            CompareEntry e;
            for (int s = 0; s < 2; ++s) {
                e.Path[s] = QFile::decodeName(sub[s]);
                e.Attributes[s] = on[s] ? attributes(item.st[s], entry->first) : 0;
            }
            for (int s = 0; s < 2; ++s)
                if (!on[s])
                    e.Attributes[s] = e.Attributes[s ^ 1];
            e.State =
                on[0] && on[1] ? Identical : (on[0] ? ModifiedInSource : ModifiedInDestination);
            e.Marked = m_engine.MarkAll;
            push(e);
            walk(sub);
        }
    }

private:
    void fileRow(const QByteArray (&dirs)[2], const QByteArray &name, const Item &item, bool s0,
                 bool s1)
    {
        CompareEntry e;
        const bool on[2] = {s0, s1};
        for (int s = 0; s < 2; ++s) {
            e.Path[s] = QFile::decodeName(dirs[s] + '/');
            if (!on[s])
                continue;
            const struct stat &st = item.st[s];
            e.Name[s] = QFile::decodeName(name);
            e.Attributes[s] = attributes(st, name);
            e.Modified[s] = double(st.st_mtime) / 86400.0;
            e.Size[s] = std::int32_t(st.st_size);
            e.FullSize[s] = st.st_size;
        }
        for (int s = 0; s < 2; ++s)
            if (!on[s])
                e.Attributes[s] = e.Attributes[s ^ 1];
        if (!on[1])
            e.State = ModifiedInSource;
        else if (!on[0])
            e.State = ModifiedInDestination;
        else if (item.st[0].st_mtime != item.st[1].st_mtime)
            e.State = item.st[0].st_mtime > item.st[1].st_mtime ? ModifiedInSource
                                                                : ModifiedInDestination;
        else
            e.State = item.st[0].st_size == item.st[1].st_size ? Identical : ModifiedInSource;
        e.Marked = e.State != Identical && m_engine.MarkAll;
        push(e);
    }

    void push(const CompareEntry &e)
    {
        m_engine.CompareResults.push_back(e);
        ++m_engine.compareCounters[size_t(e.State + 1)];
    }

    Engine &m_engine;
};

} // namespace

bool compareTrees(Engine &engine, const QString &source, const QString &destination, QString &error)
{
    engine.CompareResults.assign(1, CompareEntry{});
    engine.compareCounters = {};
    const QByteArray roots[2] = {QFile::encodeName(source), QFile::encodeName(destination)};
    for (int s = 0; s < 2; ++s) {
        struct stat st;
        if (roots[s].isEmpty() || ::stat(roots[s].constData(), &st) != 0 || !S_ISDIR(st.st_mode) ||
            ::access(roots[s].constData(), R_OK | X_OK) != 0) {
            error = s == 0 ? source : destination;
            return false;
        }
    }
    CompareEntry root;
    root.Path = {source, destination};
    root.Attributes = {Attr::Directory, Attr::Directory};
    root.Marked = engine.MarkAll;
    engine.CompareResults[0] = root;
    engine.CompareResults.push_back(root);
    Walker(engine).walk(roots);
    return true;
}

} // namespace duomir::cli

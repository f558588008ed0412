#include "rowbuilder.h"

#include <QFile>
#include <sys/stat.h>

namespace duomir::test {

namespace {

struct Side
{
    bool exists = false;
    std::uint32_t attributes = 0;
    qint64 mtime = 0;
    qint64 size = 0;
};

Side look(const QString &path)
{
    Side s;
    struct stat st;
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
        return s;
    s.exists = true;
    if (S_ISDIR(st.st_mode))
        s.attributes |= Attr::Directory;
    else if (S_ISLNK(st.st_mode))
        s.attributes |= Attr::Reparse;
    else if (!S_ISREG(st.st_mode))
        s.attributes |= Attr::System;
    if (!S_ISLNK(st.st_mode) && !(st.st_mode & S_IWUSR))
        s.attributes |= Attr::ReadOnly;
    if (!S_ISDIR(st.st_mode)) {
        s.mtime = st.st_mtime;
        s.size = st.st_size;
    }
    return s;
}

} // namespace

RowBuilder::RowBuilder(Engine &engine, const QString &sourceRoot, const QString &destinationRoot)
    : m_engine(engine), m_roots{sourceRoot, destinationRoot}
{
    m_engine.CompareResults.assign(1, CompareEntry{});
    m_engine.compareCounters = {};
    CompareEntry root;
    for (int i = 0; i < 2; ++i) {
        root.Path[i] = m_roots[i];
        root.Attributes[i] = Attr::Directory;
    }
    root.Marked = true;
    m_engine.CompareResults[0] = root;
    m_engine.CompareResults.push_back(root);
}

int RowBuilder::dir(const QString &relative, bool marked)
{
    return add(relative, true, 0, false, marked, true);
}

int RowBuilder::file(const QString &relative)
{
    return add(relative, false, 0, false, false, false);
}

int RowBuilder::file(const QString &relative, std::int16_t state, bool marked)
{
    return add(relative, false, state, true, marked, true);
}

int RowBuilder::add(const QString &relative, bool directory, std::int16_t state, bool stateGiven,
                    bool marked, bool markedGiven)
{
    CompareEntry e;
    const qsizetype slash = relative.lastIndexOf(u'/');
    const QString name = relative.mid(slash + 1);
    Side sides[2];
    for (int i = 0; i < 2; ++i) {
        const QString full = m_roots[i] + u'/' + relative;
        sides[i] = look(full);
        e.Path[i] = directory ? full : full.left(full.size() - name.size());
        if (sides[i].exists && !directory)
            e.Name[i] = name;
        e.Attributes[i] = sides[i].attributes;
        e.Modified[i] = double(sides[i].mtime) / 86400.0;
        e.Size[i] = std::int32_t(sides[i].size);
        e.FullSize[i] = sides[i].size;
    }
    // A one-sided row carries the present side's attributes on both sides.
    if (!sides[0].exists)
        e.Attributes[0] = e.Attributes[1];
    if (!sides[1].exists)
        e.Attributes[1] = e.Attributes[0];
    if (directory) {
        e.Attributes[0] |= Attr::Directory;
        e.Attributes[1] |= Attr::Directory;
    }

    if (!stateGiven) {
        if (!sides[1].exists)
            state = ModifiedInSource;
        else if (!sides[0].exists)
            state = ModifiedInDestination;
        else if (directory)
            state = Identical;
        else if (sides[0].mtime > sides[1].mtime)
            state = ModifiedInSource;
        else if (sides[0].mtime < sides[1].mtime)
            state = ModifiedInDestination;
        else
            state = sides[0].size == sides[1].size ? Identical : ModifiedInSource;
    }
    e.State = state;
    e.Marked = markedGiven ? marked : (state != Identical || directory);
    if (state == ModifiedInSource)
        ++m_engine.compareCounters[0];
    else if (state == ModifiedInDestination)
        ++m_engine.compareCounters[2];
    else
        ++m_engine.compareCounters[1];
    m_engine.CompareResults.push_back(e);
    return int(m_engine.CompareResults.size()) - 1;
}

} // namespace duomir::test

#include "core/pairvalidation.h"

#include <QDir>

#include "base/interaction.h"
#include "core/dirpair.h"

namespace duomir {

namespace {

bool startsWithNoCase(const QString &text, const QString &prefix)
{
    return text.startsWith(prefix, Qt::CaseInsensitive);
}

bool equalNoCase(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

class Asker
{
public:
    Asker(Interaction &ui, const MessageText &text) : m_ui(&ui), m_text(&text) {}

    void warn(int key) const
    {
        m_ui->message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok, (*m_text)(key, {}));
    }
    bool agree(int key, const QStringList &params = {}) const
    {
        return m_ui->message(Interaction::Icon::Question, Interaction::Buttons::YesNo,
                             (*m_text)(key, params)) == Interaction::Answer::Yes;
    }

private:
    Interaction *m_ui;
    const MessageText *m_text;
};

// One of the four nesting tests against another pair: x is a path of the candidate, y one of the
// other pair. The beginning is compared by characters, not path components.
bool nestingAccepted(const Asker &ask, const QString &x, bool candidateSubDirs, const QString &y,
                     bool otherSubDirs, int keyXInY, int keyYInX)
{
    if (x.size() >= y.size()) {
        if (otherSubDirs && startsWithNoCase(x, y))
            return ask.agree(keyXInY, {y});
    } else if (candidateSubDirs && startsWithNoCase(y, x)) {
        return ask.agree(keyYInX, {y});
    }
    return true;
}

} // namespace

int pairConflict(const DirPair &pair, bool wholeNames)
{
    const QString &src = pair.Source;
    const QString &dst = pair.Destination;
    if (src.isEmpty() || dst.isEmpty())
        return 20810;
    if (src == dst)
        return 20820;
    if (!pair.SubDirs)
        return 0;
    // Below a separator, or the two equal but for case (which a case-blind file system takes for
    // one folder).
    const auto inside = [wholeNames](const QString &inner, const QString &outer) {
        if (!startsWithNoCase(inner, outer))
            return false;
        return !wholeNames || inner.size() == outer.size() || outer.endsWith(u'/') ||
               inner.at(outer.size()) == u'/';
    };
    if (src.size() >= dst.size() && inside(src, dst))
        return 20840;
    if (src.size() < dst.size() && inside(dst, src))
        return 20830;
    return 0;
}

bool confirmPair(const DirPair &candidate, int slot, const DirPairList &pairs, Interaction &ui,
                 const MessageText &text)
{
    const Asker ask(ui, text);
    const QString &src = candidate.Source;
    const QString &dst = candidate.Destination;

    const int conflict = pairConflict(candidate, false);
    if (conflict == 20810 || conflict == 20820) {
        ask.warn(conflict);
        return false;
    }
    if (conflict != 0 && !ask.agree(conflict))
        return false;

    for (int j = 1; j <= pairs.count(); ++j) {
        if (j == slot)
            continue;
        const DirPair &other = pairs[j];
        bool accepted = false;
        // Each equality question is asked in turn; a No to any of them keeps the dialog open.
        const struct
        {
            const QString &mine;
            const QString &theirs;
            int key;
        } equalities[] = {{src, other.Source, 20850},
                          {dst, other.Destination, 20860},
                          {dst, other.Source, 20870},
                          {src, other.Destination, 20880}};
        for (const auto &eq : equalities) {
            if (!equalNoCase(eq.mine, eq.theirs))
                continue;
            if (!ask.agree(eq.key))
                return false;
            accepted = true;
        }
        if (accepted)
            continue;
        const bool mine = candidate.SubDirs;
        const bool theirs = other.SubDirs;
        if (!nestingAccepted(ask, src, mine, other.Source, theirs, 20900, 20890) ||
            !nestingAccepted(ask, dst, mine, other.Destination, theirs, 20920, 20910) ||
            !nestingAccepted(ask, dst, mine, other.Source, theirs, 20940, 20930) ||
            !nestingAccepted(ask, src, mine, other.Destination, theirs, 20960, 20950))
            return false;
    }
    return true;
}

} // namespace duomir

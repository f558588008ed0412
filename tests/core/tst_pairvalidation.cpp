#include <QtTest>
#include <sys/stat.h>

#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/dirpair.h"
#include "core/engine.h"
#include "core/pairvalidation.h"
#include "core/profilefile.h"
#include "settings/settings.h"

using namespace duomir;
using namespace Qt::StringLiterals;
using Answer = Interaction::Answer;

// Pairs name only the fields a test sets.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace {

// An engine whose profile is the tree's p.dyp.
struct ProfileFixture
{
    test::TempTree tree;
    test::FakeInteraction ui;
    Engine engine{ui};

    ProfileFixture()
    {
        engine.ProfilePath = tree.path(u"p.dyp"_s);
        engine.language =
            Language::load(qEnvironmentVariable("DUOMIR_SHARE_DIR") + u"/English.lang"_s, nullptr);
    }

    QStringList shown() const
    {
        QStringList out;
        for (const auto &m : ui.shown)
            out << m.text;
        return out;
    }
};

} // namespace

class TestPairValidation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A new pair takes its switches and exclude masks from the options, yet includes everything.
    // The switches show as Su, SD, HD, SF, HF, which is not the order of the record's fields.
    void newPairAndItsSwitches()
    {
        Settings s;
        s.SubDirs = s.HiddenFiles = true;
        s.ExcludeFiles = u"*.tmp"_s;
        DirPair pair = DirPair::newFromSettings(s);
        QCOMPARE(pair, (DirPair{.SysDirs = false,
                                .SysFiles = false,
                                .HiddenDirs = false,
                                .IncludeDirs = u"*"_s,
                                .IncludeFiles = u"*"_s,
                                .ExcludeFiles = u"*.tmp"_s}));
        switchField(pair, PairSwitch::SysFiles) = true;
        QStringList shown;
        for (int i = 0; i < PairSwitchCount; ++i)
            shown << switchCode(switchInDisplayOrder(i)) +
                         (switchValue(pair, switchInDisplayOrder(i)) ? u"+" : u"-");
        QCOMPARE(shown, QStringList({u"Su+"_s, u"SD-"_s, u"HD-"_s, u"SF+"_s, u"HF+"_s}));
    }

    // A typed root loses one trailing separator, "/" none; a caption drops the last suffix only.
    void pathTexts()
    {
        QCOMPARE(withoutTrailingSeparator(u"/data//"_s), u"/data/"_s);
        QCOMPARE(withoutTrailingSeparator(u"/"_s), u"/"_s);
        QCOMPARE(withoutTrailingSeparator(u""_s), u""_s);
        QCOMPARE(profileCaption(u"/home/u/Daily.backup.dyp"_s, u"Duomir"_s),
                 u"Daily.backup · Duomir"_s);
        QCOMPARE(profileCaption(u"/a.b/plain"_s, u"Duomir"_s), u"plain · Duomir"_s);
    }

    // A pair is "source>destination", " flat" after it without subdirectories; the other pairs
    // stand between ", ", the questions asked between blanks.
    void questionsInOrder_data()
    {
        QTest::addColumn<QString>("candidate");
        QTest::addColumn<QString>("others");
        QTest::addColumn<QString>("asked");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<bool>("answerNo"); // to the first question; every other answer is Yes
        const auto row = [](const char *tag, const char *candidate, const char *others,
                            const char *asked, bool accepted = true, bool answerNo = false) {
            QTest::newRow(tag) << QString::fromUtf8(candidate) << QString::fromUtf8(others)
                               << QString::fromUtf8(asked) << accepted << answerNo;
        };
        row("empty source", ">/b", "", "20810!", false);
        row("empty destination", "/a>", "", "20810!", false);
        row("same paths", "/a>/a", "", "20820!", false);
        row("paths differing in case ask 20840", "/Data>/data", "", "20840");
        row("destination inside source", "/data>/data/copy", "", "20830");
        row("source inside destination, answered No", "/data/copy>/data", "", "20840", false, true);
        row("character prefix counts as inside", "/data>/data2", "", "20830");
        row("nesting ignored without subdirectories", "/data>/data/copy flat", "", "");

        // Against other pairs: the four equality questions, each asked in turn.
        row("duplicate pair, Yes to both", "/a>/b", "/A>/B", "20850 20860");
        row("No to the first equality stops", "/a>/b", "/a>/b", "20850", false, true);
        row("crossed pair asks 20870 and 20880", "/a>/b", "/b>/a", "20870 20880");
        row("an accepted equal pair is not tested for nesting", "/a>/z", "/a>/z/y", "20850");

        // The eight nesting questions name the other pair's path, four with this path the longer.
        row("all four nesting tests in their order", "/s/in>/d/in", "/s>/d, /d>/s",
            "20900:/s 20920:/d 20940:/d 20960:/s");
        row("the four the other way round", "/s>/d", "/s/in>/d/in, /d/in>/s/in",
            "20890:/s/in 20910:/d/in 20930:/d/in 20950:/s/in");
        row("the other pair's subdirectories decide when this path is longer", "/s/in>/d flat",
            "/s>/e flat", "");
        row("this pair's subdirectories decide when the other path is longer", "/s>/d flat",
            "/s/in>/e", "");
        row("No to a nesting question refuses", "/s/in>/d/in", "/s>/d", "20900:/s", false, true);
    }
    void questionsInOrder()
    {
        QFETCH(QString, candidate);
        QFETCH(QString, others);
        QFETCH(QString, asked);
        QFETCH(bool, answerNo);
        const auto parsed = [](const QString &text) {
            return DirPair{.Source = text.section(u'>', 0, 0),
                           .Destination = text.section(u'>', 1).section(u' ', 0, 0),
                           .SubDirs = !text.endsWith(u" flat")};
        };
        DirPairList pairs;
        for (const QString &o : others.split(u", "_s, Qt::SkipEmptyParts))
            pairs.append(parsed(o));
        const DirPair candidatePair = parsed(candidate);
        const int slot = pairs.append(candidatePair);
        test::FakeInteraction ui;
        ui.answers = {answerNo ? Answer::No : Answer::Yes, Answer::Yes, Answer::Yes, Answer::Yes};
        // Every message reads "key" or "key:param", so the test sees which question came when.
        const auto keyText = [](int key, const QStringList &params) -> QString {
            return QString::number(key) + (params.isEmpty() ? u""_s : u':' + params.join(u','));
        };
        QTEST(confirmPair(candidatePair, slot, pairs, ui, keyText), "accepted");
        // A refusal is a warning with OK ("!" after it), everything else a Yes/No question.
        QStringList shown;
        for (const auto &m : ui.shown) {
            const bool warning = m.icon == Interaction::Icon::Exclamation;
            QVERIFY(warning || m.icon == Interaction::Icon::Question);
            QCOMPARE(m.buttons, warning ? Interaction::Buttons::Ok : Interaction::Buttons::YesNo);
            shown.append(m.text + (warning ? u"!" : u""));
        }
        QCOMPARE(shown, asked.split(u' ', Qt::SkipEmptyParts));
    }

    // Sections 0, 7, 3 load as two pairs in file order; saving writes 1 and 2 and leaves 7 and 3,
    // so the next load shows four pairs.
    void surplusSectionsComeBack()
    {
        ProfileFixture f;
        f.tree.dir(u"s"_s);
        f.tree.dir(u"d"_s);
        const QByteArray roots =
            "S=" + f.tree.path(u"s"_s).toUtf8() + "\nD=" + f.tree.path(u"d"_s).toUtf8();
        f.tree.file(u"p.dyp"_s, "[0]\nF1=3\nSO2=1\n[7]\n" + roots + "\nSu=0\nEF=*.tmp\n[3]\n" +
                                    roots + "\nIS=*\n");
        Engine &engine = f.engine;
        engine.ProfileModified = true;
        QVERIFY(LoadProfile(engine));
        QCOMPARE(engine.pairs.count(), 2);
        QCOMPARE(engine.pairs[1].SubDirs, false);
        QCOMPARE(engine.pairs[1].ExcludeFiles, u"*.tmp"_s);
        QCOMPARE(engine.pairs[2].IncludeDirs, u"*"_s);
        QCOMPARE(engine.comparison().filter().FileFilter, FileView::ModifiedInDestination);
        QVERIFY(engine.run().options().Reverse && !engine.run().options().Src &&
                !engine.run().options().Dest);
        QVERIFY(!engine.ProfileModified);
        QVERIFY(f.ui.shown.isEmpty());
        QVERIFY(engine.comparison().rows().size() > 1); // loading compares

        engine.comparison().setFilter({.ShowEmptyDirs = true});
        const DirPair first = engine.pairs[1];
        QVERIFY(SaveProfile(engine, engine.ProfilePath));
        QVERIFY(LoadProfile(engine));
        QCOMPARE(engine.pairs.count(), 4);
        QCOMPARE(engine.pairs[3], first); // section 1 now
        QVERIFY(engine.comparison().filter().ShowEmptyDirs);
    }

    // Missing switches load as on, missing view keys as 0; a filter number naming no button is
    // 0. A source path with a NUL in it names no directory.
    void missingKeysTakeDefaults()
    {
        ProfileFixture f;
        f.tree.file(u"p.dyp"_s, "[0]\nF1=4\nF2=9\n[1]\nS=" + QFile::encodeName(f.tree.root()) +
                                    QByteArray("\0junk\n", 6));
        f.engine.comparison().setFilter({.SideFilter = SideView::SameNames, .ShowEmptyDirs = true});
        QVERIFY(LoadProfile(f.engine));
        QCOMPARE(f.engine.pairs.count(), 1);
        const DirPair expected{.Source = f.tree.root() + QChar(0) + u"junk"_s}; // all else default
        QCOMPARE(f.engine.pairs[1], expected);
        QCOMPARE(f.engine.comparison().filter().FileFilter, FileView::Identical); // the last button
        QCOMPARE(f.engine.comparison().filter().SideFilter, SideView::All);
        QVERIFY(!f.engine.comparison().filter().ShowEmptyDirs);
        QVERIFY(!f.engine.run().options().Src);
        QCOMPARE(f.shown(), QStringList({f.engine.FormatMsg(806, {expected.Source + u'/'}),
                                         f.engine.FormatMsg(807, {QString()})}));
    }

    void unreadableProfile_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"missing", "empty", "no section", "FIFO", "100 MB"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    // A profile path that names no sane profile says so (805) within a second: the list stays
    // empty, the path stays, ProfileModified is not touched.
    void unreadableProfile()
    {
        QFETCH(QString, kind);
        ProfileFixture f;
        QString &path = f.engine.ProfilePath;
        if (kind == u"empty" || kind == u"no section")
            f.tree.file(u"p.dyp"_s, kind == u"empty" ? "" : "just text\n");
        else if (kind == u"FIFO")
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (kind == u"100 MB")
            f.tree.file(u"p.dyp"_s, QByteArray(100 << 20, '\0'));
        const QString given = path;
        f.engine.pairs.append(DirPair()); // dropped by the failed load
        f.engine.ProfileModified = true;
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!LoadProfile(f.engine));
        QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(f.engine.pairs.count(), 0);
        QCOMPARE(f.shown(), QStringList{f.engine.FormatMsg(805, {given})});
        QCOMPARE(path, given);
        QVERIFY(f.engine.ProfileModified);
    }
};

QTEST_GUILESS_MAIN(TestPairValidation)
#include "tst_pairvalidation.moc"

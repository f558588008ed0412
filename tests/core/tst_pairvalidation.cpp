#include <QtTest>

#include "base/inifile.h"
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

namespace {

// Every message reads "key" or "key:param", so a test sees which question came in which order.
QString keyText(int key, const QStringList &params)
{
    return params.isEmpty() ? QString::number(key)
                            : QString::number(key) + u':' + params.join(u',');
}

DirPair pair(const QString &source, const QString &destination, bool subDirs = true)
{
    DirPair p;
    p.Source = source;
    p.Destination = destination;
    p.SubDirs = subDirs;
    return p;
}

// An engine whose profile is the tree's p.dyp.
struct ProfileFixture
{
    test::TempTree tree;
    test::FakeInteraction ui;
    Engine engine{ui};

    ProfileFixture() { engine.ProfilePath = tree.path(u"p.dyp"_s); }
};

} // namespace

class TestPairValidation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A new pair takes its switches and exclude masks from the options, yet includes everything.
    void newPairFollowsOptionsButIncludesEverything()
    {
        Settings s;
        s.SubDirs = s.HiddenFiles = true;
        s.ExcludeFiles = u"*.tmp"_s;
        DirPair expected;
        expected.SysDirs = expected.SysFiles = expected.HiddenDirs = false;
        expected.IncludeDirs = expected.IncludeFiles = u"*"_s;
        expected.ExcludeFiles = u"*.tmp"_s;
        QCOMPARE(DirPair::newFromSettings(s), expected);
    }

    // The switches show as Su, SD, HD, SF, HF, which is not the order of the record's fields.
    void displayOrderDiffersFromRecordOrder()
    {
        DirPair pair = DirPair::fromProfileDefaults(); // every switch on
        switchField(pair, PairSwitch::SysFiles) = false;
        QVERIFY(!pair.SysFiles && pair.HiddenDirs);
        QStringList shown;
        for (int i = 0; i < PairSwitchCount; ++i)
            shown << switchCode(switchInDisplayOrder(i)) +
                         (switchValue(pair, switchInDisplayOrder(i)) ? u"+" : u"-");
        QCOMPARE(shown, QStringList({u"Su+"_s, u"SD+"_s, u"HD+"_s, u"SF-"_s, u"HF+"_s}));
    }

    void listKeepsSlotZero()
    {
        DirPairList list;
        QCOMPARE(list.append(pair(u"/a"_s, {})), 1);
        QCOMPARE(list.append(pair(u"/b"_s, {})), 2);
        list.removeAt(1);
        QCOMPARE(list.count(), 1);
        QCOMPARE(list[1].Source, u"/b"_s);
        list.removeAt(1);
        list.removeAt(1); // nothing left to remove: no effect
        QCOMPARE(list.upperBound(), 0);
    }

    void trailingSeparator_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("stored");
        QTest::newRow("one removed") << u"/data/"_s << u"/data"_s;
        QTest::newRow("only one of two") << u"/data//"_s << u"/data/"_s;
        QTest::newRow("root keeps it") << u"/"_s << u"/"_s;
        QTest::newRow("nothing to remove") << u"/data"_s << u"/data"_s;
        QTest::newRow("empty") << u""_s << u""_s;
    }
    void trailingSeparator()
    {
        QFETCH(QString, typed);
        QFETCH(QString, stored);
        QCOMPARE(withoutTrailingSeparator(typed), stored);
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
        row("empty source", ">/b", "", "20810", false);
        row("empty destination", "/a>", "", "20810", false);
        row("same paths", "/a>/a", "", "20820", false);
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

        // The eight nesting questions name the other pair's path.
        row("source in other source's tree", "/s/in>/d", "/s>/e", "20900:/s");
        row("other source in this source's tree", "/s>/d", "/s/in>/e", "20890:/s/in");
        row("destination in other destination's tree", "/s>/d/in", "/t>/d", "20920:/d");
        row("other destination in this destination's tree", "/s>/d", "/t>/d/in", "20910:/d/in");
        row("destination in other source's tree", "/s>/t/in", "/t>/e", "20940:/t");
        row("other source in this destination's tree", "/s>/d", "/d/in>/e", "20930:/d/in");
        row("source in other destination's tree", "/e/in>/d", "/t>/e", "20960:/e");
        row("other destination in this source's tree", "/s>/d", "/t>/s/in", "20950:/s/in");
        row("the other pair's subdirectories decide when this path is longer", "/s/in>/d flat",
            "/s>/e flat", "");
        row("this pair's subdirectories decide when the other path is longer", "/s>/d flat",
            "/s/in>/e", "");
        row("No to a nesting question refuses", "/s/in>/d/in", "/s>/d", "20900:/s", false, true);
        row("all four nesting tests in their order", "/s/in>/d/in", "/s>/d, /d>/s",
            "20900:/s 20920:/d 20940:/d 20960:/s");
    }
    void questionsInOrder()
    {
        QFETCH(QString, candidate);
        QFETCH(QString, others);
        QFETCH(QString, asked);
        QFETCH(bool, accepted);
        QFETCH(bool, answerNo);
        const auto parsed = [](const QString &text) {
            return pair(text.section(u'>', 0, 0), text.section(u'>', 1).section(u' ', 0, 0),
                        !text.endsWith(u" flat"));
        };
        DirPairList pairs;
        for (const QString &o : others.split(u", "_s, Qt::SkipEmptyParts))
            pairs.append(parsed(o));
        const DirPair candidatePair = parsed(candidate);
        const int slot = pairs.append(candidatePair);
        test::FakeInteraction ui;
        ui.answers = {answerNo ? Answer::No : Answer::Yes, Answer::Yes, Answer::Yes, Answer::Yes};
        QCOMPARE(confirmPair(candidatePair, slot, pairs, ui, keyText), accepted);
        // Empty and equal paths are refusals; everything else is a question.
        QStringList shown;
        for (const auto &m : ui.shown) {
            shown.append(m.text);
            const bool refusal = m.text == u"20810" || m.text == u"20820";
            QCOMPARE(m.icon,
                     refusal ? Interaction::Icon::Exclamation : Interaction::Icon::Question);
            QCOMPARE(m.buttons, refusal ? Interaction::Buttons::Ok : Interaction::Buttons::YesNo);
        }
        QCOMPARE(shown, asked.split(u' ', Qt::SkipEmptyParts));
    }

    // Sections 0, 7, 3 load as two pairs in file order; saving writes 1 and 2, leaves 7 and 3,
    // and the next load shows four pairs.
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
        engine.pairs[2].ExcludeDirs.clear();
        QVERIFY(SaveProfile(engine, engine.ProfilePath));
        const IniFile file(engine.ProfilePath);
        QCOMPARE(file.sectionNames(), QStringList({u"0"_s, u"7"_s, u"3"_s, u"1"_s, u"2"_s}));
        QCOMPARE(file.keys(u"1"_s), QStringList({u"S"_s, u"D"_s, u"Su"_s, u"HD"_s, u"HF"_s, u"SD"_s,
                                                 u"SF"_s, u"IS"_s, u"ES"_s, u"IF"_s, u"EF"_s}));
        QVERIFY(file.contains(u"2"_s, u"ES"_s)); // an empty mask is written, not dropped
        QCOMPARE(file.readString(u"0"_s, u"ED"_s), u"1"_s);

        QVERIFY(LoadProfile(engine));
        QCOMPARE(engine.pairs.count(), 4);
        QVERIFY(engine.comparison().filter().ShowEmptyDirs);
    }

    // Missing switches load as on, missing view keys as 0; a filter number naming no button is
    // 0.
    void missingKeysTakeDefaults()
    {
        ProfileFixture f;
        f.tree.file(u"p.dyp"_s, "[0]\nF1=4\nF2=9\n[1]\nS=\n");
        f.engine.comparison().setFilter({.SideFilter = SideView::SameNames, .ShowEmptyDirs = true});
        QVERIFY(LoadProfile(f.engine));
        QCOMPARE(f.engine.pairs.count(), 1);
        QCOMPARE(f.engine.pairs[1], DirPair::fromProfileDefaults());
        QCOMPARE(f.engine.comparison().filter().FileFilter, FileView::Identical); // the last button
        QCOMPARE(f.engine.comparison().filter().SideFilter, SideView::All);
        QVERIFY(!f.engine.comparison().filter().ShowEmptyDirs);
        QVERIFY(!f.engine.run().options().Src);
        QCOMPARE(f.ui.shown.size(), 2); // the pair's empty roots: 806, then 807
    }

    void unreadableProfile_data()
    {
        QTest::addColumn<QByteArray>("content"); // null: no file
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("no section") << QByteArray("just text\n");
    }
    // 805: the list stays empty, the path stays, ProfileModified is not touched.
    void unreadableProfile()
    {
        QFETCH(QByteArray, content);
        ProfileFixture f;
        if (!content.isNull())
            f.tree.file(u"p.dyp"_s, content);
        f.engine.pairs.append(pair(u"/x"_s, {}));
        f.engine.ProfileModified = true;
        QVERIFY(!LoadProfile(f.engine));
        QCOMPARE(f.engine.pairs.count(), 0);
        QCOMPARE(f.ui.shown.size(), 1);
        QCOMPARE(f.engine.ProfilePath, f.tree.path(u"p.dyp"_s));
        QVERIFY(f.engine.ProfileModified);
    }

    void caption()
    {
        QCOMPARE(profileCaption(u"/home/u/Daily.backup.dyp"_s, u"Duomir"_s),
                 u"Daily.backup · Duomir"_s);
        QCOMPARE(profileCaption(u"/a.b/plain"_s, u"Duomir"_s), u"plain · Duomir"_s);
    }
};

QTEST_GUILESS_MAIN(TestPairValidation)
#include "tst_pairvalidation.moc"

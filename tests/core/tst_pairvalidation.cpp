#include <QtTest>

#include "common/fakeinteraction.h"
#include "core/dirpair.h"
#include "core/pairvalidation.h"

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

struct Other
{
    QString source, destination;
    bool subDirs = true;
};

} // namespace

Q_DECLARE_METATYPE(DirPair)
Q_DECLARE_METATYPE(QList<Other>)
Q_DECLARE_METATYPE(QList<Answer>)

class TestPairValidation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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

    void questionsInOrder_data()
    {
        QTest::addColumn<DirPair>("candidate");
        QTest::addColumn<QList<Other>>("others");
        QTest::addColumn<QList<Answer>>("answers");
        QTest::addColumn<QStringList>("asked");
        QTest::addColumn<bool>("accepted");

        const QList<Other> none;
        const QList<Answer> yes{Answer::Yes, Answer::Yes, Answer::Yes, Answer::Yes};

        QTest::newRow("empty source")
            << pair({}, u"/b"_s) << none << yes << QStringList{u"20810"_s} << false;
        QTest::newRow("empty destination")
            << pair(u"/a"_s, {}) << none << yes << QStringList{u"20810"_s} << false;
        QTest::newRow("same paths")
            << pair(u"/a"_s, u"/a"_s) << none << yes << QStringList{u"20820"_s} << false;
        QTest::newRow("paths differing in case ask 20840")
            << pair(u"/Data"_s, u"/data"_s) << none << yes << QStringList{u"20840"_s} << true;
        QTest::newRow("destination inside source")
            << pair(u"/data"_s, u"/data/copy"_s) << none << yes << QStringList{u"20830"_s} << true;
        QTest::newRow("source inside destination, answered No")
            << pair(u"/data/copy"_s, u"/data"_s) << none << QList<Answer>{Answer::No}
            << QStringList{u"20840"_s} << false;
        QTest::newRow("character prefix counts as inside")
            << pair(u"/data"_s, u"/data2"_s) << none << yes << QStringList{u"20830"_s} << true;
        QTest::newRow("nesting ignored without subdirectories")
            << pair(u"/data"_s, u"/data/copy"_s, false) << none << yes << QStringList{} << true;

        // Against other pairs: the four equality questions, each asked in turn.
        QTest::newRow("duplicate pair, Yes to both")
            << pair(u"/a"_s, u"/b"_s) << QList<Other>{{u"/A"_s, u"/B"_s}} << yes
            << QStringList{u"20850"_s, u"20860"_s} << true;
        QTest::newRow("No to the first equality stops")
            << pair(u"/a"_s, u"/b"_s) << QList<Other>{{u"/a"_s, u"/b"_s}}
            << QList<Answer>{Answer::No} << QStringList{u"20850"_s} << false;
        QTest::newRow("crossed pair asks 20870 and 20880")
            << pair(u"/a"_s, u"/b"_s) << QList<Other>{{u"/b"_s, u"/a"_s}} << yes
            << QStringList{u"20870"_s, u"20880"_s} << true;
        QTest::newRow("an accepted equal pair is not tested for nesting")
            << pair(u"/a"_s, u"/z"_s) << QList<Other>{{u"/a"_s, u"/z/y"_s}} << yes
            << QStringList{u"20850"_s} << true;

        // The eight nesting questions name the other pair's path.
        QTest::newRow("source in other source's tree")
            << pair(u"/s/in"_s, u"/d"_s) << QList<Other>{{u"/s"_s, u"/e"_s}} << yes
            << QStringList{u"20900:/s"_s} << true;
        QTest::newRow("other source in this source's tree")
            << pair(u"/s"_s, u"/d"_s) << QList<Other>{{u"/s/in"_s, u"/e"_s}} << yes
            << QStringList{u"20890:/s/in"_s} << true;
        QTest::newRow("destination in other destination's tree")
            << pair(u"/s"_s, u"/d/in"_s) << QList<Other>{{u"/t"_s, u"/d"_s}} << yes
            << QStringList{u"20920:/d"_s} << true;
        QTest::newRow("other destination in this destination's tree")
            << pair(u"/s"_s, u"/d"_s) << QList<Other>{{u"/t"_s, u"/d/in"_s}} << yes
            << QStringList{u"20910:/d/in"_s} << true;
        QTest::newRow("destination in other source's tree")
            << pair(u"/s"_s, u"/t/in"_s) << QList<Other>{{u"/t"_s, u"/e"_s}} << yes
            << QStringList{u"20940:/t"_s} << true;
        QTest::newRow("other source in this destination's tree")
            << pair(u"/s"_s, u"/d"_s) << QList<Other>{{u"/d/in"_s, u"/e"_s}} << yes
            << QStringList{u"20930:/d/in"_s} << true;
        QTest::newRow("source in other destination's tree")
            << pair(u"/e/in"_s, u"/d"_s) << QList<Other>{{u"/t"_s, u"/e"_s}} << yes
            << QStringList{u"20960:/e"_s} << true;
        QTest::newRow("other destination in this source's tree")
            << pair(u"/s"_s, u"/d"_s) << QList<Other>{{u"/t"_s, u"/s/in"_s}} << yes
            << QStringList{u"20950:/s/in"_s} << true;
        QTest::newRow("the other pair's subdirectories decide when this path is longer")
            << pair(u"/s/in"_s, u"/d"_s, false) << QList<Other>{{u"/s"_s, u"/e"_s, false}} << yes
            << QStringList{} << true;
        QTest::newRow("this pair's subdirectories decide when the other path is longer")
            << pair(u"/s"_s, u"/d"_s, false) << QList<Other>{{u"/s/in"_s, u"/e"_s, true}} << yes
            << QStringList{} << true;
        QTest::newRow("No to a nesting question refuses")
            << pair(u"/s/in"_s, u"/d/in"_s) << QList<Other>{{u"/s"_s, u"/d"_s}}
            << QList<Answer>{Answer::No} << QStringList{u"20900:/s"_s} << false;
        QTest::newRow("all four nesting tests in their order")
            << pair(u"/s/in"_s, u"/d/in"_s) << QList<Other>{{u"/s"_s, u"/d"_s}, {u"/d"_s, u"/s"_s}}
            << yes << QStringList{u"20900:/s"_s, u"20920:/d"_s, u"20940:/d"_s, u"20960:/s"_s}
            << true;
    }
    void questionsInOrder()
    {
        QFETCH(DirPair, candidate);
        QFETCH(QList<Other>, others);
        QFETCH(QList<Answer>, answers);
        QFETCH(QStringList, asked);
        QFETCH(bool, accepted);

        DirPairList pairs;
        for (const Other &o : others)
            pairs.append(pair(o.source, o.destination, o.subDirs));
        const int slot = pairs.append(candidate);

        test::FakeInteraction ui;
        ui.answers = answers;
        QCOMPARE(confirmPair(candidate, slot, pairs, ui, keyText), accepted);
        // Empty and equal paths are refusals; everything else is a question.
        QStringList shown;
        for (const auto &m : ui.shown) {
            shown.append(m.text);
            const bool refusal = m.text == u"20810" || m.text == u"20820";
            QCOMPARE(m.icon,
                     refusal ? Interaction::Icon::Exclamation : Interaction::Icon::Question);
            QCOMPARE(m.buttons, refusal ? Interaction::Buttons::Ok : Interaction::Buttons::YesNo);
        }
        QCOMPARE(shown, asked);
    }
};

QTEST_GUILESS_MAIN(TestPairValidation)
#include "tst_pairvalidation.moc"

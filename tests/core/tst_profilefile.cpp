#include <QTest>

#include "base/inifile.h"
#include "common/fakeinteraction.h"
#include "common/temptree.h"
#include "core/engine.h"
#include "core/profilefile.h"

using namespace duomir;

class TestProfileFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Sections 0, 7, 3 load as two pairs in file order; saving writes 1 and 2, leaves 7 and 3, and
    // the next load shows four pairs.
    void surplusSectionsComeBack()
    {
        test::TempTree tree;
        tree.dir(u"s"_qs);
        tree.dir(u"d"_qs);
        const QString s = tree.path(u"s"_qs);
        const QString d = tree.path(u"d"_qs);
        tree.file(u"p.dyp"_qs, "[0]\nF1=3\nSO2=1\n[7]\nS=" + s.toUtf8() + "\nD=" + d.toUtf8() +
                                   "\nSu=0\nEF=*.tmp\n[3]\nS=" + s.toUtf8() + "\nD=" + d.toUtf8() +
                                   "\nIS=*\n");
        test::FakeInteraction ui;
        Engine engine(ui);
        engine.ProfilePath = tree.path(u"p.dyp"_qs);
        engine.ProfileModified = true;
        QVERIFY(LoadProfile(engine));
        QCOMPARE(engine.pairs.count(), 2);
        QCOMPARE(engine.pairs[1].SubDirs, false);
        QCOMPARE(engine.pairs[1].ExcludeFiles, u"*.tmp"_qs);
        QCOMPARE(engine.pairs[2].IncludeDirs, u"*"_qs);
        QCOMPARE(engine.filter.FileFilter, 3);
        QVERIFY(engine.sync.Reverse && !engine.sync.Src && !engine.sync.Dest);
        QVERIFY(!engine.ProfileModified);
        QVERIFY(ui.shown.isEmpty());
        QVERIFY(engine.CompareResults.size() > 1); // loading compares

        engine.filter.ShowEmptyDirs = true;
        engine.pairs[2].ExcludeDirs.clear();
        QVERIFY(SaveProfile(engine, engine.ProfilePath));
        const IniFile file(engine.ProfilePath);
        QCOMPARE(file.sectionNames(), QStringList({u"0"_qs, u"7"_qs, u"3"_qs, u"1"_qs, u"2"_qs}));
        QCOMPARE(file.keys(u"1"_qs),
                 QStringList({u"S"_qs, u"D"_qs, u"Su"_qs, u"HD"_qs, u"HF"_qs, u"SD"_qs, u"SF"_qs,
                              u"IS"_qs, u"ES"_qs, u"IF"_qs, u"EF"_qs}));
        QVERIFY(file.contains(u"2"_qs, u"ES"_qs)); // an empty mask is written, not dropped
        QCOMPARE(file.readString(u"0"_qs, u"ED"_qs), u"1"_qs);

        QVERIFY(LoadProfile(engine));
        QCOMPARE(engine.pairs.count(), 4);
        QVERIFY(engine.filter.ShowEmptyDirs);
    }

    // Missing switches load as on, missing view keys as 0; a filter number naming no button is 0.
    void missingKeysTakeDefaults()
    {
        test::TempTree tree;
        tree.file(u"p.dyp"_qs, "[0]\nF2=9\n[1]\nS=\n");
        test::FakeInteraction ui;
        Engine engine(ui);
        engine.filter.SideFilter = 1;
        engine.filter.ShowEmptyDirs = true;
        engine.ProfilePath = tree.path(u"p.dyp"_qs);
        QVERIFY(LoadProfile(engine));
        QCOMPARE(engine.pairs.count(), 1);
        QCOMPARE(engine.pairs[1], DirPair::fromProfileDefaults());
        QCOMPARE(engine.filter.SideFilter, 0);
        QVERIFY(!engine.filter.ShowEmptyDirs);
        QVERIFY(!engine.sync.Src);
        QCOMPARE(ui.shown.size(), 2); // the pair's empty roots: 806, then 807
    }

    void unreadableProfile_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("create");
        QTest::newRow("missing") << QByteArray() << false;
        QTest::newRow("empty") << QByteArray() << true;
        QTest::newRow("no section") << QByteArray("just text\n") << true;
    }

    // 805: the list stays empty, the path stays, ProfileModified is not touched.
    void unreadableProfile()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, create);
        test::TempTree tree;
        if (create)
            tree.file(u"p.dyp"_qs, content);
        test::FakeInteraction ui;
        Engine engine(ui);
        DirPair old;
        old.Source = u"/x"_qs;
        engine.pairs.append(old);
        engine.ProfileModified = true;
        engine.ProfilePath = tree.path(u"p.dyp"_qs);
        QVERIFY(!LoadProfile(engine));
        QCOMPARE(engine.pairs.count(), 0);
        QCOMPARE(ui.shown.size(), 1);
        QCOMPARE(engine.ProfilePath, tree.path(u"p.dyp"_qs));
        QVERIFY(engine.ProfileModified);
    }

    void caption()
    {
        QCOMPARE(profileCaption(u"/home/u/Daily.backup.dyp"_qs, u"Duomir"_qs),
                 u"Daily.backup · Duomir"_qs);
        QCOMPARE(profileCaption(u"/a.b/plain"_qs, u"Duomir"_qs), u"plain · Duomir"_qs);
    }
};

QTEST_GUILESS_MAIN(TestProfileFile)
#include "tst_profilefile.moc"

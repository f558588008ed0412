#include <QTest>

#include "core/dirpair.h"
#include "settings/settings.h"

using namespace duomir;

class TestDirPair : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newPairFollowsOptionsButIncludesEverything();
    void profileDefaultsTurnEverySwitchOn();
    void displayOrderDiffersFromRecordOrder();
    void listKeepsSlotZero();
};

// Include masks are "*" even when the options leave the exclude masks empty.
void TestDirPair::newPairFollowsOptionsButIncludesEverything()
{
    Settings s;
    s.SubDirs = true;
    s.HiddenFiles = true;
    const DirPair pair = DirPair::newFromSettings(s);
    QCOMPARE(pair.IncludeDirs, QStringLiteral("*"));
    QCOMPARE(pair.IncludeFiles, QStringLiteral("*"));
    QVERIFY(pair.ExcludeDirs.isEmpty());
    QVERIFY(pair.ExcludeFiles.isEmpty());
    QVERIFY(pair.SubDirs);
    QVERIFY(!pair.SysDirs && !pair.SysFiles && !pair.HiddenDirs);
    QVERIFY(pair.HiddenFiles);
    QVERIFY(pair.Source.isEmpty() && pair.Destination.isEmpty());
}

void TestDirPair::profileDefaultsTurnEverySwitchOn()
{
    const DirPair pair = DirPair::fromProfileDefaults();
    for (int i = 0; i < PairSwitchCount; ++i)
        QVERIFY(switchValue(pair, switchInDisplayOrder(i)));
    QVERIFY(pair.IncludeDirs.isEmpty() && pair.IncludeFiles.isEmpty());
}

void TestDirPair::displayOrderDiffersFromRecordOrder()
{
    QStringList codes;
    for (int i = 0; i < PairSwitchCount; ++i)
        codes << switchCode(switchInDisplayOrder(i));
    QCOMPARE(codes, QStringList({QStringLiteral("Su"), QStringLiteral("SD"), QStringLiteral("HD"),
                                 QStringLiteral("SF"), QStringLiteral("HF")}));

    DirPair pair;
    switchField(pair, PairSwitch::SysFiles) = false;
    QVERIFY(!pair.SysFiles);
    QVERIFY(pair.HiddenDirs);
}

void TestDirPair::listKeepsSlotZero()
{
    DirPairList list;
    QCOMPARE(list.upperBound(), 0);
    DirPair a;
    a.Source = QStringLiteral("/a");
    DirPair b;
    b.Source = QStringLiteral("/b");
    QCOMPARE(list.append(a), 1);
    QCOMPARE(list.append(b), 2);
    list.removeAt(1);
    QCOMPARE(list.count(), 1);
    QCOMPARE(list[1].Source, QStringLiteral("/b"));
    list.removeAt(1);
    QCOMPARE(list.upperBound(), 0);
    list.removeAt(1); // nothing left to remove: no effect
    QCOMPARE(list.upperBound(), 0);
}

QTEST_GUILESS_MAIN(TestDirPair)
#include "tst_dirpair.moc"

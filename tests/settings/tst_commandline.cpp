#include <QTest>

#include "common/temptree.h"
#include "settings/commandline.h"

using namespace duomir;
using duomir::test::TempTree;

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parse_data()
    {
        // argv as the program receives it; the flags as "dontask hide auto" in 0/1.
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("profile");
        QTest::addColumn<QString>("flags");

        QTest::newRow("shortcut run")
            << QStringList{u"/p/my list.dyp"_qs, u"-auto"_qs, u"-dontask"_qs, u"-hide"_qs}
            << u"/p/my list.dyp"_qs << u"111"_qs;
        QTest::newRow("switch in capitals")
            << QStringList{u"/p/list.dyp"_qs, u"-AUTO"_qs} << u"/p/list.dyp"_qs << u"001"_qs;
        QTest::newRow("switch only names itself")
            << QStringList{u"-hide"_qs} << u"-hide"_qs << u"010"_qs;
        QTest::newRow("switches first")
            << QStringList{u"-DontAsk"_qs, u"/p/a.dyp"_qs} << u"/p/a.dyp"_qs << u"100"_qs;
        QTest::newRow("quoted later")
            << QStringList{u"-auto"_qs, u"/p/a b.dyp"_qs} << u"/p/a b.dyp"_qs << u"001"_qs;
        QTest::newRow("nothing") << QStringList{} << QString() << u"000"_qs;
        QTest::newRow("empty arguments dropped")
            << QStringList{QString(), u"/p/a.dyp"_qs} << u"/p/a.dyp"_qs << u"000"_qs;
        // A switch counts only as a whole argument: a file named like one is just a file.
        QTest::newRow("switch inside the name")
            << QStringList{u"/p/my-automatic.dyp"_qs} << u"/p/my-automatic.dyp"_qs << u"000"_qs;
        QTest::newRow("all three inside names")
            << QStringList{u"/p/x-dontask-hide.dyp"_qs, u"-auto-x"_qs}
            << u"/p/x-dontask-hide.dyp"_qs << u"000"_qs;
        QTest::newRow("tab counts as blank")
            << QStringList{u"/p/a\tb.dyp"_qs} << u"/p/a\tb.dyp"_qs << u"000"_qs;
    }

    void parse()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, profile);
        QFETCH(QString, flags);
        const CommandLine cl = parseArguments(arguments);
        QCOMPARE(cl.ProfilePath, profile);
        QCOMPARE(cl.hasProfile(), !profile.isEmpty());
        const auto b = [](bool v) { return v ? u'1' : u'0'; };
        QCOMPARE(QString(b(cl.DontAsk)) + b(cl.Hide) + b(cl.AutoRequested), flags);
    }

    void emptyProfileFile()
    {
        TempTree tree;
        tree.file(u"empty.dyp"_qs);
        tree.file(u"full.dyp"_qs, "[Pairs]\n");
        tree.dir(u"folder.dyp"_qs);
        QVERIFY(isEmptyProfileFile(tree.path(u"empty.dyp"_qs)));
        QVERIFY(!isEmptyProfileFile(tree.path(u"full.dyp"_qs)));
        QVERIFY(!isEmptyProfileFile(tree.path(u"missing.dyp"_qs)));
        QVERIFY(!isEmptyProfileFile(tree.path(u"folder.dyp"_qs)));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"

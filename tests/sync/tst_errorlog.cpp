#include <QTest>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "common/fakeinteraction.h"
#include "common/rowbuilder.h"
#include "common/temptree.h"
#include "core/engine.h"
#include "core/errorlog.h"

using namespace duomir;
using namespace duomir::test;

namespace {

struct Setup
{
    TempTree tree;
    FakeInteraction ui;
    Engine engine{ui};

    // One row whose source is `src` + `name` and destination `dst` + `name`.
    explicit Setup(const QString &src = u"/a/"_qs, const QString &dst = u"/b/"_qs,
                   const QString &name = u"x"_qs)
    {
        engine.DataFolder = tree.root() + u'/';
        engine.settings.LogToFile = true;
        engine.clock = [] { return QDateTime(QDate(2026, 3, 14), QTime(9, 26, 53)); };
        CompareEntry e;
        setPaths(e, engine.comparison().texts(), src, dst);
        setNames(e, engine.comparison().texts(), name, name);
        engine.comparison().editRows().push_back(e);
    }
    QByteArray log(const QString &day = u"20260314"_qs) const { return tree.read(day + u".log"); }
};

} // namespace

class TestErrorLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The labels appear when the bitwise AND of the two lengths is non-zero. A directory that
    // cannot be removed because it is not empty is no failure; an existing one that should be
    // made is. An empty text stands for neither message nor log line.
    void messages_data()
    {
        QTest::addColumn<QString>("src");
        QTest::addColumn<QString>("dst");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("what");
        QTest::addColumn<QString>("expected"); // after the system's text
        const QString ab = u"/abcdefgh/"_qs;
        QTest::newRow("10 AND 10") << ab << u"/ijklmnop/"_qs << ENOSPC << 5
                                   << u"\r\nSource: /abcdefgh/\r\nDestination: /ijklmnop/"_qs;
        QTest::newRow("4 AND 8") << u"/ab/"_qs << u"/cdefgh/"_qs << ENOSPC << 5
                                 << u"\r\n/ab/\r\n/cdefgh/"_qs;
        QTest::newRow("copy adds the name on both sides")
            << u"/abcdefg/"_qs << u"/hijklmn/"_qs << ENOSPC << 143
            << u"\r\nSource: /abcdefg/x\r\nDestination: /hijklmn/x"_qs;
        QTest::newRow("source only") << ab << u"/z/"_qs << ENOSPC << 3 << u"\r\n/abcdefgh/x\r\n"_qs;
        QTest::newRow("rmdir not empty") << ab << ab << ENOTEMPTY << 1 << QString();
        QTest::newRow("rmdir EEXIST") << ab << ab << EEXIST << 1 << QString();
        QTest::newRow("mkdir EEXIST is real, destination only")
            << ab << ab << EEXIST << 68 << u"\r\n/abcdefgh/"_qs;
        QTest::newRow("rmdir refused") << ab << ab << EACCES << 1 << u"\r\n/abcdefgh/\r\n"_qs;
    }
    void messages()
    {
        QFETCH(QString, src);
        QFETCH(QString, dst);
        QFETCH(int, error);
        QFETCH(int, what);
        QFETCH(QString, expected);
        Setup s(src, dst);
        s.engine.reporter().report(OpResult::failure(error), what, Side::Source, 1);
        QCOMPARE(s.log().isEmpty(), expected.isEmpty());
        QCOMPARE(s.ui.shown.size(), expected.isEmpty() ? 0 : 1);
        if (!expected.isEmpty())
            QCOMPARE(s.ui.shown[0].text, QString::fromLocal8Bit(std::strerror(error)) + expected);
    }

    // The receiving side's texts come from side d xor 1; the file name from the sending side. A
    // name that holds a newline or a tab still makes one line with its columns.
    void errorLineColumns()
    {
        Setup s(u"/src/"_qs, u"/dst/"_qs, u"bad\nduomir-cli: error: \tforged"_qs);
        const QByteArray logged("bad\\nduomir-cli: error: \\tforged");
        s.engine.comparison().editRows()[1].setName(Side::Source, {});
        s.engine.DontAsk = true;
        s.engine.reporter().report(OpResult::failure(EACCES), 143, Side::Destination, 1);
        s.engine.reporter().report(OpResult::success(), 143, Side::Destination, 1);
        QVERIFY(s.ui.shown.isEmpty());
        QCOMPARE(s.log(), "2026-03-14 09:26:53\t\t" + QByteArray::number(EACCES) + '\t' +
                              QByteArray(std::strerror(EACCES)) + "\t/dst/" + logged + "\t/src/" +
                              logged + "\r\n");
    }

    // A FIFO or a link put where the day's log goes is not written through: the run neither
    // hangs on the pipe nor writes into the file the link names.
    void logPlaceTakenByAnotherKind()
    {
        for (const char *kind : {"fifo", "link"}) {
            Setup s;
            const QByteArray log = QFile::encodeName(s.tree.path(u"20260314.log"_qs));
            s.tree.file(u"elsewhere"_qs);
            QVERIFY(QByteArray(kind) == "fifo" ? ::mkfifo(log.constData(), 0600) == 0
                                               : ::symlink("elsewhere", log.constData()) == 0);
            s.engine.reporter().writeLine({u"Start"_qs});
            QCOMPARE(s.tree.read(u"elsewhere"_qs), QByteArray());
        }
    }
};

QTEST_GUILESS_MAIN(TestErrorLog)
#include "tst_errorlog.moc"

#include <QDir>
#include <QTest>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include "common/temptree.h"
#include "core/platform/faultyfileops.h"

using namespace duomir;
using duomir::test::TempTree;

class TestFileOps : public QObject
{
    Q_OBJECT

private:
    // Names in the folder that look like a copy's temporary file.
    static QStringList leftovers(const TempTree &tree, const QString &dir = {})
    {
        return QDir(tree.path(dir))
            .entryList({QStringLiteral("*.duomir-*")},
                       QDir::AllEntries | QDir::Hidden | QDir::System);
    }

    static constexpr std::int64_t chunk = 64 * 1024;

private Q_SLOTS:
    void copyCarriesContentTimeAndMode_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<unsigned>("mode");
        QTest::addColumn<int>("copyRangeErrno");
        QTest::newRow("empty") << 0 << 0644u << 0;
        QTest::newRow("several chunks") << int(3 * chunk + 17) << 0640u << 0;
        QTest::newRow("read-only source") << 1000 << 0444u << 0;
        QTest::newRow("read/write fallback") << int(2 * chunk + 5) << 0755u << EXDEV;
    }
    void copyCarriesContentTimeAndMode()
    {
        QFETCH(int, size);
        QFETCH(unsigned, mode);
        QFETCH(int, copyRangeErrno);
        TempTree tree;
        QByteArray data(size, '\0');
        for (int i = 0; i < size; ++i)
            data[i] = char(i * 7 + i / 251);
        tree.file(QStringLiteral("s/f"), data, 1'600'000'000);
        tree.setMode(QStringLiteral("s/f"), mode);
        tree.file(QStringLiteral("d/f"), "old content");

        FaultyFileOps ops(chunk);
        ops.copyRangeErrno = copyRangeErrno;
        std::int64_t lastDone = 0;
        const bool cancel = false;
        const OpResult r = ops.copyFile(
            tree.path(QStringLiteral("s/f")), tree.path(QStringLiteral("d/f")),
            [&](std::int64_t total, std::int64_t done) {
                QVERIFY(done > lastDone);
                QCOMPARE(total, std::int64_t(size));
                lastDone = done;
            },
            cancel);
        QCOMPARE(r.error, 0);
        QCOMPARE(tree.read(QStringLiteral("d/f")), data);
        QCOMPARE(tree.mtime(QStringLiteral("d/f")), 1'600'000'000);
        QCOMPARE(tree.mode(QStringLiteral("d/f")), mode);
        QCOMPARE(lastDone, std::int64_t(size));
        QVERIFY(leftovers(tree, QStringLiteral("d")).isEmpty());
    }

    // Every way a copy can fail leaves the old target whole and no temporary file behind.
    void failedCopyKeepsOldTarget_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<int>("expected");
        QTest::newRow("disk full on 2nd write") << QStringLiteral("write") << ENOSPC;
        QTest::newRow("disk full, read/write") << QStringLiteral("write-fallback") << ENOSPC;
        QTest::newRow("rename refused") << QStringLiteral("rename") << EACCES;
        QTest::newRow("cancelled mid-file") << QStringLiteral("cancel") << ECANCELED;
        QTest::newRow("source vanished") << QStringLiteral("vanish") << ENOENT;
    }
    void failedCopyKeepsOldTarget()
    {
        QFETCH(QString, fault);
        QFETCH(int, expected);
        TempTree tree;
        tree.file(QStringLiteral("s/big"), QByteArray(int(5 * chunk), 'n'));
        tree.file(QStringLiteral("d/big"), "previous", 1'500'000'000);

        FaultyFileOps ops(chunk);
        bool cancel = false;
        if (fault.startsWith(u"write"))
            ops.failWriteAt = 2;
        if (fault == u"write-fallback")
            ops.copyRangeErrno = EXDEV;
        if (fault == u"rename")
            ops.renameErrno = EACCES;
        if (fault == u"vanish")
            ops.sourcesVanish = true;
        const OpResult r = ops.copyFile(
            tree.path(QStringLiteral("s/big")), tree.path(QStringLiteral("d/big")),
            [&](std::int64_t, std::int64_t done) {
                if (fault == u"cancel" && done >= 2 * chunk)
                    cancel = true;
            },
            cancel);
        QCOMPARE(r.error, expected);
        QCOMPARE(tree.read(QStringLiteral("d/big")), QByteArray("previous"));
        QCOMPARE(tree.mtime(QStringLiteral("d/big")), 1'500'000'000);
        QVERIFY2(leftovers(tree, QStringLiteral("d")).isEmpty(),
                 qPrintable(leftovers(tree, QStringLiteral("d")).join(u' ')));
    }

    // A link is copied as a link, its target not followed; a FIFO would block a reader forever and
    // is refused with a text that says why, leaving the file in the way alone.
    void nonRegularSource_data()
    {
        QTest::addColumn<bool>("fifo");
        QTest::newRow("symbolic link") << false;
        QTest::newRow("FIFO") << true;
    }
    void nonRegularSource()
    {
        QFETCH(bool, fifo);
        TempTree tree;
        tree.file(QStringLiteral("d/x"), "a file in the way");
        if (fifo)
            QVERIFY(::mkfifo(tree.nativePath("x").constData(), 0644) == 0);
        else
            tree.symlink(QStringLiteral("x"), "../no/such target");
        const bool cancel = false;
        const OpResult r = PosixFileOps().copyFile(tree.path(QStringLiteral("x")),
                                                   tree.path(QStringLiteral("d/x")), {}, cancel);
        QCOMPARE(tree.snapshot(QStringLiteral("d")).size(), 1);
        if (fifo) {
            QCOMPARE(r.error, int(OpError::NotRegularFile));
            QVERIFY(errorText(r.error).contains(u"FIFO"));
            QCOMPARE(tree.read(QStringLiteral("d/x")), QByteArray("a file in the way"));
            return;
        }
        QCOMPARE(r.error, 0);
        char target[64] = {};
        QVERIFY(::readlink(tree.nativePath("d/x").constData(), target, sizeof target - 1) > 0);
        QCOMPARE(QByteArray(target), QByteArray("../no/such target"));
    }

    void clearReadOnlyKeepsOtherBits_data()
    {
        QTest::addColumn<unsigned>("before");
        QTest::addColumn<unsigned>("after");
        QTest::newRow("read-only with group/other bits") << 0454u << 0654u;
        QTest::newRow("setgid kept") << 02555u << 02755u;
        QTest::newRow("already writable") << 0600u << 0600u;
    }
    void clearReadOnlyKeepsOtherBits()
    {
        QFETCH(unsigned, before);
        QFETCH(unsigned, after);
        TempTree tree;
        tree.file(QStringLiteral("f"));
        tree.setMode(QStringLiteral("f"), before);
        QCOMPARE(PosixFileOps().clearReadOnly(tree.path(QStringLiteral("f"))).error, 0);
        QCOMPARE(tree.mode(QStringLiteral("f")), after);
    }

    void makeDirectoryTakesTemplateBits()
    {
        TempTree tree;
        tree.dir(QStringLiteral("template"));
        tree.setMode(QStringLiteral("template"), 0750);
        PosixFileOps ops;
        const auto make = [&] {
            return ops.makeDirectory(tree.path(u"new"_qs), tree.path(u"template"_qs)).error;
        };
        QCOMPARE(make(), 0);
        QCOMPARE(tree.mode(QStringLiteral("new")), 0750u);
        QCOMPARE(make(), EEXIST); // an existing folder is no success: the caller reports it
        QCOMPARE(ops.makeDirectory(tree.path(QStringLiteral("a/b")), {}).error, ENOENT);
        tree.file(QStringLiteral("new/x"));
        QCOMPARE(ops.removeDirectory(tree.path(QStringLiteral("new"))).error, ENOTEMPTY);
        QVERIFY(tree.exists(QStringLiteral("new/x")));
    }
};

QTEST_GUILESS_MAIN(TestFileOps)
#include "tst_fileops.moc"

#include <QDir>
#include <QFile>
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
    // A copy carries content, time and mode; every way it can fail leaves the old target whole.
    // Either way no temporary file stays behind.
    void copy_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<unsigned>("mode");
        QTest::addColumn<QString>("fault");
        QTest::addColumn<int>("expected");
        const int big = int(5 * chunk);
        QTest::newRow("empty") << 0 << 0644u << QString() << 0;
        QTest::newRow("several chunks") << int(3 * chunk + 17) << 0640u << QString() << 0;
        QTest::newRow("read-only source") << 1000 << 0444u << QString() << 0;
        QTest::newRow("read/write fallback") << int(2 * chunk + 5) << 0755u << u"exdev"_qs << 0;
        QTest::newRow("disk full on 2nd write") << big << 0644u << u"write"_qs << ENOSPC;
        QTest::newRow("disk full, read/write") << big << 0644u << u"write exdev"_qs << ENOSPC;
        QTest::newRow("rename refused") << big << 0644u << u"rename"_qs << EACCES;
        QTest::newRow("cancelled mid-file") << big << 0644u << u"cancel"_qs << ECANCELED;
        QTest::newRow("source vanished") << big << 0644u << u"vanish"_qs << ENOENT;
    }
    void copy()
    {
        QFETCH(int, size);
        QFETCH(unsigned, mode);
        QFETCH(QString, fault);
        QFETCH(int, expected);
        TempTree tree;
        QByteArray data(size, '\0');
        for (int i = 0; i < size; ++i)
            data[i] = char(i * 7 + i / 251);
        tree.file(QStringLiteral("s/f"), data, 1'600'000'000);
        tree.setMode(QStringLiteral("s/f"), mode);
        tree.file(QStringLiteral("d/f"), "previous", 1'500'000'000);

        FaultyFileOps ops(chunk);
        ops.copyRangeErrno = fault.contains(u"exdev") ? EXDEV : 0;
        ops.failWriteAt = fault.startsWith(u"write") ? 2 : 0;
        ops.renameErrno = fault == u"rename" ? EACCES : 0;
        ops.sourcesVanish = fault == u"vanish";
        std::atomic<bool> cancel = false;
        std::int64_t lastDone = 0;
        const OpResult r = ops.copyFile(
            tree.path(QStringLiteral("s/f")), tree.path(QStringLiteral("d/f")),
            [&](std::int64_t total, std::int64_t done) {
                QVERIFY(done > lastDone);
                QCOMPARE(total, std::int64_t(size));
                lastDone = done;
                cancel = fault == u"cancel" && done >= 2 * chunk;
            },
            cancel);
        QCOMPARE(r.error, expected);
        QCOMPARE(tree.read(QStringLiteral("d/f")), expected ? QByteArray("previous") : data);
        QCOMPARE(tree.mtime(QStringLiteral("d/f")), expected ? 1'500'000'000 : 1'600'000'000);
        if (!expected) {
            QCOMPARE(tree.mode(QStringLiteral("d/f")), mode);
            QCOMPARE(lastDone, std::int64_t(size));
        }
        QVERIFY2(leftovers(tree, QStringLiteral("d")).isEmpty(),
                 qPrintable(leftovers(tree, QStringLiteral("d")).join(u' ')));
    }

    // Holes in the source stay holes, on both copy paths, wherever they lie; the data between them
    // arrives unchanged.
    void holesStayHoles_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QList<int>>("layout"); // alternating hole and data lengths, in chunks
        QTest::newRow("hole, data, hole") << QString() << QList<int>{8, 2, 8};
        QTest::newRow("data, hole, data") << QString() << QList<int>{0, 1, 16, 3};
        QTest::newRow("only a hole") << QString() << QList<int>{20};
        QTest::newRow("read/write fallback") << u"exdev"_qs << QList<int>{8, 2, 8};
    }
    void holesStayHoles()
    {
        QFETCH(QString, fault);
        QFETCH(QList<int>, layout);
        TempTree tree;
        tree.file(QStringLiteral("d/f"), "previous");
        QByteArray expected;
        {
            QFile f(tree.path(QStringLiteral("s")));
            QVERIFY(f.open(QIODevice::WriteOnly));
            for (qsizetype i = 0; i < layout.size(); ++i) {
                const qsizetype bytes = layout[i] * chunk;
                const QByteArray part(bytes, i % 2 ? char('a' + i) : '\0');
                if (i % 2)
                    f.write(part);
                else
                    f.seek(f.pos() + bytes);
                expected += part;
            }
            QVERIFY(f.resize(expected.size()));
        }
        struct stat st;
        QVERIFY(::stat(tree.nativePath("s").constData(), &st) == 0);
        if (st.st_blocks * 512 >= st.st_size)
            QSKIP("this file system keeps no holes");

        FaultyFileOps ops(chunk);
        ops.copyRangeErrno = fault.contains(u"exdev") ? EXDEV : 0;
        const std::atomic<bool> cancel = false;
        std::int64_t lastDone = 0;
        const OpResult r = ops.copyFile(
            tree.path(QStringLiteral("s")), tree.path(QStringLiteral("d/f")),
            [&](std::int64_t, std::int64_t done) { lastDone = done; }, cancel);
        QCOMPARE(r.error, 0);
        QCOMPARE(tree.read(QStringLiteral("d/f")), expected);
        QCOMPARE(lastDone, std::int64_t(expected.size()));
        struct stat copied;
        QVERIFY(::stat(tree.nativePath("d/f").constData(), &copied) == 0);
        QVERIFY2(copied.st_blocks <= st.st_blocks + 16,
                 qPrintable(u"%1 blocks for %2"_qs.arg(copied.st_blocks).arg(st.st_blocks)));
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

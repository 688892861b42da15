#include "Quillmoor/PakWriter.h"

#include "Quillmoor/PakReader.h"
#include "support/PackageBuilder.h"
#include "support/SizeLimit.h"
#include "support/Thrown.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

namespace {

QString name(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

QByteArray contents(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 31 + size);
    return bytes;
}

QString pathOf(int i)
{
    return QStringLiteral("/dir/%1.bin").arg(i, 4, 10, QLatin1Char('0'));
}

qint32 numberAt(const QByteArray &bytes, int offset)
{
    return qFromBigEndian<qint32>(bytes.constData() + offset);
}

/// The levels of index blocks from the root down to the first leaf.
int indexLevels(const QByteArray &package)
{
    const int headerSize = numberAt(package, 6);
    const int blockSize = numberAt(package, 10);
    int levels = 0;
    int block = headerSize + numberAt(package, 62) * blockSize;
    while (package.mid(block, 2) == "II") {
        ++levels;
        block = headerSize + numberAt(package, block + 7) * blockSize;
    }
    return levels;
}

} // namespace

class TestPakWriter : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    void whatIsWrittenIsReadBack_data()
    {
        QTest::addColumn<int>("blockSize");
        QTest::addColumn<int>("files");
        QTest::addColumn<int>("levels");
        QTest::newRow("nothing") << 2048 << 0 << 0;
        QTest::newRow("one leaf") << 2048 << 3 << 0;
        QTest::newRow("one level") << 2048 << 100 << 1;
        QTest::newRow("two children each") << 64 << 100 << 7;
        QTest::newRow("three children each") << 100 << 300 << 6;
        QTest::newRow("a smaller block than there may be") << 1 << 10 << 3;
        QTest::newRow("a larger block than there may be") << 2000000000 << 10 << 0;
    }

    void whatIsWrittenIsReadBack()
    {
        QFETCH(int, blockSize);
        QFETCH(int, files);
        PakWriter writer(blockSize);
        QStringList paths;
        for (int i = 0; i < files; ++i) {
            paths.append(pathOf(i));
            writer.add(pathOf(i), contents(i * i % 1000));
        }
        const QString package = m_dir.filePath(name("test.pak"));
        writer.save(package);
        PakReader reader(package);
        QCOMPARE(reader.fileList(), paths);
        QCOMPARE(reader.contentType(), PakReader::Assets2);
        for (int i = 0; i < files; ++i)
            QCOMPARE(reader.getFile(pathOf(i)), contents(i * i % 1000));
        QVERIFY(!reader.hasFile(name("/dir/absent.bin")));
        QTEST(indexLevels(writer.toBytes()), "levels");
        QCOMPARE(reader.rootIsLeaf(), indexLevels(writer.toBytes()) == 0);
    }

    void aWholeNumberOfBlocksFollowsTheHeader()
    {
        PakWriter writer(100);
        writer.add(name("/a"), contents(1000));
        const QByteArray bytes = writer.toBytes();
        QCOMPARE(bytes.left(6), QByteArray("QMBF02"));
        QCOMPARE((bytes.size() - numberAt(bytes, 6)) % 100, 0);
    }

    void valuesThatEndWithABlockAreReadBack()
    {
        for (int size = 0; size < 300; ++size) {
            PakWriter writer(64);
            writer.add(name("/a"), contents(size));
            const QString package = m_dir.filePath(name("exact.pak"));
            writer.save(package);
            QCOMPARE(PakReader(package).getFile(name("/a")), contents(size));
        }
    }

    void bothRootRecordsAreTheSame()
    {
        PakWriter writer(64);
        for (int i = 0; i < 30; ++i)
            writer.add(pathOf(i), contents(10));
        const QByteArray bytes = writer.toBytes();
        QCOMPARE(bytes.mid(62, 5), bytes.mid(70, 5));
        QVERIFY(numberAt(bytes, 62) > 0);
    }

    void theSameFilesGiveTheSameBytes()
    {
        PakWriter forwards(128);
        PakWriter backwards(128);
        for (int i = 0; i < 50; ++i) {
            forwards.add(pathOf(i), contents(i));
            backwards.add(pathOf(49 - i), contents(49 - i));
        }
        QCOMPARE(forwards.toBytes(), backwards.toBytes());
        forwards.save(m_dir.filePath(name("same.pak")));
        QFile file(m_dir.filePath(name("same.pak")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), backwards.toBytes());
    }

    void aFileAddedAgainIsReplaced()
    {
        PakWriter writer;
        writer.add(name("/a"), "old");
        writer.add(name("/a"), "new");
        const QString package = m_dir.filePath(name("again.pak"));
        writer.save(package);
        PakReader reader(package);
        QCOMPARE(reader.getFile(name("/a")), QByteArray("new"));
        QCOMPARE(reader.fileList(), QStringList{name("/a")});
    }

    void aPlaceThatCannotBeWrittenIsReported()
    {
        const QString place = m_dir.filePath(name("no/such/directory/x.pak"));
        const QString message = thrownBy([&] { PakWriter().save(place); });
        QVERIFY2(message.startsWith(name("Could not write %1: ").arg(place)), qPrintable(message));
    }

    void fullDiskIsNamedAndLeavesTheOlderPackage()
    {
        const QString package = m_dir.filePath(name("full.pak"));
        PakWriter().save(package);
        const qint64 older = QFileInfo(package).size();
        PakWriter writer;
        writer.add(pathOf(1), contents(100000));
        const SizeLimit limit(50000);
        QCOMPARE(thrownBy([&] { writer.save(package); }),
                 name("Could not write the package: File too large"));
        QCOMPARE(QFileInfo(package).size(), older);
    }
};

QTEST_GUILESS_MAIN(TestPakWriter)
#include "tst_PakWriter.moc"

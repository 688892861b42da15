#include "Quillmoor/PakReader.h"

#include "Quillmoor/PakWriter.h"
#include "support/MessageCapture.h"
#include "support/PackageBuilder.h"
#include "support/ResourceWatch.h"
#include "support/Thrown.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <random>

namespace {

constexpr quint64 Huge = Q_UINT64_C(1) << 60;

QString name(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

bool isKnownMessage(const QString &message)
{
    static const QStringList messages{
        name("(nothing thrown)"),
        name("Invalid Block File Header."),
        name("Invalid Database File Identifier."),
        name("Invalid Database Content Identifier."),
        name("Invalid Database Key Size."),
        name("Unknown block type found."),
        name("Invalid block referred to by index"),
        name("Premature end of leaf block"),
        name("Invalid leaf block continuation"),
        name("Invalid Leaf block continuation block"),
        name("Invlaid Leaf block continuation block"),
        name("File not found"),
        name("File table not found"),
    };
    static const QRegularExpression withIndex(
        name("^Invalid leaf block continuation index '-?[0-9]+'$"));
    return messages.contains(message) || withIndex.match(message).hasMatch();
}

/// A leaf with `firstEntry`, whose chain goes to the blocks `next` of the following leaf blocks.
PackageBuilder chained(const QByteArray &firstEntry, const QVector<qint32> &next)
{
    PackageBuilder builder;
    const QByteArray data =
        (PackageBuilder::leafStream({firstEntry}) + QByteArray(200, '\x81')).left(122);
    builder.addLeafBlock(data, next.first());
    for (int i = 1; i < next.size(); ++i)
        builder.addLeafBlock(QByteArray(122, '\x81'), next.at(i));
    return builder;
}

QByteArray entryOfLength(const QString &path, quint64 length)
{
    return PackageBuilder::key(path) + PackageBuilder::quantity(length);
}

QByteArray smallPackage(int blockSize)
{
    PakWriter writer(blockSize);
    for (int i = 0; i < 8; ++i)
        writer.add(QStringLiteral("/%1").arg(i), QByteArray(i * 11, 'v'));
    return writer.toBytes();
}

} // namespace

class TestPakHostile : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString packageOf(const QByteArray &bytes)
    {
        QString path = m_dir.filePath(name("hostile.pak"));
        writeFile(path, bytes);
        return path;
    }

    QString getMessage(const QByteArray &bytes)
    {
        PakReader reader(packageOf(bytes));
        return thrownBy([&] { reader.getFile(name("/a")); });
    }

    QString listMessage(const QByteArray &bytes)
    {
        PakReader reader(packageOf(bytes));
        return thrownBy([&] { reader.fileList(); });
    }

    void everyLookupEndsWell(const QByteArray &bytes)
    {
        PakReader reader(packageOf(bytes));
        for (const char *const file : {"/0", "/3", "/7", "/absent"}) {
            const QString message = thrownBy([&] { reader.getFile(name(file)); });
            QVERIFY2(isKnownMessage(message), qPrintable(message));
        }
        const QString message = thrownBy([&] { reader.fileList(); });
        QVERIFY2(isKnownMessage(message), qPrintable(message));
    }

private slots:
    void aChainInCirclesEnds_data()
    {
        QTest::addColumn<QVector<qint32>>("next");
        QTest::newRow("itself") << QVector<qint32>{0};
        QTest::newRow("two") << QVector<qint32>{1, 0};
        QTest::newRow("three, past the first") << QVector<qint32>{1, 2, 1};
    }

    void aChainInCirclesEnds()
    {
        QFETCH(QVector<qint32>, next);
        const ResourceWatch watch;
        const QString circle = name("Invalid leaf block continuation index '%1'").arg(next.last());
        const QByteArray read = entryOfLength(name("/a"), Huge);
        QCOMPARE(getMessage(chained(read, next).bytes()), circle);
        const QByteArray skip = entryOfLength(name("/b"), Huge);
        QCOMPARE(getMessage(chained(skip, next).bytes()), circle);
        const QByteArray endlessQuantity = PackageBuilder::key(name("/a"));
        QCOMPARE(getMessage(chained(endlessQuantity, next).bytes()), circle);
        const QByteArray list = PackageBuilder::key(name("_index")) + PackageBuilder::quantity(1)
            + PackageBuilder::quantity(Huge);
        QCOMPARE(listMessage(chained(list, next).bytes()), circle);
        QVERIFY(watch.isWithinLimits());
    }

    void indexBlocksInCirclesEnd()
    {
        const ResourceWatch watch;
        PackageBuilder builder;
        const QByteArray low(32, '\0');
        builder.addIndexBlock(1, {{low, 1}});
        builder.addIndexBlock(2, {{low, 2}});
        builder.addIndexBlock(1, {{low, 1}});
        QCOMPARE(getMessage(builder.bytes()), name("Invalid block referred to by index"));
        QVERIFY(watch.isWithinLimits());
    }

    void circlesThroughManyBlocksEnd()
    {
        PackageBuilder indices;
        indices.blockSize = 12;
        PackageBuilder leaves;
        leaves.blockSize = 10;
        const int blocks = 20000;
        QByteArray ring;
        QByteArray chain;
        for (int i = 0; i < blocks; ++i) {
            const qint32 next = (i + blocks - 1) % blocks;
            ring += "II" + QByteArray(1, '\0') + PackageBuilder::number(0)
                + PackageBuilder::number(next) + '\0';
            chain += "LL\x7F\x81\x81\x81" + PackageBuilder::number(next);
        }
        const ResourceWatch watch;
        QCOMPARE(getMessage(indices.bytes() + ring), name("Invalid block referred to by index"));
        QVERIFY(getMessage(leaves.bytes() + chain)
                    .startsWith(name("Invalid leaf block continuation index '")));
        QVERIFY(watch.isWithinLimits());
    }

    void hugeNumbersEnd_data()
    {
        QTest::addColumn<quint64>("number");
        QTest::newRow("2^60") << Huge;
        QTest::newRow("2^63") << (Q_UINT64_C(1) << 63);
        QTest::newRow("2^64 - 1") << ~Q_UINT64_C(0);
        QTest::newRow("2^31") << (Q_UINT64_C(1) << 31);
        QTest::newRow("2^32") << (Q_UINT64_C(1) << 32);
    }

    void hugeNumbersEnd()
    {
        QFETCH(quint64, number);
        const ResourceWatch watch;
        const QString end = name("Premature end of leaf block");
        const auto package = [](const QByteArray &entry, qint32 blockSize) {
            PackageBuilder builder;
            const QByteArray stream = PackageBuilder::leafStream({entry});
            builder.addLeafBlock(stream + QByteArray(122 - stream.size(), '\0'));
            builder.blockSize = blockSize;
            return builder.bytes();
        };
        const QByteArray index = PackageBuilder::key(name("_index"));
        const QByteArray quantity = PackageBuilder::quantity(number);
        for (const qint32 blockSize : {128, 2147483647}) {
            QCOMPARE(getMessage(package(entryOfLength(name("/a"), number), blockSize)), end);
            QCOMPARE(getMessage(package(entryOfLength(name("/b"), number), blockSize)), end);
            QCOMPARE(listMessage(package(index + '\1' + quantity, blockSize)), end);
            QCOMPARE(listMessage(package(index + '\1' + '\1' + quantity, blockSize)), end);
        }
        QVERIFY(watch.isWithinLimits());
    }

    void hugeCountsEnd()
    {
        const ResourceWatch watch;
        PackageBuilder leaf;
        leaf.addLeafBlock(PackageBuilder::number(2147483647));
        QCOMPARE(getMessage(leaf.bytes()), name("Premature end of leaf block"));
        const QByteArray manyKeys = "II" + QByteArray(1, '\0') + PackageBuilder::number(2147483647)
            + PackageBuilder::number(0) + QByteArray(1000, '\0');
        for (const qint32 blockSize : {50, 128, 1011, 2147483647}) {
            PackageBuilder index;
            index.blockSize = blockSize;
            const QString message = getMessage(index.bytes() + manyKeys);
            QVERIFY2(isKnownMessage(message) && message != name("(nothing thrown)"),
                     qPrintable(message));
        }
        QVERIFY(watch.isWithinLimits());
    }

    void extremeSizesInTheHeaderEnd_data()
    {
        QTest::addColumn<int>("headerSize");
        QTest::addColumn<int>("blockSize");
        for (const int headerSize : {0, 75, 80, 81, 2147483647}) {
            for (const int blockSize : {10, 11, 46, 47, 128, 2147483647})
                QTest::addRow("%d, %d", headerSize, blockSize) << headerSize << blockSize;
        }
    }

    void extremeSizesInTheHeaderEnd()
    {
        QFETCH(int, headerSize);
        QFETCH(int, blockSize);
        const ResourceWatch watch;
        QByteArray bytes = smallPackage(128);
        bytes.replace(6, 4, PackageBuilder::number(headerSize));
        bytes.replace(10, 4, PackageBuilder::number(blockSize));
        everyLookupEndsWell(bytes);
        QVERIFY(watch.isWithinLimits());
    }

    void aPackageCutAtAnyByteEnds_data()
    {
        QTest::addColumn<int>("blockSize");
        QTest::newRow("64") << 64;
        QTest::newRow("300") << 300;
    }

    void aPackageCutAtAnyByteEnds()
    {
        QFETCH(int, blockSize);
        const QByteArray whole = smallPackage(blockSize);
        for (int size = 0; size < whole.size(); ++size) {
            const ResourceWatch watch;
            everyLookupEndsWell(whole.left(size));
            QVERIFY(watch.isWithinLimits());
            if (size < 75)
                QCOMPARE(getMessage(whole.left(size)), name("Invalid Block File Header."));
        }
        everyLookupEndsWell(whole);
    }

    void changedBytesEnd()
    {
        std::minstd_rand random(20);
        const QByteArray whole = smallPackage(64);
        const QByteArray favourites("\0\1\x7F\x80\xFF"
                                    "IL",
                                    7);
        for (int round = 0; round < 1500; ++round) {
            QByteArray bytes = whole;
            // The file's fixed header stays, most changes shall get past it.
            const int first = round % 10 == 0 ? 0 : 62;
            for (auto changes = random() % 8; changes < 8; ++changes) {
                const auto at = first + static_cast<int>(random()) % (bytes.size() - first);
                bytes[at] = favourites.at(static_cast<int>(random() % 7));
            }
            const ResourceWatch watch;
            everyLookupEndsWell(bytes);
            QVERIFY2(watch.isWithinLimits(), qPrintable(QString::number(round)));
        }
    }

    void changedNumbersEnd()
    {
        std::minstd_rand random(21);
        const QByteArray whole = smallPackage(64);
        for (int round = 0; round < 1500; ++round) {
            QByteArray bytes = whole;
            const int at = 62 + static_cast<int>(random() % static_cast<uint>(bytes.size() - 66));
            const auto number = static_cast<qint32>(random() % 60) - 5;
            bytes.replace(at, 4, PackageBuilder::number(number));
            const ResourceWatch watch;
            everyLookupEndsWell(bytes);
            QVERIFY2(watch.isWithinLimits(), qPrintable(QString::number(round)));
        }
    }

    void aHugeSparsePackageEndsInLittleMemory()
    {
        const ResourceWatch watch;
        PackageBuilder builder;
        builder.blockSize = 4096;
        builder.addLeafBlock(PackageBuilder::number(1) + entryOfLength(name("/a"), Huge), 500000);
        const QString path = packageOf(builder.bytes());
        QVERIFY(QFile::resize(path, Q_INT64_C(3) << 30));
        PakReader reader(path);
        QCOMPARE(thrownBy([&] { reader.getFile(name("/a")); }),
                 name("Invalid leaf block continuation"));
        QCOMPARE(thrownBy([&] { reader.getFile(name("/b")); }),
                 name("Invalid Leaf block continuation block"));
        QVERIFY(watch.isWithinLimits());
        QFile::remove(path);
    }
};

QTEST_GUILESS_MAIN(TestPakHostile)
#include "tst_PakHostile.moc"

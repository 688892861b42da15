#include "Quillmoor/PakReader.h"

#include "support/MessageCapture.h"
#include "support/PackageBuilder.h"
#include "support/Thrown.h"

#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

namespace {

QString name(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

/// A leaf's stream of one entry that ends `room` bytes before the end of the first block's data.
QByteArray streamThatLeaves(int room, const PackageBuilder &builder, const QString &path)
{
    const int valueSize = builder.dataPerLeafBlock() - 4 - 32 - 1 - room;
    return PackageBuilder::leafStream({PackageBuilder::entry(path, QByteArray(valueSize, 'v'))});
}

/// 32 bytes that are a key no path has.
QByteArray keyOf(char byte)
{
    return QByteArray(32, byte);
}

QString neighbour(const QString &path, bool above)
{
    for (int i = 0;; ++i) {
        QString candidate = QStringLiteral("/candidate/%1").arg(i);
        if ((PackageBuilder::key(candidate) > PackageBuilder::key(path)) == above)
            return candidate;
    }
}

} // namespace

class TestPakReader : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString packageOf(const QByteArray &bytes)
    {
        QString path = m_dir.filePath(name("test.pak"));
        writeFile(path, bytes);
        return path;
    }

    QString packageOf(const PackageBuilder &builder) { return packageOf(builder.bytes()); }

    QString openMessage(const PackageBuilder &builder) { return openMessage(builder.bytes()); }

    QString openMessage(const QByteArray &bytes)
    {
        PakReader reader(packageOf(bytes));
        QString message = thrownBy([&] { reader.open(); });
        if (reader.isOpen())
            return name("left open: ") + message;
        return message;
    }

    QString lookUpMessage(const PackageBuilder &builder, const QString &path)
    {
        PakReader reader(packageOf(builder));
        return thrownBy([&] { reader.getFile(path); });
    }

private slots:
    void aNewReaderKnowsNothingOfItsFile()
    {
        const PakReader reader(name("/nowhere/x.pak"));
        QVERIFY(!reader.isOpen());
        QCOMPARE(reader.headerSize(), 0);
        QCOMPARE(reader.blockSize(), 0);
        QCOMPARE(reader.rootBlock(), 0);
        QVERIFY(!reader.rootIsLeaf());
    }

    void openingReadsTheHeader()
    {
        PackageBuilder builder;
        builder.headerSize = 100;
        builder.blockSize = 64;
        builder.rootBlock = 3;
        builder.contentIdentifier = "Assets2";
        PakReader reader(packageOf(builder));
        reader.open();
        QVERIFY(reader.isOpen());
        QVERIFY(!reader.isWritable());
        QCOMPARE(reader.headerSize(), 100);
        QCOMPARE(reader.blockSize(), 64);
        QCOMPARE(reader.keySize(), 32);
        QCOMPARE(reader.rootBlock(), 3);
        QVERIFY(reader.rootIsLeaf());
        QCOMPARE(reader.contentType(), PakReader::Assets2);
        reader.open();
        QVERIFY(reader.isOpen());
    }

    void theRootSelectorChoosesTheRootRecord_data()
    {
        QTest::addColumn<int>("selector");
        QTest::addColumn<int>("rootBlock");
        QTest::addColumn<bool>("rootIsLeaf");
        QTest::newRow("0") << 0 << 11 << true;
        QTest::newRow("1") << 1 << 22 << false;
        QTest::newRow("127") << 127 << 22 << false;
        QTest::newRow("-1") << -1 << 22 << false;
    }

    void theRootSelectorChoosesTheRootRecord()
    {
        QFETCH(int, selector);
        PackageBuilder builder;
        builder.rootSelector = static_cast<char>(selector);
        builder.rootBlock = 11;
        builder.secondRootBlock = 22;
        builder.secondRootIsLeaf = 0;
        PakReader reader(packageOf(builder));
        reader.open();
        QTEST(reader.rootBlock(), "rootBlock");
        QTEST(reader.rootIsLeaf(), "rootIsLeaf");
    }

    void anyLeafFlagButZeroIsTrue()
    {
        PackageBuilder builder;
        builder.rootIsLeaf = static_cast<char>(0x80);
        PakReader reader(packageOf(builder));
        reader.open();
        QVERIFY(reader.rootIsLeaf());
    }

    void identifiersAreCutAtTheFirstNul()
    {
        PackageBuilder builder;
        builder.contentIdentifier = QByteArray("Assets1\0xyz", 11);
        builder.databaseIdentifier = QByteArray("BTreeDB4\0abc", 12);
        PakReader reader(packageOf(builder));
        reader.open();
        QCOMPARE(reader.contentType(), PakReader::Assets1);
    }

    void aFileThatIsNotThereCannotBeOpened()
    {
        PakReader reader(m_dir.filePath(name("missing.pak")));
        QCOMPARE(thrownBy([&] { reader.open(); }), name("Could not open file."));
        QVERIFY(!reader.isOpen());
        PakReader directory(m_dir.path());
        QCOMPARE(thrownBy([&] { directory.open(); }), name("Could not open file."));
        PakReader device(name("/dev/zero"));
        QCOMPARE(thrownBy([&] { device.open(); }), name("Could not open file."));
    }

    void aBadHeaderIsRefusedAndTheReaderClosed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("message");
        const PackageBuilder good;
        PackageBuilder builder;
        builder.magic = "QMBF03";
        QTest::newRow("magic") << builder.bytes() << "Invalid Block File Header.";
        QTest::newRow("empty") << QByteArray() << "Invalid Block File Header.";
        QTest::newRow("5 bytes") << QByteArray("QMBF0") << "Invalid Block File Header.";
        QTest::newRow("74 bytes") << good.bytes().left(74) << "Invalid Block File Header.";
        builder = good;
        builder.databaseIdentifier = "BTreeDB5";
        QTest::newRow("database") << builder.bytes() << "Invalid Database File Identifier.";
        builder.databaseIdentifier = "btreedb4";
        QTest::newRow("database case") << builder.bytes() << "Invalid Database File Identifier.";
        builder.databaseIdentifier = "BTreeDB4x";
        QTest::newRow("database longer") << builder.bytes() << "Invalid Database File Identifier.";
        builder = good;
        builder.contentIdentifier = "Assets3";
        QTest::newRow("content") << builder.bytes() << "Invalid Database Content Identifier.";
        builder.contentIdentifier = "assets1";
        QTest::newRow("content case") << builder.bytes() << "Invalid Database Content Identifier.";
        builder.contentIdentifier = "Assets1xxxxx";
        QTest::newRow("content without NUL")
            << builder.bytes() << "Invalid Database Content Identifier.";
        builder = good;
        builder.keySize = 20;
        QTest::newRow("key size") << builder.bytes() << "Invalid Database Key Size.";
        // The first failing check speaks.
        builder.contentIdentifier = "Assets3";
        QTest::newRow("content before key size")
            << builder.bytes() << "Invalid Database Content Identifier.";
        builder.databaseIdentifier = "x";
        QTest::newRow("database before content")
            << builder.bytes() << "Invalid Database File Identifier.";
        builder.magic = "x";
        QTest::newRow("magic before database") << builder.bytes() << "Invalid Block File Header.";
        for (const int size : {0, -1, 9, -2147483647}) {
            QByteArray bytes = good.bytes();
            QTest::addRow("block size %d", size)
                << bytes.replace(10, 4, PackageBuilder::number(size))
                << "Invalid Block File Header.";
        }
        QByteArray bytes = good.bytes();
        QTest::newRow("header size -1")
            << bytes.replace(6, 4, PackageBuilder::number(-1)) << "Invalid Block File Header.";
    }

    void aBadHeaderIsRefusedAndTheReaderClosed()
    {
        QFETCH(QByteArray, bytes);
        QTEST(openMessage(bytes), "message");
    }

    void aHeaderOf75BytesIsLongEnough()
    {
        PakReader reader(packageOf(PackageBuilder().bytes().left(75)));
        reader.open();
        QVERIFY(reader.isOpen());
        QCOMPARE(thrownBy([&] { reader.getFile(name("/a")); }), name("Unknown block type found."));
    }

    void aFailedOpenChecksAgain()
    {
        PakReader reader(packageOf(QByteArray("QMBF")));
        QCOMPARE(thrownBy([&] { reader.hasFile(name("/a")); }), name("Invalid Block File Header."));
        QCOMPARE(reader.blockSize(), 0);
        PackageBuilder builder;
        builder.addLeafChain(PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), "x")}));
        packageOf(builder);
        QVERIFY(reader.hasFile(name("/a")));
    }

    void theFileClassesOwnOpenChecksToo()
    {
        PakReader bad(packageOf(QByteArray("QMBF")));
        QFile &asFile = bad;
        QVERIFY(!asFile.open(QIODevice::ReadOnly));
        QCOMPARE(asFile.errorString(), name("Invalid Block File Header."));
        QVERIFY(!asFile.isOpen());
        PakReader good(packageOf(PackageBuilder()));
        QVERIFY(!good.open(QIODevice::ReadWrite));
        QVERIFY(!good.isOpen());
        QVERIFY(good.open(QIODevice::ReadOnly));
        QCOMPARE(good.blockSize(), 128);
    }

    void lookupsOpenTheReader()
    {
        PackageBuilder builder;
        builder.addLeafChain(PackageBuilder::leafStream(
            {PackageBuilder::entry(name("/a"), "first"),
             PackageBuilder::entry(name("_index"), PackageBuilder::fileTable({"/a"}))}));
        const QString path = packageOf(builder);
        QVERIFY(PakReader(path).hasFile(name("/a")));
        QCOMPARE(PakReader(path).getFile(name("/a")), QByteArray("first"));
        QCOMPARE(PakReader(path).fileList(), QStringList{name("/a")});
    }

    void aPathIsTakenAsSpelt()
    {
        PackageBuilder builder;
        builder.addLeafChain(PackageBuilder::leafStream(
            {PackageBuilder::entry(name("/a"), "small"), PackageBuilder::entry(name("/A"), "large"),
             PackageBuilder::entry(QString(QChar(0xE4)), "umlaut")}));
        PakReader reader(packageOf(builder));
        QCOMPARE(reader.getFile(name("/a")), QByteArray("small"));
        QCOMPARE(reader.getFile(name("/A")), QByteArray("large"));
        QCOMPARE(reader.getFile(QString(QChar(0xE4))), QByteArray("umlaut"));
        QVERIFY(!reader.hasFile(name("a")));
        QVERIFY(!reader.hasFile(name("/a ")));
        QVERIFY(!reader.hasFile(name("//a")));
    }

    void aMissingFileIsNotFound()
    {
        PackageBuilder builder;
        builder.addLeafBlock(PackageBuilder::number(0));
        PakReader reader(packageOf(builder));
        QVERIFY(!reader.hasFile(name("/a")));
        QCOMPARE(thrownBy([&] { reader.getFile(name("/a")); }), name("File not found"));
        QCOMPARE(thrownBy([&] { reader.fileList(); }), name("File table not found"));
        QVERIFY(reader.isOpen());
    }

    void anEmptyLeafIsReadNoFurther()
    {
        PackageBuilder builder;
        builder.addLeafBlock(PackageBuilder::number(0));
        QByteArray bytes = builder.bytes();
        bytes.truncate(80 + 2 + 4); // nothing behind the entry count
        PakReader reader(packageOf(bytes));
        QVERIFY(!reader.hasFile(name("/a")));
    }

    void aNegativeEntryCountIsNone()
    {
        PackageBuilder builder;
        builder.addLeafBlock(PackageBuilder::number(-5));
        QVERIFY(!PakReader(packageOf(builder)).hasFile(name("/a")));
    }

    void theLeafIsSearchedPastLargerKeys()
    {
        QVector<QByteArray> keys{keyOf('\xFF'), keyOf('\0'), PackageBuilder::key(name("/a"))};
        QByteArray stream = PackageBuilder::number(3);
        for (const QByteArray &key : keys)
            stream += key + PackageBuilder::quantity(1) + "v";
        PackageBuilder builder;
        builder.addLeafChain(stream);
        QVERIFY(PakReader(packageOf(builder)).hasFile(name("/a")));
    }

    void aValueMayRunThroughManyBlocks()
    {
        QByteArray value;
        for (int i = 0; i < 5000; ++i)
            value.append(static_cast<char>(i * 7));
        PackageBuilder builder;
        builder.blockSize = 20;
        builder.addLeafChain(PackageBuilder::leafStream(
            {PackageBuilder::entry(name("/before"), value),
             PackageBuilder::entry(name("/a"), value), PackageBuilder::entry(name("/b"), "b")}));
        PakReader reader(packageOf(builder));
        QCOMPARE(reader.getFile(name("/a")), value);
        QCOMPARE(reader.getFile(name("/b")), QByteArray("b"));
    }

    void theChainMayJumpBackAndForth()
    {
        PackageBuilder builder;
        builder.blockSize = 50;
        const QByteArray stream =
            PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), QByteArray(80, 'v'))});
        builder.rootBlock = 2;
        builder.addLeafBlock(stream.mid(44, 44), 1);
        builder.addLeafBlock(stream.mid(88), -1);
        builder.addLeafBlock(stream.left(44), 0);
        QCOMPARE(PakReader(packageOf(builder)).getFile(name("/a")), QByteArray(80, 'v'));
    }

    void aValueThatFillsTheBlockNeedsNoNextOne()
    {
        PackageBuilder builder;
        builder.addLeafBlock(streamThatLeaves(0, builder, name("/a")), 77);
        QCOMPARE(PakReader(packageOf(builder)).getFile(name("/a")).size(), 85);
    }

    void aValueIntoNoNextBlockEndsPrematurely()
    {
        PackageBuilder builder;
        builder.addLeafBlock(streamThatLeaves(-1, builder, name("/a")).left(122), -1);
        QCOMPARE(lookUpMessage(builder, name("/a")), name("Premature end of leaf block"));
    }

    void aChainOutOfTheFileNamesItsIndex_data()
    {
        QTest::addColumn<int>("next");
        QTest::newRow("just behind the file") << 1;
        QTest::newRow("far") << 2147483647;
        QTest::newRow("-2") << -2;
        QTest::newRow("itself") << 0;
    }

    void aChainOutOfTheFileNamesItsIndex()
    {
        QFETCH(int, next);
        PackageBuilder builder;
        builder.addLeafBlock(streamThatLeaves(-1, builder, name("/a")).left(122), next);
        QCOMPARE(lookUpMessage(builder, name("/a")),
                 name("Invalid leaf block continuation index '%1'").arg(next));
    }

    void aReadIntoNoLeafHasItsMessage()
    {
        PackageBuilder builder;
        builder.addLeafBlock(streamThatLeaves(-1, builder, name("/a")).left(122), 1);
        builder.addIndexBlock(0, {});
        QCOMPARE(lookUpMessage(builder, name("/a")), name("Invalid leaf block continuation"));
    }

    void aKeyIntoNoLeafIsARead()
    {
        PackageBuilder builder;
        builder.addLeafBlock(PackageBuilder::leafStream(
                                 {PackageBuilder::entry(name("/other"), QByteArray(80, 'v')), {}}),
                             1);
        builder.addIndexBlock(0, {});
        QCOMPARE(lookUpMessage(builder, name("/a")), name("Invalid leaf block continuation"));
    }

    void aSkipIntoNoLeafHasItsMessage()
    {
        PackageBuilder builder;
        builder.addLeafBlock(streamThatLeaves(-1, builder, name("/other")).left(122), 1);
        builder.addIndexBlock(0, {});
        QCOMPARE(lookUpMessage(builder, name("/a")), name("Invalid Leaf block continuation block"));
    }

    void aQuantityIntoNoLeafHasItsMessage()
    {
        PackageBuilder builder;
        builder.blockSize = 4 + 32 + 6; // the data ends with the key
        builder.addLeafBlock(PackageBuilder::number(1) + PackageBuilder::key(name("/a")), 1);
        builder.addIndexBlock(0, {});
        QCOMPARE(lookUpMessage(builder, name("/a")), name("Invlaid Leaf block continuation block"));
    }

    void aQuantityThatEndsTheBlockNeedsNoNextOne()
    {
        PackageBuilder builder;
        builder.blockSize = 4 + 33 + 6;
        builder.addLeafBlock(PackageBuilder::number(1) + PackageBuilder::entry(name("/a"), {}), 9);
        QCOMPARE(PakReader(packageOf(builder)).getFile(name("/a")), QByteArray());
    }

    void aQuantityMayCrossBlocks()
    {
        PackageBuilder builder;
        builder.blockSize = 4 + 33 + 6; // between the two bytes of the length
        builder.addLeafChain(
            PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), QByteArray(300, 'v'))}));
        QCOMPARE(PakReader(packageOf(builder)).getFile(name("/a")), QByteArray(300, 'v'));
    }

    void aQuantityMayHaveLeadingZeros()
    {
        PackageBuilder builder;
        builder.addLeafBlock(PackageBuilder::number(1) + PackageBuilder::key(name("/a"))
                             + QByteArray("\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80\x03xyz"));
        QCOMPARE(PakReader(packageOf(builder)).getFile(name("/a")), QByteArray("xyz"));
    }

    void anUnknownBlockOnTheWayIsReported()
    {
        PackageBuilder builder;
        builder.addBlock("XX");
        QCOMPARE(lookUpMessage(builder, name("/a")), name("Unknown block type found."));
        PackageBuilder deeper;
        deeper.addIndexBlock(1, {});
        deeper.addBlock("ll");
        QCOMPARE(lookUpMessage(deeper, name("/a")), name("Unknown block type found."));
    }

    void aRootOutsideTheFileIsAnUnknownBlock_data()
    {
        QTest::addColumn<int>("root");
        QTest::newRow("behind") << 1;
        QTest::newRow("far") << 2147483647;
        QTest::newRow("-1") << -1;
    }

    void aRootOutsideTheFileIsAnUnknownBlock()
    {
        QFETCH(int, root);
        PackageBuilder builder;
        builder.rootBlock = root;
        builder.addLeafBlock(PackageBuilder::number(0));
        QCOMPARE(lookUpMessage(builder, name("/a")), name("Unknown block type found."));
    }

    void anIndexOutOfTheFileIsReported_data()
    {
        QTest::addColumn<int>("child");
        QTest::newRow("behind") << 1;
        QTest::newRow("far") << 2147483647;
        QTest::newRow("-1") << -1;
        QTest::newRow("itself") << 0;
    }

    void anIndexOutOfTheFileIsReported()
    {
        QFETCH(int, child);
        PackageBuilder builder;
        builder.addIndexBlock(child, {});
        QCOMPARE(lookUpMessage(builder, name("/a")), name("Invalid block referred to by index"));
        PackageBuilder behindKey;
        behindKey.addIndexBlock(7, {{keyOf('\0'), child}});
        QCOMPARE(lookUpMessage(behindKey, name("/a")), name("Invalid block referred to by index"));
    }

    void anIndexLeadsToTheChildOfTheKey_data()
    {
        QTest::addColumn<QByteArray>("firstKey");
        QTest::addColumn<QByteArray>("secondKey");
        QTest::addColumn<QByteArray>("found");
        const QByteArray low = keyOf('\0');
        const QByteArray high = keyOf('\xFF');
        const QByteArray same = PackageBuilder::key(name("/a"));
        const QByteArray below = PackageBuilder::key(neighbour(name("/a"), false));
        const QByteArray above = PackageBuilder::key(neighbour(name("/a"), true));
        QTest::newRow("below all") << high << high << QByteArray("left");
        QTest::newRow("just below") << above << high << QByteArray("left");
        QTest::newRow("at the first") << same << high << QByteArray("middle");
        QTest::newRow("between") << below << above << QByteArray("middle");
        QTest::newRow("at the second") << low << same << QByteArray("right");
        QTest::newRow("above all") << low << low << QByteArray("right");
        QTest::newRow("the first key above ends it") << high << low << QByteArray("left");
    }

    void anIndexLeadsToTheChildOfTheKey()
    {
        QFETCH(QByteArray, firstKey);
        QFETCH(QByteArray, secondKey);
        PackageBuilder builder;
        builder.addIndexBlock(1, {{firstKey, 2}, {secondKey, 3}});
        for (const char *const value : {"left", "middle", "right"})
            builder.addLeafBlock(
                PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), value)}));
        QTEST(PakReader(packageOf(builder)).getFile(name("/a")), "found");
    }

    void indexBlocksMayBeNestedAndFull()
    {
        PackageBuilder builder;
        builder.blockSize = 11 + 2 * 36; // the last child fills the block's last four bytes
        builder.addIndexBlock(9, {{keyOf('\0'), 1}, {keyOf('\xFF'), 9}});
        builder.addIndexBlock(9, {{keyOf('\0'), 9}, {keyOf('\0'), 2}});
        builder.addLeafBlock(
            PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), "deep")}));
        QCOMPARE(PakReader(packageOf(builder)).getFile(name("/a")), QByteArray("deep"));
    }

    void aNegativeKeyCountLeadsToTheFirstChild()
    {
        PackageBuilder builder;
        builder.addBlock("II" + QByteArray(1, '\3') + PackageBuilder::number(-1)
                         + PackageBuilder::number(1));
        builder.addLeafBlock(PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), "x")}));
        QCOMPARE(PakReader(packageOf(builder)).getFile(name("/a")), QByteArray("x"));
    }

    void tryGetFileReplacesItsOutputOnlyOnSuccess()
    {
        PackageBuilder builder;
        builder.addLeafChain(PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), "x")}));
        PakReader reader(packageOf(builder));
        QByteArray out = "before";
        const MessageCapture log;
        QVERIFY(!reader.tryGetFile(name("/%1/%2"), out));
        QCOMPARE(out, QByteArray("before"));
        QCOMPARE(log.messages().size(), 1);
        const MessageCapture::Message message = log.messages().first();
        QCOMPARE(message.type, QtWarningMsg);
        QCOMPARE(message.text, name("tryGetFile failed on /%1/%2: File not found"));
        QCOMPARE(message.file, name("Quillmoor/PakReader"));
        QCOMPARE(message.function, name("bool PakReader::tryGetFile(const QString&, QByteArray&)"));
        QVERIFY(reader.tryGetFile(name("/a"), out));
        QCOMPARE(out, QByteArray("x"));
        QCOMPARE(log.messages().size(), 1);
    }

    void tryGetFileReportsABadPackage()
    {
        PakReader reader(packageOf(QByteArray("no package")));
        QByteArray out;
        const MessageCapture log;
        QVERIFY(!reader.tryGetFile(name("/a"), out));
        QCOMPARE(log.texts(),
                 QStringList{name("tryGetFile failed on /a: Invalid Block File Header.")});
    }

    void theFileTableIsListedInStoredOrder()
    {
        PackageBuilder builder;
        const QByteArray table =
            PackageBuilder::fileTable({"/b", "/a", QByteArray("/cut\0rest", 9), "/\xC3\xA4", ""});
        builder.addLeafChain(
            PackageBuilder::leafStream({PackageBuilder::entry(name("_index"), table)}));
        const QStringList expected{name("/b"), name("/a"), name("/cut"), QStringLiteral("/\u00E4"),
                                   QString()};
        QCOMPARE(PakReader(packageOf(builder)).fileList(), expected);
    }

    void anEmptyFileTableIsAnEmptyList()
    {
        PackageBuilder builder;
        builder.addLeafChain(PackageBuilder::leafStream(
            {PackageBuilder::entry(name("_index"), PackageBuilder::fileTable({}))}));
        QCOMPARE(PakReader(packageOf(builder)).fileList(), QStringList());
    }

    void theTablesAnnouncedLengthIsIgnored()
    {
        PackageBuilder builder;
        builder.addLeafChain(PackageBuilder::number(1) + PackageBuilder::key(name("_index"))
                             + PackageBuilder::quantity(1) + PackageBuilder::fileTable({"/a"}));
        QCOMPARE(PakReader(packageOf(builder)).fileList(), QStringList{name("/a")});
    }

    void assets2RecordsHaveAFurtherField()
    {
        const QByteArray table = PackageBuilder::quantity(2) + PackageBuilder::quantity(2) + "/a"
            + PackageBuilder::quantity(3) + "/xy" + PackageBuilder::quantity(2) + "/b"
            + PackageBuilder::quantity(0);
        PackageBuilder builder;
        builder.addLeafChain(
            PackageBuilder::leafStream({PackageBuilder::entry(name("_index"), table)}));
        builder.contentIdentifier = "Assets2";
        QCOMPARE(PakReader(packageOf(builder)).fileList(), (QStringList{name("/a"), name("/b")}));
        builder.contentIdentifier = "Assets1";
        QCOMPARE(PakReader(packageOf(builder)).fileList(), (QStringList{name("/a"), name("/xy")}));
    }

    void theFurtherFieldMayCrossBlocks()
    {
        PackageBuilder builder;
        builder.blockSize = 30;
        builder.contentIdentifier = "Assets2";
        QByteArray table = PackageBuilder::quantity(20);
        QStringList expected;
        for (int i = 0; i < 20; ++i) {
            expected.append(QStringLiteral("/path/%1").arg(i));
            const QByteArray path = expected.last().toUtf8();
            table += PackageBuilder::quantity(static_cast<quint64>(path.size())) + path;
            table += PackageBuilder::quantity(200) + QByteArray(200, '/');
        }
        builder.addLeafChain(
            PackageBuilder::leafStream({PackageBuilder::entry(name("_index"), table)}));
        QCOMPARE(PakReader(packageOf(builder)).fileList(), expected);
    }

    void anErrorLeavesTheReaderReadyForTheNextLookup()
    {
        PackageBuilder builder;
        builder.addIndexBlock(9, {{PackageBuilder::key(name("/a")), 1}});
        builder.addLeafBlock(PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), "x")}));
        PakReader reader(packageOf(builder));
        const QString below = neighbour(name("/a"), false);
        QCOMPARE(thrownBy([&] { reader.getFile(below); }),
                 name("Invalid block referred to by index"));
        QVERIFY(reader.isOpen());
        QCOMPARE(reader.getFile(name("/a")), QByteArray("x"));
    }

    void packagesBeyond4GiBAreRead()
    {
        // Sparse: index in block 0, the leaf and its chain past the reach of 32 bits.
        PackageBuilder builder;
        builder.blockSize = 4096;
        const qint32 farBlock = 1200000;
        builder.addIndexBlock(farBlock, {});
        const QString path = packageOf(builder);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QByteArray stream =
            PackageBuilder::leafStream({PackageBuilder::entry(name("/a"), QByteArray(6000, 'v'))});
        const auto putBlock = [&](qint32 block, const QByteArray &data, qint32 next) {
            file.seek(80 + qint64{block} * 4096);
            file.write(("LL" + data).leftJustified(4092, '\0') + PackageBuilder::number(next));
        };
        putBlock(farBlock, stream.left(4090), farBlock - 500000);
        putBlock(farBlock - 500000, stream.mid(4090), -1);
        QVERIFY(file.resize(Q_INT64_C(5) << 30));
        file.close();
        PakReader reader(path);
        QCOMPARE(reader.getFile(name("/a")), QByteArray(6000, 'v'));
        QVERIFY(!reader.hasFile(name("/b")));
        QFile::remove(path);
    }
};

QTEST_GUILESS_MAIN(TestPakReader)
#include "tst_PakReader.moc"

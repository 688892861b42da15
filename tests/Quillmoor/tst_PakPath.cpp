#include "Quillmoor/PakPath.h"

#include "Quillmoor/PakWriter.h"
#include "support/Thrown.h"

#include <QTemporaryDir>
#include <QtTest>

class TestPakPath : public QObject {
    Q_OBJECT

private slots:
    void aPathSplitsAtTheFirstSeparator_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("package");
        QTest::addColumn<QString>("inner");
        QTest::newRow("usual") << "pak:///g/packed.pak::/sfx/a.ogg"
                               << "/g/packed.pak"
                               << "/sfx/a.ogg";
        QTest::newRow("a second separator") << "pak://a::b::c"
                                            << "a"
                                            << "b::c";
        QTest::newRow("three colons") << "pak://a:::b"
                                      << "a"
                                      << ":b";
        QTest::newRow("nothing around it") << "pak://::"
                                           << ""
                                           << "";
    }

    void aPathSplitsAtTheFirstSeparator()
    {
        QFETCH(QString, path);
        const PakPath split = PakPath::parse(path);
        QTEST(split.package, "package");
        QTEST(split.inner, "inner");
    }

    void aPathWithoutSeparatorIsInvalid_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("none") << "pak:///g/packed.pak";
        QTest::newRow("one colon") << "pak://a:b";
        QTest::newRow("nothing") << "pak://";
        QTest::newRow("no scheme") << "/g/packed.pak::/sfx/a.ogg";
        QTest::newRow("other case") << "PAK://a::b";
        QTest::newRow("empty") << "";
    }

    void aPathWithoutSeparatorIsInvalid()
    {
        QFETCH(QString, path);
        const QString expected = QStringLiteral("Invalid pak:// filename");
        QCOMPARE(thrownBy([&] { PakPath::parse(path); }), expected);
        QCOMPARE(thrownBy([&] { readPakFile(path); }), expected);
    }

    void onlyTheSchemeMakesAPakPath()
    {
        QVERIFY(PakPath::isPakPath(QStringLiteral("pak://a")));
        QVERIFY(!PakPath::isPakPath(QStringLiteral("/pak://a")));
        QVERIFY(!PakPath::isPakPath(QStringLiteral("pak:/a")));
        QVERIFY(!PakPath::isPakPath(QString()));
    }

    void thePrefixNamesThePackage()
    {
        QCOMPARE(PakPath::prefix(QStringLiteral("/g/100%1.pak")),
                 QStringLiteral("pak:///g/100%1.pak::"));
    }

    void aFileIsReadOutOfItsPackage()
    {
        const QTemporaryDir dir;
        const QString package = dir.filePath(QStringLiteral("x.pak"));
        PakWriter writer;
        writer.add(QStringLiteral("/sfx/a.ogg"), "sound");
        writer.save(package);
        const QString prefix = PakPath::prefix(package);
        QCOMPARE(readPakFile(prefix + QStringLiteral("/sfx/a.ogg")), QByteArray("sound"));
        QCOMPARE(thrownBy([&] { readPakFile(prefix + QStringLiteral("/sfx/b.ogg")); }),
                 QStringLiteral("File not found"));
        QCOMPARE(thrownBy([&] { readPakFile(QStringLiteral("pak:///nowhere.pak::/a")); }),
                 QStringLiteral("Could not open file."));
    }
};

QTEST_GUILESS_MAIN(TestPakPath)
#include "tst_PakPath.moc"

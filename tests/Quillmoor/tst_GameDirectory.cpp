#include "Quillmoor/GameDirectory.h"

#include <QTemporaryDir>
#include <QtTest>

class TestGameDirectory : public QObject {
    Q_OBJECT

private slots:
    void itNeedsAssetsAndTheProgram_data()
    {
        QTest::addColumn<QStringList>("directories");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<bool>("isGame");
        const QString assets = QStringLiteral("assets");
        const QString win32 = QStringLiteral("win32");
        const QString program = QStringLiteral("win32/quillmoor.exe");
        const QStringList both{assets, win32};
        QTest::newRow("complete") << both << QStringList{program} << true;
        QTest::newRow("no program") << both << QStringList() << false;
        QTest::newRow("no assets") << QStringList{win32} << QStringList{program} << false;
        QTest::newRow("no win32") << QStringList{assets} << QStringList() << false;
        QTest::newRow("nothing") << QStringList() << QStringList() << false;
        QTest::newRow("assets is a file")
            << QStringList{win32} << QStringList{assets, program} << false;
        QTest::newRow("win32 inside assets")
            << QStringList{QStringLiteral("assets/win32")}
            << QStringList{QStringLiteral("assets/win32/quillmoor.exe")} << false;
        QTest::newRow("program beside")
            << both << QStringList{QStringLiteral("quillmoor.exe")} << false;
    }

    void itNeedsAssetsAndTheProgram()
    {
        QFETCH(QStringList, directories);
        QFETCH(QStringList, files);
        const QTemporaryDir dir;
        for (const QString &directory : directories)
            QVERIFY(QDir(dir.path()).mkpath(directory));
        for (const QString &file : files)
            QVERIFY(QFile(dir.filePath(file)).open(QIODevice::WriteOnly));
        QTEST(isGameDirectory(QDir(dir.path())), "isGame");
    }

    void theProgramMayBeADirectory()
    {
        const QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("assets")));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("win32/quillmoor.exe")));
        QVERIFY(isGameDirectory(QDir(dir.path())));
    }

    void aDirectoryThatIsNotThereIsNone()
    {
        QVERIFY(!isGameDirectory(QDir(QStringLiteral("/nowhere/at/all"))));
    }

    void anEmptyPathIsNotTheWorkingDirectory()
    {
        const QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("assets")));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("win32/quillmoor.exe")));
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(dir.path()));
        const bool here = isGameDirectory(QStringLiteral("."));
        const bool nowhere = isGameDirectory(QString());
        QVERIFY(QDir::setCurrent(previous));
        QVERIFY(here);
        QVERIFY(!nowhere);
    }

    void theOptionGoesBeforeTheVariable()
    {
        const QString option = QStringLiteral("/option");
        qputenv("QUILLMOOR_GAME", "/variable");
        QCOMPARE(namedGameDirectory(option).value(), option);
        QCOMPARE(namedGameDirectory(QString()).value(), QString());
        QCOMPARE(namedGameDirectory(std::nullopt).value(), QStringLiteral("/variable"));
        qputenv("QUILLMOOR_GAME", "");
        QVERIFY(!namedGameDirectory(std::nullopt));
        qunsetenv("QUILLMOOR_GAME");
        QVERIFY(!namedGameDirectory(std::nullopt));
    }
};

QTEST_GUILESS_MAIN(TestGameDirectory)
#include "tst_GameDirectory.moc"

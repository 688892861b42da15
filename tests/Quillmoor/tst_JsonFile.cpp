#include "Quillmoor/JsonFile.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

class TestJsonFile : public QObject {
    Q_OBJECT

private slots:
    void commentsAreRemoved_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("none") << QByteArray("{\"a\":1}") << QByteArray("{\"a\":1}");
        QTest::newRow("own line") << QByteArray("// x\n{\"a\":1}\n// y") << QByteArray("{\"a\":1}");
        QTest::newRow("end of line")
            << QByteArray("{\"a\": // \"b\":\n1}") << QByteArray("{\"a\":1}");
        QTest::newRow("carriage return")
            << QByteArray("{//x\r\n\"a\":1}//\r\n") << QByteArray("{\"a\":1}");
        QTest::newRow("more slashes")
            << QByteArray("{\"a\":1}//// x // y") << QByteArray("{\"a\":1}");
        QTest::newRow("one slash stays")
            << QByteArray("{\"a\":\"x/y\"}") << QByteArray("{\"a\":\"x/y\"}");
        QTest::newRow("in a string")
            << QByteArray("{\"a\":\"http://x\",\n\"b\":2}") << QByteArray();
        QTest::newRow("in a string that the next line closes")
            << QByteArray("{\"a\":\"x//y\",\"c\":3,\nz\",\"b\":2}")
            << QByteArray("{\"a\":\"x\\nz\",\"b\":2}");
        QTest::newRow("up to the first NUL")
            << QByteArray("{\"a\":1}\0{{{", 11) << QByteArray("{\"a\":1}");
    }

    void commentsAreRemoved()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, json);
        QJsonParseError error;
        const QJsonDocument document = JsonFile::parse(bytes, &error);
        QCOMPARE(document.toJson(QJsonDocument::Compact), json);
        QCOMPARE(error.error == QJsonParseError::NoError, !json.isEmpty());
    }

    void aStringIsCutAtItsSlashes()
    {
        // What the comment leaves open, the next line may close.
        const QJsonDocument document = JsonFile::parse("[\"a//b\"]\n\"]");
        QCOMPARE(document.array().at(0).toString(), QStringLiteral("a\n"));
    }

    void bytesAreLatin1()
    {
        const QJsonDocument document = JsonFile::parse("[\"\xE4\xC3\xA4\"]");
        QCOMPARE(document.array().at(0).toString(), QStringLiteral("\u00E4\u00C3\u00A4"));
    }

    void aFileIsReadLikeItsBytes()
    {
        const QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("x.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\"a\":1} // x");
        file.close();
        QJsonParseError error;
        const QJsonDocument document = JsonFile::read(file.fileName(), &error);
        QCOMPARE(document.object().value(QStringLiteral("a")).toInt(), 1);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(JsonFile::read(file.fileName()).isObject());
    }

    void aFileThatCannotBeOpenedIsNullWithoutParseError()
    {
        QJsonParseError error{3, QJsonParseError::IllegalNumber};
        QVERIFY(JsonFile::read(QStringLiteral("/nowhere/x.json"), &error).isNull());
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(JsonFile::read(QStringLiteral("/nowhere/x.json")).isNull());
    }

    void onlyARegularFileIsOpened()
    {
        const QTemporaryDir dir;
        const QString pipe = dir.filePath(QStringLiteral("pipe"));
        QCOMPARE(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
        for (const QString &path : {pipe, dir.path(), QStringLiteral("/dev/zero")}) {
            QJsonParseError error;
            QVERIFY(JsonFile::read(path, &error).isNull());
            QCOMPARE(error.error, QJsonParseError::NoError);
        }
    }

    void brokenJsonIsNullWithItsError()
    {
        QJsonParseError error;
        QVERIFY(JsonFile::parse("{\"a\":", &error).isNull());
        QVERIFY(error.error != QJsonParseError::NoError);
        QVERIFY(JsonFile::parse(QByteArray(), &error).isNull());
        QVERIFY(error.error != QJsonParseError::NoError);
    }

    void deepNestingAndLongLinesEnd()
    {
        QVERIFY(JsonFile::parse(QByteArray(1000000, '[')).isNull());
        QVERIFY(JsonFile::parse(QByteArray(1000000, '/')).isNull());
        QVERIFY(JsonFile::parse("[1]//" + QByteArray(5000000, 'x')).isArray());
    }
};

QTEST_GUILESS_MAIN(TestJsonFile)
#include "tst_JsonFile.moc"

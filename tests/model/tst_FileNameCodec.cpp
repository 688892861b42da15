#include "model/FileNameCodec.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestFileNameCodec : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { FileNameCodec::install(); }

    void decodes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QByteArray &bytes, const QString &text) {
            QTest::newRow(name) << bytes << text;
        };
        const auto escape = [](ushort byte) { return QString(QChar(0xDC00 + byte)); };
        row("nothing", "", QString());
        row("ASCII", "a b", QStringLiteral("a b"));
        row("two bytes", "\xC3\xA9", QStringLiteral("\u00E9"));
        row("three bytes", "\xE2\x99\xAA", QStringLiteral("\u266A"));
        row("four bytes", "\xF0\x9D\x84\x9E", QStringLiteral("\U0001D11E"));
        row("byte order mark", "\xEF\xBB\xBF", QString(QChar(0xFEFF)));
        row("no UTF-8",
            "\xFF"
            "a",
            escape(0xFF) + QLatin1Char('a'));
        row("continuation alone", "\x80", escape(0x80));
        row("cut short", "\xC3", escape(0xC3));
        row("cut short before a letter",
            "\xE2\x99"
            "a",
            escape(0xE2) + escape(0x99) + QLatin1Char('a'));
        row("overlong", "\xC0\x80", escape(0xC0) + escape(0x80));
        row("overlong in three", "\xE0\x80\x80", escape(0xE0) + escape(0x80) + escape(0x80));
        row("a surrogate", "\xED\xB2\x80", escape(0xED) + escape(0xB2) + escape(0x80));
        row("beyond Unicode", "\xF4\x90\x80\x80",
            escape(0xF4) + escape(0x90) + escape(0x80) + escape(0x80));
    }
    void decodes()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(FileNameCodec::decode(bytes), text);
        QCOMPARE(FileNameCodec::encode(text), bytes);
    }
    void losesNoBytes()
    {
        for (int a = 0; a < 256; ++a) {
            for (int b = 0; b < 256; ++b) {
                const QByteArray bytes{QByteArray(1, static_cast<char>(a)) + static_cast<char>(b)
                                       + static_cast<char>(0xBF) + static_cast<char>(a)};
                QCOMPARE(FileNameCodec::encode(FileNameCodec::decode(bytes)), bytes);
            }
        }
    }
    void encodesOtherHalvesOfSurrogatePairsAsSomething()
    {
        QVERIFY(!FileNameCodec::encode(QString(QChar(0xD834))).isEmpty());
        QVERIFY(!FileNameCodec::encode(QString(QChar(0xDC00))).isEmpty());
    }
    void opensFilesOfAnyName()
    {
        const QTemporaryDir directory;
        QVERIFY(directory.isValid());
        const QString name = FileNameCodec::decode("a\xFF\xC3\xA9.abc");
        QFile file(directory.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        QCOMPARE(QDir(directory.path()).entryList(QDir::Files), QStringList({name}));
        QCOMPARE(QFile::encodeName(name), QByteArray("a\xFF\xC3\xA9.abc"));
    }
};

QTEST_APPLESS_MAIN(TestFileNameCodec)
#include "tst_FileNameCodec.moc"

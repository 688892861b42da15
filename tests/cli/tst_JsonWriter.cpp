#include "cli/JsonWriter.h"

#include <QtTest>

#include <limits>

class tst_JsonWriter : public QObject {
    Q_OBJECT

private slots:
    void membersKeepTheirOrder();
    void nestedValuesAreSeparated();
    void emptyContainersStayEmpty();
    void textIsEscaped_data();
    void textIsEscaped();
    void integersAreExact();
    void floatingPointNumbersAreShortest_data();
    void floatingPointNumbersAreShortest();
    void singlePrecisionIsShortestOfItsOwn();
    void numbersThatAreNotFiniteBecomeNull();
    void keysAreEscapedToo();
};

namespace {

QByteArray written(const QString &text)
{
    return JsonWriter().value(text).text();
}

} // namespace

void tst_JsonWriter::membersKeepTheirOrder()
{
    JsonWriter json;
    json.beginObject()
        .member("z", 1)
        .member("a", true)
        .member("m", QStringLiteral("x"))
        .endObject();
    QCOMPARE(json.text(), QByteArray("{\"z\":1,\"a\":true,\"m\":\"x\"}"));
}

void tst_JsonWriter::nestedValuesAreSeparated()
{
    JsonWriter json;
    json.beginArray().value(1).beginArray().value(2).value(3).endArray();
    json.beginObject().key("k").beginArray().endArray().member("n", false).endObject().endArray();
    QCOMPARE(json.text(), QByteArray("[1,[2,3],{\"k\":[],\"n\":false}]"));
}

void tst_JsonWriter::emptyContainersStayEmpty()
{
    QCOMPARE(JsonWriter().beginObject().endObject().text(), QByteArray("{}"));
    QCOMPARE(JsonWriter().beginArray().endArray().text(), QByteArray("[]"));
}

void tst_JsonWriter::textIsEscaped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("empty") << QString() << QByteArray("\"\"");
    QTest::newRow("plain") << QStringLiteral("a/b") << QByteArray("\"a/b\"");
    QTest::newRow("quote and backslash") << QStringLiteral("\"\\") << QByteArray("\"\\\"\\\\\"");
    QTest::newRow("short escapes")
        << QStringLiteral("\b\f\n\r\t") << QByteArray("\"\\b\\f\\n\\r\\t\"");
    QTest::newRow("control") << QString(QChar(0)) + QChar(0x1F) << QByteArray("\"\\u0000\\u001f\"");
    QTest::newRow("delete") << QString(QChar(0x7F)) << QByteArray("\"\x7f\"");
    QTest::newRow("two bytes") << QStringLiteral("\u00e9") << QByteArray("\"\xc3\xa9\"");
    QTest::newRow("pair") << QString::fromUtf8("\xf0\x9d\x84\x9e")
                          << QByteArray("\"\xf0\x9d\x84\x9e\"");
    QTest::newRow("low half") << QString(QChar(0xDC80)) << QByteArray("\"\\udc80\"");
    QTest::newRow("high half at the end") << QString(QChar(0xD834)) << QByteArray("\"\\ud834\"");
    QTest::newRow("high half before a letter")
        << QString(QChar(0xD834)) + QLatin1Char('a') << QByteArray("\"\\ud834a\"");
    QTest::newRow("halves the wrong way round")
        << QString(QChar(0xDD1E)) + QChar(0xD834) << QByteArray("\"\\udd1e\\ud834\"");
    QTest::newRow("half within text") << QStringLiteral("a") + QChar(0xDCFF) + QStringLiteral("b\n")
                                      << QByteArray("\"a\\udcffb\\n\"");
}

void tst_JsonWriter::textIsEscaped()
{
    QFETCH(QString, text);
    QTEST(written(text), "json");
}

void tst_JsonWriter::integersAreExact()
{
    JsonWriter json;
    json.beginArray();
    json.value(std::numeric_limits<quint64>::max()).value(std::numeric_limits<qint64>::min());
    json.value(quint64{9007199254740993}).value(std::numeric_limits<quint32>::max()).value(-1);
    json.endArray();
    QCOMPARE(
        json.text(),
        QByteArray("[18446744073709551615,-9223372036854775808,9007199254740993,4294967295,-1]"));
}

void tst_JsonWriter::floatingPointNumbersAreShortest_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("whole") << 1.0 << QByteArray("1.0");
    QTest::newRow("zero") << 0.0 << QByteArray("0.0");
    QTest::newRow("negative") << -12.0 << QByteArray("-12.0");
    QTest::newRow("frequency") << 130.81 << QByteArray("130.81");
    QTest::newRow("tenth") << 0.1 << QByteArray("0.1");
    QTest::newRow("sum") << 0.1 + 0.2 << QByteArray("0.30000000000000004");
    QTest::newRow("large") << 1e300 << QByteArray("1e+300");
    QTest::newRow("small") << 5e-324 << QByteArray("5e-324");
}

void tst_JsonWriter::floatingPointNumbersAreShortest()
{
    QFETCH(double, number);
    QTEST(JsonWriter().value(number).text(), "json");
}

void tst_JsonWriter::singlePrecisionIsShortestOfItsOwn()
{
    QCOMPARE(JsonWriter().value(0.7F).text(), QByteArray("0.7"));
    QCOMPARE(JsonWriter().value(2.0F).text(), QByteArray("2.0"));
}

void tst_JsonWriter::numbersThatAreNotFiniteBecomeNull()
{
    JsonWriter json;
    json.beginArray();
    json.value(std::numeric_limits<double>::infinity());
    json.value(std::numeric_limits<float>::quiet_NaN());
    json.endArray();
    QCOMPARE(json.text(), QByteArray("[null,null]"));
}

void tst_JsonWriter::keysAreEscapedToo()
{
    JsonWriter json;
    json.beginObject()
        .key(QStringLiteral("\""))
        .value(1)
        .key(QStringLiteral("b"))
        .value(2)
        .endObject();
    QCOMPARE(json.text(), QByteArray("{\"\\\"\":1,\"b\":2}"));
}

QTEST_APPLESS_MAIN(tst_JsonWriter)
#include "tst_JsonWriter.moc"

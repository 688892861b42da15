#include "support/ResourceWatch.h"
#include "support/Thrown.h"
#include "update/LatestVersion.h"

#include <QtTest>

class TestLatestVersion : public QObject {
    Q_OBJECT

private:
    static LatestVersion read(const QByteArray &version)
    {
        return LatestVersion::read(R"({"version": )" + version + "}");
    }

    static QByteArray ofSize(int size)
    {
        const QByteArray reply = R"({"version": [0, 9, 0, 0]})";
        return reply + QByteArray(size - reply.size(), ' ');
    }

private slots:
    void fieldsArePackedIntoOneNumber_data()
    {
        QTest::addColumn<quint64>("packed");
        QTest::addColumn<quint64>("expected");
        QTest::newRow("this release")
            << packedVersion(0, 8, 5, 0) << Q_UINT64_C(0x0000080500000000);
        QTest::newRow("each field in its place")
            << packedVersion(1, 2, 3, 4) << Q_UINT64_C(0x0001020300000004);
        QTest::newRow("a patch of nine bits")
            << packedVersion(0, 8, 261, 0) << packedVersion(0, 9, 5, 0);
        QTest::newRow("a minor of nine bits")
            << packedVersion(0, 256, 0, 0) << packedVersion(1, 0, 0, 0);
        QTest::newRow("overlapping bits are joined, not added")
            << packedVersion(0, 9, 261, 0) << packedVersion(0, 9, 5, 0);
        QTest::newRow("a negative build fills all bits")
            << packedVersion(0, 8, 5, -1) << Q_UINT64_C(0xffffffffffffffff);
        QTest::newRow("the least build")
            << packedVersion(0, 0, 0, -2147483647 - 1) << Q_UINT64_C(0xffffffff80000000);
        QTest::newRow("a negative patch keeps its 32 bits")
            << packedVersion(0, 0, -1, 0) << Q_UINT64_C(0xffffffff00000000);
        QTest::newRow("a negative minor loses its upper bits")
            << packedVersion(0, -1, 0, 0) << Q_UINT64_C(0xffffff0000000000);
        QTest::newRow("a negative major has its lower 16 bits")
            << packedVersion(-1, 0, 0, 0) << Q_UINT64_C(0xffff000000000000);
        QTest::newRow("a major of 17 bits") << packedVersion(65536, 0, 0, 0) << Q_UINT64_C(0);
    }
    void fieldsArePackedIntoOneNumber()
    {
        QFETCH(const quint64, packed);
        QTEST(packed, "expected");
    }

    void whatIsNewerThanThisRelease_data()
    {
        QTest::addColumn<QByteArray>("version");
        QTest::addColumn<bool>("isNewer");
        QTest::newRow("this release") << QByteArray("[0, 8, 5, 0]") << false;
        QTest::newRow("a build more") << QByteArray("[0, 8, 5, 1]") << true;
        QTest::newRow("a patch more") << QByteArray("[0, 8, 6, 0]") << true;
        QTest::newRow("a minor more") << QByteArray("[0, 9, 0, 0]") << true;
        QTest::newRow("a major more") << QByteArray("[1, 0, 0, 0]") << true;
        QTest::newRow("a patch less, many builds") << QByteArray("[0, 8, 4, 999]") << false;
        QTest::newRow("a patch that runs over") << QByteArray("[0, 8, 261, 0]") << true;
        QTest::newRow("a negative build") << QByteArray("[0, 8, 5, -1]") << true;
        QTest::newRow("a negative build of an old version") << QByteArray("[0, 0, 0, -1]") << true;
        QTest::newRow("nothing at all") << QByteArray("[0, 0, 0, 0]") << false;
        QTest::newRow("whole numbers with a point") << QByteArray("[0.0, 8.0, 5.0, 1.0]") << true;
    }
    void whatIsNewerThanThisRelease()
    {
        QFETCH(const QByteArray, version);
        QTEST(read(version).isNewer, "isNewer");
    }

    /// Each counts as 0, which is older; as anything greater it would be newer.
    void whatIsNoWholeNumberCountsAsZero_data()
    {
        QTest::addColumn<QByteArray>("element");
        for (const char *const element :
             {"\"9\"", "true", "null", "[9]", "{\"a\": 9}", "9.5", "2147483648", "-2147483649",
              "1e300", "1e999", "9223372036854775807", "18446744073709551616"})
            QTest::newRow(element) << QByteArray(element);
    }
    void whatIsNoWholeNumberCountsAsZero()
    {
        QFETCH(const QByteArray, element);
        const auto isNewer = [&](const QByteArray &version) {
            return thrownBy([&] { QVERIFY(!read(version).isNewer); });
        };
        const QString expected = element == "1e999"
            ? QStringLiteral("Could not read update information") // no number in JSON's sense
            : QStringLiteral("(nothing thrown)");
        QCOMPARE(isNewer("[" + element + ", 0, 0, 0]"), expected);
        QCOMPARE(isNewer("[0, " + element + ", 0, 0]"), expected);
        QCOMPARE(isNewer("[0, 8, 5, " + element + "]"), expected);
    }

    void textsAreTakenAsTheyStand()
    {
        const LatestVersion latest = LatestVersion::read(
            "{\"version\": [1, 0, 0, 0], \"versionString\": \"1.0 <b>Élan</b>\","
            " \"url\": \"http://hall.example/?a=1&b=2\", \"more\": {\"things\": []}}");
        QCOMPARE(latest.name, QString::fromUtf8("1.0 <b>Élan</b>"));
        QCOMPARE(latest.url, QStringLiteral("http://hall.example/?a=1&b=2"));
    }

    void missingTextsAreEmpty_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::newRow("missing") << QByteArray(R"({"version": [0, 8, 6, 0]})");
        QTest::newRow("null") << QByteArray(
            R"({"version": [0, 8, 6, 0], "versionString": null, "url": null})");
        QTest::newRow("of another type")
            << QByteArray(R"({"version": [0, 8, 6, 0], "versionString": 1, "url": ["a"]})");
    }
    void missingTextsAreEmpty()
    {
        QFETCH(const QByteArray, reply);
        const LatestVersion latest = LatestVersion::read(reply);
        QVERIFY(latest.isNewer);
        QCOMPARE(latest.name, QString());
        QCOMPARE(latest.url, QString());
    }

    void whatCannotBeReadIsRefused_data()
    {
        QTest::addColumn<QByteArray>("reply");
        const auto row = [](const char *name, const QByteArray &reply) {
            QTest::newRow(name) << reply;
        };
        row("nothing", {});
        row("a blank", " ");
        row("no JSON", "<html><body>Please log in</body></html>");
        row("cut off", R"({"version": [0, 9, 0,)");
        row("more after the end", R"({"version": [0, 9, 0, 0]} {})");
        row("an array", "[]");
        row("an array of it", R"([{"version": [0, 9, 0, 0]}])");
        row("a number", "1");
        row("null", "null");
        row("an empty object", "{}");
        row("three elements", R"({"version": [0, 8, 5]})");
        row("five elements", R"({"version": [0, 8, 5, 0, 0]})");
        row("no element", R"({"version": []})");
        row("a text for a version", R"({"version": "0.9.0.0"})");
        row("an object for a version", R"({"version": {"0": 0, "1": 9, "2": 0, "3": 0}})");
        row("null for a version", R"({"version": null})");
        row("another key", R"({"Version": [0, 9, 0, 0]})");
        row("NaN", R"({"version": [NaN, 9, 0, 0]})");
        row("Infinity", R"({"version": [Infinity, 9, 0, 0]})");
        row("a NUL", QByteArray("{\0\"version\": [0, 9, 0, 0]}", 26));
        row("no UTF-8", "{\"version\": [0, 9, 0, 0], \"url\": \"\xff\xfe\"}");
        row("UTF-16", QByteArray("\xff\xfe{\0}\0", 6));
        row("compressed", QByteArray("\x1f\x8b\x08\0\0\0\0\0", 8));
        row("deep arrays", QByteArray(LatestVersion::SizeLimit, '['));
        row("deep objects", QByteArray(R"({"a":)").repeated(10000));
        row("deep and closed", QByteArray(32000, '[') + QByteArray(32000, ']'));
        row("a byte too long", ofSize(65537));
    }
    void whatCannotBeReadIsRefused()
    {
        QFETCH(const QByteArray, reply);
        const ResourceWatch watch;
        QCOMPARE(thrownBy([&] { LatestVersion::read(reply); }),
                 QStringLiteral("Could not read update information"));
        QVERIFY(watch.isWithinLimits());
    }

    void theLongestReplyIsRead() { QVERIFY(LatestVersion::read(ofSize(65536)).isNewer); }

    void aMarkOfTheEncodingIsNoHindrance()
    {
        QVERIFY(LatestVersion::read("\xef\xbb\xbf{\"version\": [0, 9, 0, 0]}").isNewer);
    }
};

QTEST_MAIN(TestLatestVersion)
#include "tst_LatestVersion.moc"

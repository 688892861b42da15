#include "update/UpdateAddress.h"

#include <QtTest>

class TestUpdateAddress : public QObject {
    Q_OBJECT

private slots:
    void init() { qunsetenv("QUILLMOOR_UPDATE_HOST"); }

    void theHostIsThatOfTheBuild()
    {
        QCOMPARE(UpdateAddress::configuredHost(),
                 QStringLiteral("update.quillmoor-composer.example"));
    }

    void theEnvironmentNamesAnother()
    {
        qputenv("QUILLMOOR_UPDATE_HOST", "updates.hall.example:8080");
        QCOMPARE(UpdateAddress::configuredHost(), QStringLiteral("updates.hall.example:8080"));
    }

    void anEmptyNameIsNone()
    {
        qputenv("QUILLMOOR_UPDATE_HOST", "");
        QCOMPARE(UpdateAddress::configuredHost(),
                 QStringLiteral("update.quillmoor-composer.example"));
    }

    void theAddressIsPlainHttpWithoutAQuery()
    {
        QCOMPARE(UpdateAddress::onHost(QStringLiteral("updates.hall.example")),
                 QUrl(QStringLiteral("http://updates.hall.example/api/lastversion.php")));
        QCOMPARE(UpdateAddress::onHost(QStringLiteral("127.0.0.1:8080")).port(), 8080);
    }

    void whatIsNoHostMakesNoAddress()
    {
        QVERIFY(!UpdateAddress::onHost(QStringLiteral("[")).isValid());
        QVERIFY(!UpdateAddress::onHost(QStringLiteral("hall.example:port")).isValid());
    }

    void theFirstAddressStays()
    {
        const QUrl expected(
            QStringLiteral("http://update.quillmoor-composer.example/api/lastversion.php"));
        QCOMPARE(UpdateAddress::address(), expected);
        qputenv("QUILLMOOR_UPDATE_HOST", "updates.hall.example");
        QCOMPARE(UpdateAddress::address(), expected);
    }
};

QTEST_MAIN(TestUpdateAddress)
#include "tst_UpdateAddress.moc"

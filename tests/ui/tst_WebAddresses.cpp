#include "ui/WebAddresses.h"

#include <QtTest>

class tst_WebAddresses : public QObject {
    Q_OBJECT

private slots:
    void ourOwnAreWebPages();
    void onlyWebPagesMayBeOpened_data();
    void onlyWebPagesMayBeOpened();
};

void tst_WebAddresses::ourOwnAreWebPages()
{
    QVERIFY(WebAddresses::isWebPage(WebAddresses::forum()));
    QVERIFY(WebAddresses::isWebPage(WebAddresses::bugTracker()));
    QVERIFY(WebAddresses::isWebPage(WebAddresses::donation()));
}

void tst_WebAddresses::onlyWebPagesMayBeOpened_data()
{
    QTest::addColumn<bool>("isWebPage");
    QTest::newRow("https://a.example/get") << true;
    QTest::newRow("http://a.example") << true;
    QTest::newRow("HTTPS://a.example:8080/a?b=c#d") << true;
    QTest::newRow("http://") << false;
    QTest::newRow("https:///get") << false;
    QTest::newRow("https:get") << false;
    QTest::newRow("a.example/get") << false;
    QTest::newRow("file:///etc/passwd") << false;
    QTest::newRow("ftp://a.example/get") << false;
    QTest::newRow("javascript:alert(1)") << false;
    QTest::newRow("") << false;
    QTest::newRow("http://[bad/") << false;
}

void tst_WebAddresses::onlyWebPagesMayBeOpened()
{
    QTEST(WebAddresses::isWebPage(QUrl(QString::fromUtf8(QTest::currentDataTag()))), "isWebPage");
}

QTEST_APPLESS_MAIN(tst_WebAddresses)
#include "tst_WebAddresses.moc"

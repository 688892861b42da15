#include "support/ResourceWatch.h"
#include "support/TestHttpServer.h"
#include "update/UpdateChecker.h"

#include <QEventLoop>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

const QString Unreadable = QStringLiteral("Could not read update information");

/// A checker and what it has said: "true 0.9 http://…" or the error.
class Check : public QObject {
public:
    Check()
    {
        connect(&checker, &UpdateChecker::updateAvailable, this,
                [this](bool available, const QString &newVer, const QString &url) {
                    said << QStringLiteral("%1 '%2' '%3'")
                                .arg(available ? QStringLiteral("newer")
                                               : QStringLiteral("not newer"),
                                     newVer, url);
                });
        connect(&checker, &UpdateChecker::updateCheckFailed, this,
                [this](const QString &error) { said << error; });
    }

    /// What one check says; nothing when it does not end within ten seconds.
    QString run()
    {
        checker.checkForUpdates();
        const int before = said.size();
        return QTest::qWaitFor([&] { return said.size() > before; }, 10000) ? said.last()
                                                                            : QString();
    }

    UpdateChecker checker;
    QStringList said;
};

QByteArray lengthHeader(qint64 length)
{
    return "Content-Length: " + QByteArray::number(length) + "\r\n";
}

QList<QByteArray> headerNames(const QByteArray &request)
{
    QList<QByteArray> names;
    for (const QByteArray &line : request.split('\n').mid(1))
        names << line.left(line.indexOf(':'));
    std::sort(names.begin(), names.end());
    return names;
}

/// In the zlib form, which is what HTTP calls "deflate".
QByteArray deflated(const QByteArray &bytes)
{
    return qCompress(bytes).mid(4); // without the length, which is Qt's own
}

} // namespace

class TestUpdateChecker : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<TestHttpServer> m_server;

private slots:
    /// The address is fixed by the first checker.
    void initTestCase()
    {
        m_server = std::make_unique<TestHttpServer>();
        qputenv("QUILLMOOR_UPDATE_HOST", m_server->host().toUtf8());
    }

    void init() { m_server->setAnswer(HttpAnswers::silence()); }
    /// The network layer reads headers byte by byte, and what has come of endless ones to their
    /// end.
    void cleanup() { QTRY_COMPARE_WITH_TIMEOUT(m_server->openConnections(), 0, 60000); }

    void theRequestIsAPlainGet()
    {
        m_server->setAnswer(HttpAnswers::body("{}"));
        Check check;
        check.run();
        const QList<QByteArray> lines = m_server->requests().last().split('\n');
        QCOMPARE(lines.first(), QByteArray("GET /api/lastversion.php HTTP/1.1\r"));
        QCOMPARE(lines.at(1), "Host: " + m_server->host().toUtf8() + "\r");
    }

    void theRequestHasJustTheNetworkLayersHeaders()
    {
        m_server->setAnswer(HttpAnswers::body("{}"));
        Check check;
        check.run();
        QNetworkAccessManager bare;
        const int before = m_server->requests().size();
        bare.get(QNetworkRequest(
            QUrl(QStringLiteral("http://%1/api/lastversion.php").arg(m_server->host()))));
        QTRY_COMPARE(m_server->requests().size(), before + 1);
        QCOMPARE(headerNames(m_server->requests().at(before - 1)),
                 headerNames(m_server->requests().at(before)));
    }

    void answersAreReported_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("said");
        QTest::newRow("a newer version")
            << QByteArray("{\"version\": [0, 9, 0, 0], \"versionString\": \"0.9\","
                          " \"url\": \"http://hall.example/get\"}")
            << "newer '0.9' 'http://hall.example/get'";
        QTest::newRow("this version") << QByteArray(
            "{\"version\": [0, 8, 5, 0], \"versionString\": \"0.8.5\", \"url\": \"u\"}")
                                      << "not newer '0.8.5' 'u'";
        QTest::newRow("an older version")
            << QByteArray("{\"version\": [0, 8, 4, 999]}") << "not newer '' ''";
        QTest::newRow("no JSON") << QByteArray("<html>") << Unreadable;
        QTest::newRow("an array") << QByteArray("[]") << Unreadable;
        QTest::newRow("three elements") << QByteArray("{\"version\": [0, 8, 5]}") << Unreadable;
        QTest::newRow("nothing") << QByteArray() << Unreadable;
    }
    void answersAreReported()
    {
        QFETCH(const QByteArray, body);
        m_server->setAnswer(HttpAnswers::body(body));
        Check check;
        QTEST(check.run(), "said");
        QCOMPARE(check.said.size(), 1);
    }

    void aChunkedAnswerIsRead()
    {
        m_server->setAnswer(HttpAnswers::bytes(
            HttpAnswers::reply("200 OK", "Transfer-Encoding: chunked\r\n",
                               "10\r\n{\"version\": [0, \r\n9\r\n9, 0, 0]}\r\n0\r\n\r\n")));
        Check check;
        QCOMPARE(check.run(), QStringLiteral("newer '' ''"));
    }

    void statusOfTheServiceIsAnError_data()
    {
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<QString>("explanation");
        QTest::newRow("404") << QByteArray("404 Not Found") << "server replied: Not Found";
        QTest::newRow("500") << QByteArray("500 Internal Server Error")
                             << "server replied: Internal Server Error";
        QTest::newRow("503") << QByteArray("503 Later") << "server replied: Later";
    }
    void statusOfTheServiceIsAnError()
    {
        QFETCH(const QByteArray, status);
        QFETCH(const QString, explanation);
        m_server->setAnswer(HttpAnswers::bytes(
            HttpAnswers::reply(status, lengthHeader(25), "{\"version\": [0, 9, 0, 0]}")));
        Check check;
        QCOMPARE(check.run(),
                 QStringLiteral("Error transferring http://%1/api/lastversion.php - %2")
                     .arg(m_server->host(), explanation));
        QCOMPARE(check.said.size(), 1);
    }

    void aServiceThatIsNotThereIsAnError()
    {
        m_server->stopListening();
        Check check;
        QCOMPARE(check.run(), QStringLiteral("Connection refused"));
        QVERIFY(m_server->listenAgain());
    }

    void aRequestForAPasswordIsAnError()
    {
        m_server->setAnswer(HttpAnswers::bytes(HttpAnswers::reply(
            "401 Unauthorized", "WWW-Authenticate: Basic realm=\"r\"\r\nContent-Length: 0\r\n",
            {})));
        Check check;
        QCOMPARE(check.run(), QStringLiteral("Host requires authentication"));
    }

    /// Whoever sends it could otherwise make us ask a third.
    void redirectionsAreNotFollowed()
    {
        m_server->queueAnswer(HttpAnswers::bytes(HttpAnswers::reply(
            "302 Found",
            "Location: http://" + m_server->host().toUtf8() + "/\r\nContent-Length: 0\r\n", {})));
        m_server->setAnswer(HttpAnswers::body("{\"version\": [0, 9, 0, 0]}"));
        const int before = m_server->requests().size();
        Check check;
        QCOMPARE(check.run(), Unreadable);
        QCOMPARE(m_server->requests().size(), before + 1);
    }

    void anAnswerThatBreaksOffIsAnError_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("at once") << QByteArray();
        QTest::newRow("within the headers") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le");
        QTest::newRow("before the announced end")
            << HttpAnswers::reply("200 OK", lengthHeader(100), "{\"version\": [0, 9, 0, 0]}");
        QTest::newRow("long before it") << HttpAnswers::reply(
            "200 OK", lengthHeader(Q_INT64_C(9000000000000000000)), "{\"version\": [0, 9, 0, 0]}");
    }
    void anAnswerThatBreaksOffIsAnError()
    {
        QFETCH(const QByteArray, answer);
        m_server->setAnswer(HttpAnswers::bytes(answer));
        Check check;
        const ResourceWatch watch;
        QCOMPARE(check.run(), QStringLiteral("Connection closed"));
        QCOMPARE(check.said.size(), 1);
        QVERIFY(watch.isWithinLimits());
    }

    void whatFollowsTheAnnouncedEndIsIgnored()
    {
        m_server->setAnswer(HttpAnswers::bytes(HttpAnswers::reply(
            "200 OK", lengthHeader(25), "{\"version\": [0, 9, 0, 0]}" + QByteArray(200000, 'x'))));
        Check check;
        QCOMPARE(check.run(), QStringLiteral("newer '' ''"));
    }

    void rubbishIsAnError()
    {
        m_server->setAnswer(HttpAnswers::bytes("220 hall.example ready\r\n\r\n"));
        Check check;
        QVERIFY(!check.run().isEmpty());
        QCOMPARE(check.said.size(), 1);
    }

    void theLongestAnswerIsRead()
    {
        const QByteArray body = "{\"version\": [0, 9, 0, 0]}";
        m_server->setAnswer(HttpAnswers::body(body + QByteArray(65536 - body.size(), ' ')));
        Check check;
        QCOMPARE(check.run(), QStringLiteral("newer '' ''"));
    }

    void anAnswerAByteTooLongIsUnreadable()
    {
        const QByteArray body = "{\"version\": [0, 9, 0, 0]}";
        m_server->setAnswer(HttpAnswers::body(body + QByteArray(65537 - body.size(), ' ')));
        Check check;
        QCOMPARE(check.run(), Unreadable);
        QCOMPARE(check.said.size(), 1);
    }

    void anEndlessAnswerIsNotFetched_data()
    {
        QTest::addColumn<QByteArray>("headers");
        QTest::newRow("without a length") << QByteArray();
        QTest::newRow("with a length") << lengthHeader(Q_INT64_C(100000000000));
    }
    void anEndlessAnswerIsNotFetched()
    {
        QFETCH(const QByteArray, headers);
        const qint64 before = m_server->sentBytes();
        m_server->setAnswer(
            HttpAnswers::flood(HttpAnswers::reply("200 OK", headers, "{"), QByteArray(65536, ' ')));
        Check check;
        const ResourceWatch watch;
        QCOMPARE(check.run(), Unreadable);
        QCOMPARE(check.said.size(), 1);
        QTRY_COMPARE(m_server->openConnections(), 0);
        QVERIFY(m_server->sentBytes() - before < 32 * 1024 * 1024);
        QVERIFY(watch.isWithinLimits());
    }

    void endlessHeadersAreNotFetched_data()
    {
        QTest::addColumn<QByteArray>("piece");
        QTest::newRow("many") << QByteArray("X: yyyyyyyyyy\r\n").repeated(4096);
        QTest::newRow("one") << QByteArray(65536, 'y');
    }
    void endlessHeadersAreNotFetched()
    {
        QFETCH(const QByteArray, piece);
        const qint64 before = m_server->sentBytes();
        m_server->setAnswer(HttpAnswers::flood("HTTP/1.1 200 OK\r\nX: ", piece));
        Check check;
        check.checker.setTimeLimit(300ms);
        const ResourceWatch watch;
        QCOMPARE(check.run(), QStringLiteral("Operation canceled"));
        QVERIFY(m_server->sentBytes() - before < 32 * 1024 * 1024);
        QVERIFY(watch.isWithinLimits());
        // The network layer hears of nothing else while headers come, which it reads byte by byte.
        m_server->hangUp();
    }

    void whoeverIsSlowToHearOfItFetchesNoMore()
    {
        const qint64 before = m_server->sentBytes();
        m_server->setAnswer(
            HttpAnswers::flood(HttpAnswers::reply("200 OK", {}, "{"), QByteArray(65536, ' ')));
        Check check;
        qint64 sentMeanwhile = 0;
        // As a message box does, which is shown until the user closes it.
        connect(&check.checker, &UpdateChecker::updateCheckFailed, this, [&] {
            QEventLoop loop;
            QTimer::singleShot(200, &loop, &QEventLoop::quit);
            loop.exec();
            sentMeanwhile = m_server->sentBytes() - before;
        });
        QCOMPARE(check.run(), Unreadable);
        QTRY_VERIFY(sentMeanwhile > 0);
        QVERIFY(sentMeanwhile < 32 * 1024 * 1024);
    }

    /// However harmless: nobody knows before how much it becomes.
    void aCompressedAnswerIsNotUnpacked()
    {
        const QByteArray body = deflated("{\"version\": [0, 9, 0, 0]}");
        m_server->setAnswer(HttpAnswers::bytes(HttpAnswers::reply(
            "200 OK", "Content-Encoding: deflate\r\n" + lengthHeader(body.size()), body)));
        Check check;
        QCOMPARE(check.run(), Unreadable);
    }

    void theServerIsToldNotToCompress()
    {
        m_server->setAnswer(HttpAnswers::body("{}"));
        Check check;
        check.run();
        QVERIFY(m_server->requests().last().contains("\r\nAccept-Encoding: identity\r\n"));
    }

    void aTrickleEndsWithTheTime_data()
    {
        QTest::addColumn<QByteArray>("start");
        QTest::addColumn<QByteArray>("piece");
        QTest::newRow("of the body") << HttpAnswers::reply("200 OK", {}, "{") << QByteArray(" ");
        QTest::newRow("of headers") << QByteArray("HTTP/1.1 200 OK\r\n") << QByteArray("X: y\r\n");
        QTest::newRow("of nothing") << QByteArray() << QByteArray();
    }
    void aTrickleEndsWithTheTime()
    {
        QFETCH(const QByteArray, start);
        QFETCH(const QByteArray, piece);
        m_server->setAnswer(HttpAnswers::trickle(start, piece, 10));
        Check check;
        check.checker.setTimeLimit(300ms);
        QCOMPARE(check.run(), QStringLiteral("Operation canceled"));
        QCOMPARE(check.said.size(), 1);
        QTRY_COMPARE(m_server->openConnections(), 0);
    }

    void anAnswerInTimeStays()
    {
        m_server->setAnswer(HttpAnswers::body("{\"version\": [0, 9, 0, 0]}"));
        Check check;
        check.checker.setTimeLimit(300ms);
        QCOMPARE(check.run(), QStringLiteral("newer '' ''"));
        QTest::qWait(400);
        QCOMPARE(check.said.size(), 1);
    }

    void checksSideBySideAreAnsweredEach()
    {
        for (const char *const name : {"a", "b", "c"})
            m_server->queueAnswer(HttpAnswers::body(
                "{\"version\": [0, 9, 0, 0], \"versionString\": \"" + QByteArray(name) + "\"}"));
        Check check;
        for (int i = 0; i < 3; ++i)
            check.checker.checkForUpdates();
        QTRY_COMPARE(check.said.size(), 3);
        check.said.sort();
        QCOMPARE(check.said,
                 QStringList({QStringLiteral("newer 'a' ''"), QStringLiteral("newer 'b' ''"),
                              QStringLiteral("newer 'c' ''")}));
    }

    void oneThatFailsDoesNotEndTheOthers()
    {
        m_server->queueAnswer(HttpAnswers::bytes({}));
        m_server->setAnswer(HttpAnswers::body("{\"version\": [0, 9, 0, 0]}"));
        Check check;
        check.checker.checkForUpdates();
        check.checker.checkForUpdates();
        QTRY_COMPARE(check.said.size(), 2);
        QVERIFY(check.said.contains(QStringLiteral("newer '' ''")));
        QCOMPARE(check.run(), QStringLiteral("newer '' ''"));
    }

    void aCheckerMayGoBeforeItsAnswersCome()
    {
        auto check = std::make_unique<Check>();
        const int before = m_server->requests().size();
        check->checker.checkForUpdates();
        check->checker.checkForUpdates();
        QTRY_COMPARE(m_server->requests().size(), before + 2);
        check.reset();
        QTRY_COMPARE(m_server->openConnections(), 0);
    }

    void aCheckerMayGoBeforeItsRequestsLeave()
    {
        auto check = std::make_unique<Check>();
        check->checker.checkForUpdates();
        check.reset();
        QTRY_COMPARE(m_server->openConnections(), 0);
    }

    void repliesAreNotKept()
    {
        UpdateChecker checker;
        QNetworkAccessManager network;
        m_server->setAnswer(HttpAnswers::body("{}"));
        QNetworkReply *const reply =
            network.get(QNetworkRequest(QUrl(QStringLiteral("http://%1/").arg(m_server->host()))));
        QSignalSpy finished(reply, &QNetworkReply::finished);
        QSignalSpy destroyed(reply, &QObject::destroyed);
        QVERIFY(finished.wait());
        checker.onFinished(reply);
        QTRY_COMPARE(destroyed.size(), 1);
    }

    void aParentOwnsIt()
    {
        QObject parent;
        const auto *const checker = new UpdateChecker(&parent);
        QCOMPARE(checker->parent(), &parent);
    }
};

QTEST_MAIN(TestUpdateChecker)
#include "tst_UpdateChecker.moc"

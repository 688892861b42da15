#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QTcpServer>

#include <functional>

class QTcpSocket;

/// A web server on the loopback that answers well or badly, as it is told. It lives in the test's
/// event loop.
class TestHttpServer : public QObject {
public:
    /// What is done with a connection once its request is there.
    using Answer = std::function<void(QTcpSocket &)>;

    TestHttpServer();
    ~TestHttpServer() override;

    /// "127.0.0.1:PORT"
    QString host() const;

    /// What every request is answered with from now on.
    void setAnswer(const Answer &answer) { m_answer = answer; }
    /// For the next requests only, in this order.
    void queueAnswer(const Answer &answer) { m_queued.append(answer); }

    /// The requests so far, each with its empty line at the end.
    const QList<QByteArray> &requests() const { return m_requests; }
    int openConnections() const;
    /// Ends all connections at once, whatever is under way.
    void hangUp();
    /// The bytes that the system has taken from the answers so far.
    qint64 sentBytes() const { return m_sentBytes; }

    void stopListening() { m_server.close(); }
    /// At the same port as before.
    bool listenAgain();

private:
    void onConnection();
    void onReadyRead(QTcpSocket &socket);
    Answer nextAnswer();

    QTcpServer m_server;
    quint16 m_port = 0;
    Answer m_answer;
    QList<Answer> m_queued;
    QList<QByteArray> m_requests;
    qint64 m_sentBytes = 0;
};

namespace HttpAnswers {

/// A whole reply; `headers` are lines that each end in "\r\n".
QByteArray reply(const QByteArray &status, const QByteArray &headers, const QByteArray &body);

/// Well behaved: status 200, the right length.
TestHttpServer::Answer body(const QByteArray &body);
/// Just these bytes, and then the end of the connection.
TestHttpServer::Answer bytes(const QByteArray &bytes);
/// Accepts the request and says nothing.
TestHttpServer::Answer silence();
/// `start`, and then `piece` again and again every so many milliseconds.
TestHttpServer::Answer trickle(const QByteArray &start, const QByteArray &piece, int intervalMs);
/// `start`, and then `piece` again and again as fast as it is taken.
TestHttpServer::Answer flood(const QByteArray &start, const QByteArray &piece);

} // namespace HttpAnswers

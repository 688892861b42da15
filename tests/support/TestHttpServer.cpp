#include "support/TestHttpServer.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>

namespace {

constexpr char RequestEnd[] = "\r\n\r\n";

void closeWhenWritten(QTcpSocket &socket)
{
    socket.disconnectFromHost();
}

} // namespace

TestHttpServer::TestHttpServer()
{
    connect(&m_server, &QTcpServer::newConnection, this, &TestHttpServer::onConnection);
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("Could not listen on the loopback: %s", qPrintable(m_server.errorString()));
    m_port = m_server.serverPort();
    m_answer = HttpAnswers::silence();
}

// Before the members that a connection, as it closes, may still use.
TestHttpServer::~TestHttpServer()
{
    for (QTcpSocket *const socket : m_server.findChildren<QTcpSocket *>())
        delete socket;
}

QString TestHttpServer::host() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_port);
}

int TestHttpServer::openConnections() const
{
    return m_server.findChildren<QTcpSocket *>().size();
}

void TestHttpServer::hangUp()
{
    for (QTcpSocket *const socket : m_server.findChildren<QTcpSocket *>())
        socket->abort();
}

bool TestHttpServer::listenAgain()
{
    return m_server.listen(QHostAddress::LocalHost, m_port);
}

void TestHttpServer::onConnection()
{
    QTcpSocket *const socket = m_server.nextPendingConnection();
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QTcpSocket::bytesWritten, this,
            [this](qint64 count) { m_sentBytes += count; });
    connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(*socket); });
}

void TestHttpServer::onReadyRead(QTcpSocket &socket)
{
    if (!socket.peek(socket.bytesAvailable()).endsWith(RequestEnd))
        return;
    m_requests.append(socket.readAll());
    nextAnswer()(socket);
}

TestHttpServer::Answer TestHttpServer::nextAnswer()
{
    return m_queued.isEmpty() ? m_answer : m_queued.takeFirst();
}

QByteArray HttpAnswers::reply(const QByteArray &status, const QByteArray &headers,
                              const QByteArray &body)
{
    return "HTTP/1.1 " + status + "\r\n" + headers + "\r\n" + body;
}

TestHttpServer::Answer HttpAnswers::body(const QByteArray &body)
{
    return bytes(
        reply("200 OK", "Content-Length: " + QByteArray::number(body.size()) + "\r\n", body));
}

TestHttpServer::Answer HttpAnswers::bytes(const QByteArray &bytes)
{
    return [bytes](QTcpSocket &socket) {
        socket.write(bytes);
        closeWhenWritten(socket);
    };
}

TestHttpServer::Answer HttpAnswers::silence()
{
    return [](QTcpSocket &) {};
}

TestHttpServer::Answer HttpAnswers::trickle(const QByteArray &start, const QByteArray &piece,
                                            int intervalMs)
{
    return [start, piece, intervalMs](QTcpSocket &socket) {
        socket.write(start);
        auto *const timer = new QTimer(&socket);
        QObject::connect(timer, &QTimer::timeout, &socket,
                         [&socket, piece] { socket.write(piece); });
        timer->start(intervalMs);
    };
}

TestHttpServer::Answer HttpAnswers::flood(const QByteArray &start, const QByteArray &piece)
{
    return [start, piece](QTcpSocket &socket) {
        QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, [&socket, piece] {
            if (socket.bytesToWrite() == 0)
                socket.write(piece);
        });
        socket.write(start);
    };
}

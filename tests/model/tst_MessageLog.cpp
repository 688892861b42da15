#include "model/MessageLog.h"

#include <QtTest>

namespace {

struct Message {
    QtMsgType type = QtDebugMsg;
    QByteArray file;
    QByteArray function;
    QByteArray category;
    QString text;
};

Message &lastMessage()
{
    static Message message;
    return message;
}

void record(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    lastMessage() = {type, context.file, context.function, context.category, text};
}

} // namespace

class TestMessageLog : public QObject {
    Q_OBJECT

private slots:
    void init() { m_previous = qInstallMessageHandler(record); }
    void cleanup() { qInstallMessageHandler(m_previous); }

    void writesWarnings()
    {
        MessageLog::warning("A/B", "void B::f(int)", QStringLiteral("it \"is\" so\n"));
        verify(QtWarningMsg, QStringLiteral("it \"is\" so\n"));
    }
    void writesCriticalMessages()
    {
        MessageLog::critical("A/B", "void B::f(int)", QStringLiteral("bad"));
        verify(QtCriticalMsg, QStringLiteral("bad"));
    }
    void writesQuotedWarnings()
    {
        MessageLog::quotedWarning("A/B", "void B::f(int)", QStringLiteral("Empty chord"));
        verify(QtWarningMsg, QStringLiteral("\"Empty chord\""));
        MessageLog::quotedWarning("A/B", "void B::f(int)", QStringLiteral("a\"b"));
        verify(QtWarningMsg, QStringLiteral("\"a\\\"b\""));
    }

private:
    static void verify(QtMsgType type, const QString &text)
    {
        QCOMPARE(lastMessage().type, type);
        QCOMPARE(lastMessage().file, QByteArray("A/B"));
        QCOMPARE(lastMessage().function, QByteArray("void B::f(int)"));
        QCOMPARE(lastMessage().category, QByteArray("default"));
        QCOMPARE(lastMessage().text, text);
    }

    QtMessageHandler m_previous = nullptr;
};

QTEST_APPLESS_MAIN(TestMessageLog)
#include "tst_MessageLog.moc"

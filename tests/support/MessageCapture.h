#pragma once

#include <QStringList>
#include <QVector>

/// Collects what is written to Qt's message log while it lives, in place of the usual output.
/// One at a time; its thread only reads while nobody else logs.
class MessageCapture {
public:
    struct Message {
        QtMsgType type;
        QString file;
        QString function;
        QString text;
    };

    MessageCapture();
    ~MessageCapture();
    Q_DISABLE_COPY(MessageCapture)

    const QVector<Message> &messages() const { return m_messages; }
    QStringList texts() const;

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text);

    static MessageCapture *s_current;
    QtMessageHandler m_previous;
    QVector<Message> m_messages;
};

#pragma once

#include <QStringList>
#include <QVector>

#include <mutex>

/// Collects what is written to Qt's message log while it lives, in place of the usual output.
/// One at a time. Any thread may log; one that still does while the object goes must be gone first.
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

    /// Those so far.
    QVector<Message> messages() const;
    QStringList texts() const;

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text);

    static MessageCapture *s_current;
    QtMessageHandler m_previous;
    mutable std::mutex m_mutex; // for what follows
    QVector<Message> m_messages;
};

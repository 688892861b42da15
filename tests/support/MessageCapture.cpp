#include "support/MessageCapture.h"

#include <QtGlobal>

MessageCapture *MessageCapture::s_current = nullptr;

MessageCapture::MessageCapture()
    : m_previous(qInstallMessageHandler(handle))
{
    s_current = this;
}

MessageCapture::~MessageCapture()
{
    s_current = nullptr;
    qInstallMessageHandler(m_previous);
}

QVector<MessageCapture::Message> MessageCapture::messages() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_messages;
}

QStringList MessageCapture::texts() const
{
    QStringList texts;
    const QVector<Message> all = messages();
    for (const Message &message : all)
        texts.append(message.text);
    return texts;
}

void MessageCapture::handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const std::lock_guard<std::mutex> lock(s_current->m_mutex);
    s_current->m_messages.append(
        {type, QString::fromUtf8(context.file), QString::fromUtf8(context.function), text});
}

#include "TestSupport/MessageCapture.h"

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

QStringList MessageCapture::texts() const
{
    QStringList texts;
    for (const Message &message : m_messages)
        texts.append(message.text);
    return texts;
}

void MessageCapture::handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    s_current->m_messages.append(
        {type, QString::fromUtf8(context.file), QString::fromUtf8(context.function), text});
}

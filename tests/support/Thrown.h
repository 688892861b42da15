#pragma once

#include <QString>

/// The message that `call` throws, or "(nothing thrown)".
template <typename Call> QString thrownBy(Call call)
{
    try {
        call();
    } catch (const QString &message) {
        return message;
    }
    return QStringLiteral("(nothing thrown)");
}

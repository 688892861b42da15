#pragma once

#include <QString>

#include <exception>
#include <optional>

/// What `action` throws, as a message to show; none when it returns. For the edge of a thread.
template <typename Action> std::optional<QString> messageThrownBy(Action action)
{
    try {
        action();
        return std::nullopt;
    } catch (const QString &message) {
        return message;
    } catch (const std::exception &exception) {
        return QString::fromLocal8Bit(exception.what());
    } catch (...) {
        return QStringLiteral("Unknown error.");
    }
}

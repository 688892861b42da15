#pragma once

#include <QList>
#include <QUrl>
#include <QWidget>

#include <functional>

/// Where a file manager's icons would be: files are dragged from it with the mouse.
class DragSource : public QWidget {
public:
    DragSource(const QRect &geometry, const QStringList &paths);

    /// Called again and again while the button is held: a drag has an event loop of its own.
    void setHand(const std::function<void()> &hand) { m_hand = hand; }
    /// Whether the window under the pointer would take the files.
    bool isWelcome() const { return m_isWelcome; }
    /// What became of the last drag, Qt::IgnoreAction when nobody took it.
    Qt::DropAction result() const { return m_result; }
    /// Whether a drag has come to its end.
    bool isDone() const { return m_isDone; }

protected:
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    QList<QUrl> m_urls;
    std::function<void()> m_hand;
    Qt::DropAction m_result = Qt::IgnoreAction;
    bool m_isWelcome = false;
    bool m_isDone = false;
};

#include "DragSource.h"

#include <QDrag>
#include <QMimeData>
#include <QTimer>

DragSource::DragSource(const QRect &geometry, const QStringList &paths)
{
    for (const QString &path : paths)
        m_urls.append(QUrl::fromLocalFile(path));
    setWindowFlag(Qt::X11BypassWindowManagerHint);
    setGeometry(geometry);
}

void DragSource::mouseMoveEvent(QMouseEvent *)
{
    auto *const files = new QMimeData;
    files->setUrls(m_urls);
    auto *const drag = new QDrag(this);
    drag->setMimeData(files);
    connect(drag, &QDrag::actionChanged,
            [this](Qt::DropAction action) { m_isWelcome = action != Qt::IgnoreAction; });
    QTimer hand;
    hand.callOnTimeout(m_hand);
    hand.start(20);
    m_result = drag->exec(Qt::CopyAction);
    m_isDone = true;
}

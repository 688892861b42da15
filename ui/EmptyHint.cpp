#include "ui/EmptyHint.h"

#include <QEvent>

EmptyHint::EmptyHint(QWidget *parent)
    : QLabel(tr("Drop ABC or MIDI files here to begin,\nor choose them from the File menu."),
             parent)
{
    setObjectName(QStringLiteral("lblHint"));
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignCenter);
    setWordWrap(true);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setStyleSheet(QStringLiteral("color: white")); // on the list's grey, whatever the palette
    setGeometry(parent->rect());
    parent->installEventFilter(this);
}

bool EmptyHint::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parent() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QLabel::eventFilter(watched, event);
}

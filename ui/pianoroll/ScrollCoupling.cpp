#include "ui/pianoroll/ScrollCoupling.h"

#include <QScrollBar>

namespace {

void takeRanges(QScrollBar *from, QScrollBar *to)
{
    QObject::connect(from, &QScrollBar::rangeChanged, to, &QScrollBar::setRange);
}

} // namespace

namespace ScrollCoupling {

void coupleValues(QScrollBar *leader, QScrollBar *follower)
{
    follower->setValue(leader->value());
    QObject::connect(leader, &QScrollBar::valueChanged, follower, &QScrollBar::setValue);
    QObject::connect(follower, &QScrollBar::valueChanged, leader, &QScrollBar::setValue);
}

void coupleRanges(QScrollBar *leader, QScrollBar *follower)
{
    follower->setRange(leader->minimum(), leader->maximum());
    takeRanges(leader, follower);
    takeRanges(follower, leader);
}

// The signal comes before the bar forces its value into the new range, so the value survives.
void holdRange(QScrollBar *leader, QScrollBar *follower)
{
    follower->setRange(leader->minimum(), leader->maximum());
    takeRanges(leader, follower);
    QObject::connect(follower, &QScrollBar::rangeChanged, leader, [leader, follower] {
        follower->setRange(leader->minimum(), leader->maximum());
    });
}

} // namespace ScrollCoupling

#pragma once

class QScrollBar;

/// Keeps the scroll bars of views that lie side by side together, for as long as both exist.
namespace ScrollCoupling {

/// Each takes over the other's values.
void coupleValues(QScrollBar *leader, QScrollBar *follower);
/// Each takes over the other's range.
void coupleRanges(QScrollBar *leader, QScrollBar *follower);
/// The follower has the leader's range, whatever it computes for its own contents.
void holdRange(QScrollBar *leader, QScrollBar *follower);

} // namespace ScrollCoupling

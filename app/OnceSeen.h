#pragma once

#include <functional>

class QWidget;

/// Calls `action` once, from the event loop, when the shown window has been painted for the first
/// time: what takes long then begins behind a window and not behind a black hole. It is called
/// some seconds later too if nobody gets to see the window, as when it starts minimised. Not any
/// more once the window is gone.
void onceSeen(QWidget &window, const std::function<void()> &action);

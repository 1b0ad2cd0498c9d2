#pragma once

class QRegion;
class QWindow;

// What a window tells the desktop beyond what the toolkit can say. Only X11 knows these hints;
// elsewhere nothing happens. Main thread only.
namespace quillet::platform {

// Takes clicks inside the region alone (points, from the window's corner); those beside it reach
// the window below. The region does not follow the window's size.
void setInputRegion(QWindow& window, const QRegion& region);

// Gives the window no entry in taskbars and pagers. To be said before each time that the window is
// shown: desktops forget it when the window goes.
void leaveOutOfTaskbars(QWindow& window);

}  // namespace quillet::platform

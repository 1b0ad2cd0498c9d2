#pragma once

class QRegion;
class QWindow;

// Hints to the desktop that the toolkit does not offer. Only X11 knows them; on other window
// systems nothing happens. Main thread only.
namespace quillet::platform {

// Takes clicks inside the region only (points, from the window's corner); others reach the window
// below. The region does not follow the window's size.
void setInputRegion(QWindow& window, const QRegion& region);

// Keeps the window out of taskbars and pagers. Call it each time before the window is shown,
// because desktops forget it when the window is hidden.
void leaveOutOfTaskbars(QWindow& window);

}  // namespace quillet::platform

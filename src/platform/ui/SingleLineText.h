#pragma once

#include <QString>
#include <string_view>

namespace quillet::platform {

// UTF-8 text of any origin made fit for one line of a view: a run of control characters (tabs,
// line and paragraph breaks among them) becomes one blank, bidirectional controls are dropped,
// what is not valid UTF-8 becomes U+FFFD. At most `kSingleLineLimit` UTF-16 units are kept, more
// than any view can show, so that a huge text costs no more than a long one.
inline constexpr qsizetype kSingleLineLimit = 1024;
QString singleLineText(std::string_view text);

// The direction that the text itself has: that of its first letter with a direction.
Qt::LayoutDirection directionOf(const QString& text);

}  // namespace quillet::platform

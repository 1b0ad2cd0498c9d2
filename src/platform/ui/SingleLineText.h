#pragma once

#include <QString>
#include <string_view>

namespace quillet::platform {

// Makes UTF-8 text of any origin fit for one line of a view: a run of control characters, tabs and
// line breaks becomes one blank, bidirectional controls are dropped, and invalid UTF-8 becomes
// U+FFFD. At most `kSingleLineLimit` UTF-16 units are kept, which is more than any view can show,
// so that a huge text costs no more than a long one.
inline constexpr qsizetype kSingleLineLimit = 1024;
QString singleLineText(std::string_view text);

// The direction of the text's first letter that has a direction.
Qt::LayoutDirection directionOf(const QString& text);

}  // namespace quillet::platform

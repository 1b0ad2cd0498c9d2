#pragma once

#include <QString>
#include <string_view>

namespace quillet::host {

// How much of the toolkit's HTML a stranger's body may have, so that it is laid out in a moment.
enum class BodyForm { Html, HtmlWithoutTables, PlainText };

// The form in which to show `body`, of whose HTML the toolkit gets `beginning`. More than 1,000
// cells or a span of more than 20 make it plain text, and so do tags and spans that are spelled so
// oddly that only the toolkit knows what they are. Tables whose grid may be large, that may be
// nested deep, or whose tags are not properly nested make it one without tables.
BodyForm formOf(std::string_view body, const QString& beginning);

// The same text in place of cells, rows and tables.
QString withoutTables(QString html);

}  // namespace quillet::host

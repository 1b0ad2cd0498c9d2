#pragma once

#include <QString>

// Texts of the window. Any thread.
namespace quillet::message {

// The text of an English key in the user's language.
QString localized(const char* key);

// The same with `argument` in place of "%@".
QString localized(const char* key, const QString& argument);

// A file name or a text of an unknown script. It stays apart from what stands beside it, whichever
// way that runs.
QString isolated(const QString& text);

}  // namespace quillet::message

#pragma once

namespace quillet::message {

// How a message is shown. Each next form costs less work and asks less of the message.
enum class ShownForm {
    Whole,      // its HTML, else its text
    PlainText,  // the beginning of its text
    Source,     // the beginning of the file; nothing of it is parsed
};

}  // namespace quillet::message

#include "platform/ui/VisualFormat.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "platform/base/Ascii.h"
#include "platform/base/Exception.h"

namespace quillet::platform {

namespace {

constexpr double kStandardGap = 8;       // points, between two views
constexpr double kStandardEdgeGap = 20;  // points, between a view and the container's edge
constexpr double kGreatestLength = 1'000'000;

bool startsName(char character) {
    return isAsciiLetter(character) || character == '_';
}

bool continuesName(char character) {
    return startsName(character) || isAsciiDigit(character);
}

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    VisualFormat parse();

private:
    bool take(std::string_view token);
    void expect(std::string_view token);
    [[noreturn]] void fail(const std::string& expected) const;
    char peek() const { return position_ < text_.size() ? text_[position_] : '\0'; }

    Axis axis();
    VisualFormat::View view();
    LengthBounds gap(bool leading);
    LengthBounds boundsInParentheses();
    LengthBound bound();
    double number();

    std::string_view text_;
    std::size_t position_ = 0;
};

bool Parser::take(std::string_view token) {
    if (text_.substr(position_, token.size()) != token) {
        return false;
    }
    position_ += token.size();
    return true;
}

void Parser::expect(std::string_view token) {
    if (!take(token)) {
        fail("\"" + std::string(token) + "\"");
    }
}

void Parser::fail(const std::string& expected) const {
    throw Exception("layout string \"" + std::string(text_) + "\", offset " +
                    std::to_string(position_) + ": expected " + expected);
}

VisualFormat Parser::parse() {
    VisualFormat format;
    format.axis = axis();
    if (take("|")) {
        format.leadingGap = gap(true);
    }
    format.views.push_back(view());
    while (position_ < text_.size()) {
        LengthBounds next = gap(false);
        if (take("|")) {
            format.trailingGap = std::move(next);
            break;
        }
        format.gaps.push_back(std::move(next));
        format.views.push_back(view());
    }
    if (position_ < text_.size()) {
        fail("the end");
    }
    return format;
}

Axis Parser::axis() {
    if (take("V:")) {
        return Axis::Vertical;
    }
    take("H:");
    return Axis::Horizontal;
}

VisualFormat::View Parser::view() {
    expect("[");
    if (!startsName(peek())) {
        fail("a view's name");
    }
    VisualFormat::View view;
    while (continuesName(peek())) {
        view.name += text_[position_++];
    }
    if (peek() == '(') {
        view.size = boundsInParentheses();
    }
    expect("]");
    return view;
}

LengthBounds Parser::gap(bool leading) {
    if (!take("-")) {
        return {{Relation::Equal, 0}};
    }
    if (peek() == '[' || peek() == '|') {
        const bool atEdge = leading || peek() == '|';
        return {{Relation::Equal, atEdge ? kStandardEdgeGap : kStandardGap}};
    }
    LengthBounds bounds;
    if (peek() == '(') {
        bounds = boundsInParentheses();
    } else if (peek() == '-') {
        fail("a gap's length");  // not a negative number: its sign looks like a second hyphen
    } else {
        bounds.push_back({Relation::Equal, number()});
    }
    expect("-");
    return bounds;
}

LengthBounds Parser::boundsInParentheses() {
    expect("(");
    LengthBounds bounds{bound()};
    while (take(",")) {
        bounds.push_back(bound());
    }
    expect(")");
    return bounds;
}

LengthBound Parser::bound() {
    if (take(">=")) {
        return {Relation::AtLeast, number()};
    }
    if (take("<=")) {
        return {Relation::AtMost, number()};
    }
    take("==");
    return {Relation::Equal, number()};
}

double Parser::number() {
    const char* begin = text_.data() + position_;
    double value = 0;
    const auto [end, error] =
        std::from_chars(begin, text_.data() + text_.size(), value, std::chars_format::fixed);
    if (error != std::errc{} || !(std::abs(value) <= kGreatestLength)) {
        fail("a length in points");
    }
    position_ += static_cast<std::size_t>(end - begin);
    return value;
}

}  // namespace

VisualFormat parseVisualFormat(std::string_view text) {
    return Parser(text).parse();
}

}  // namespace quillet::platform

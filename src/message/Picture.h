#pragma once

#include <QImage>
#include <string_view>

namespace quillet::message {

// The picture in the bytes of a PNG, JPEG, GIF or BMP file, made smaller if it is wider than
// `widest` pixels. Null for other kinds, which may name further files, for what cannot be read, and
// for more than 16 million pixels: the size is looked at before anything is decoded. Any thread.
QImage pictureFrom(std::string_view bytes, int widest);

}  // namespace quillet::message

#pragma once

#include <QIcon>

namespace quillet {

// The program's icon from the desktop's icon theme, else the one shipped with the program.
QIcon programIcon();

}  // namespace quillet

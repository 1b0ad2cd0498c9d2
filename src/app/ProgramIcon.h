#pragma once

#include <QIcon>

namespace quillet {

// The program's icon: the desktop's icon theme's, else the one shipped beside the program.
QIcon programIcon();

}  // namespace quillet

#pragma once

namespace quillet {

// Runs quillet-today with the arguments of main; returns its exit status. Makes the application
// object, so there may be none yet.
int runToday(int argc, char** argv);

}  // namespace quillet

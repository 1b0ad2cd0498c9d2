#pragma once

// A place at which a test may stop or kill the program: the one that QUILLET_FAULT_POINT names.
// Its value is "NAME" (the process kills itself there) or "NAME:stop" (it stops until SIGCONT).
// Only builds with tests have fault points; elsewhere this is nothing.
#ifdef QUILLET_FAULT_POINTS
namespace quillet::mailhost {
void faultPoint(const char* name);
}
#else
namespace quillet::mailhost {
inline void faultPoint(const char* /*name*/) {}
}  // namespace quillet::mailhost
#endif

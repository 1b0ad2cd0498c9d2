#pragma once

namespace quillet::mailhost {

// Starts the library that reads and writes mail, which all its users call first. Any thread.
void startMailLibrary();

}  // namespace quillet::mailhost

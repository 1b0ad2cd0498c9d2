#pragma once

#include <string>

class QWidget;

namespace quillet::host {

// The leave to come to the front that a launcher hands along: the user has just clicked there.
struct Activation {
    std::string token;      // "activation-token"; empty: none
    std::string startupId;  // "desktop-startup-id"; empty: none

    bool isGiven() const { return !token.empty() || !startupId.empty(); }
};

// What the program was started with; taken out of the environment, so that the toolkit does not
// spend it on the first window. Before the application object is made.
Activation takeActivationOfEnvironment();

// Asks the desktop to bring a shown window to the front and give it the focus. The desktop decides
// by the moment of the click that the activation tells; without one it may refuse. Main thread
// only, while no other thread reads the environment.
void bringToFront(QWidget& window, const Activation& activation);

}  // namespace quillet::host

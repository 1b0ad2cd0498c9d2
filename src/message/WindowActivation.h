#pragma once

#include "platform/desktop/ApplicationService.h"

class QWidget;

namespace quillet::message {

using platform::Activation;

// What the program was started with; taken out of the environment, so that the toolkit does not
// spend it on the first window. Before the application object is made.
Activation takeActivationOfEnvironment();

// Asks the desktop to bring a shown window to the front and give it the focus. The desktop decides
// by the moment of the click that the activation tells; without one it may refuse. Main thread
// only, while no other thread reads the environment.
void bringToFront(QWidget& window, const Activation& activation);

}  // namespace quillet::message

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillet::platform {

class SessionBus;

// The permission to come to the front that a launcher hands along: the user has just clicked there.
struct Activation {
    std::string token;      // "activation-token"; empty: none
    std::string startupId;  // "desktop-startup-id"; empty: none

    bool isGiven() const { return !token.empty() || !startupId.empty(); }
};

// What somebody asks of an application.
struct ApplicationCall {
    std::string name;               // "Open", "Activate", "ActivateAction"; "run": command line
    std::vector<std::string> urls;  // of Open and run
    Activation activation;
    bool isInBackground = false;
    std::string problem;  // why it cannot be followed; empty if it can
};

// An application on the session bus: the interface org.freedesktop.Application at the path that
// belongs to its identifier, which is its name there. Answers at once, whatever the call asks for.
// A call with wrong arguments is handed on with a problem. Main thread only.
class ApplicationService {
public:
    enum class Claim { First, Later, Refused };

    // `receive` is called from the event loop. The bus has to outlive the service.
    ApplicationService(SessionBus& bus,
                       const std::string& identifier,
                       std::function<void(const ApplicationCall&)> receive);
    ~ApplicationService();

    // Takes the name. Later: another program has it. Refused: the bus does not give it, see
    // lastError().
    Claim claim();
    std::string lastError() const;
    // Hands a call to the program that has the name. Returns false if it does not answer in time.
    bool handOver(const ApplicationCall& call) const;

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform

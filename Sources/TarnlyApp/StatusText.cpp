#include "TarnlyApp/StatusText.hpp"

namespace tarnly {

std::string listeningText(std::optional<std::uint16_t> port, const std::optional<std::string>& instanceName,
                          bool passwordRequired) {
    const auto portText = port ? std::to_string(*port) : "?";
    const auto nameText = instanceName ? ", advertising as \"" + *instanceName + "\"" : ", not advertised";
    const auto pairingText = passwordRequired ? ", pairing password required." : ", pairing open.";
    return "Listening on port " + portText + nameText + pairingText;
}

std::string failureText(const std::string& error) { return "Failed to start: " + error; }

} // namespace tarnly

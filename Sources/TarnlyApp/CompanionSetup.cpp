#include "TarnlyApp/CompanionSetup.hpp"

#include "TarnlyApp/SettingRules.hpp"
#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;

constexpr std::uint16_t usualSimulatorPort = 8086;

std::optional<std::uint16_t> portFrom(const std::optional<std::uint16_t>& option,
                                      const std::optional<std::int64_t>& setting) {
    if (option || !setting) return option;
    return static_cast<std::uint16_t>(*setting);
}

std::optional<fs::path> pathFrom(const std::optional<fs::path>& option,
                                 const std::optional<std::string>& setting) {
    if (option) return fs::absolute(*option);
    if (setting) return fs::path(*setting);
    return std::nullopt;
}

std::vector<WebOrigin> originsFrom(const CompanionOptions& options, const AppSettings& settings) {
    if (!options.allowedOrigins.empty() || !settings.allowedOrigins) return options.allowedOrigins;
    std::vector<WebOrigin> origins;
    for (const auto& text : *settings.allowedOrigins)
        if (auto origin = originFrom(text)) origins.push_back(std::move(*origin));
    return origins;
}

} // namespace

CompanionSetup setupFrom(const CompanionOptions& options, const AppSettings& settings) {
    CompanionSetup setup;
    setup.simulator.host = options.simulatorHost.value_or(settings.simulatorHost.value_or("127.0.0.1"));
    setup.simulator.port =
        portFrom(options.simulatorPort, settings.simulatorPort).value_or(usualSimulatorPort);
    setup.ports = portsToTry(portFrom(options.port, settings.port));
    if (options.advertises.value_or(settings.advertise.value_or(true))) {
        setup.name = options.name ? *options.name : settings.name.value_or(hostName());
    }
    setup.situationsFolder = pathFrom(options.situationsFolder, settings.situationsFolder);
    setup.navigationDatabase = pathFrom(options.navigationDatabase, settings.navigationDatabase);
    setup.allowedOrigins = originsFrom(options, settings);
    return setup;
}

} // namespace tarnly

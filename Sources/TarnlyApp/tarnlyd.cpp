#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <variant>

#include "TarnlyApp/AppSettings.hpp"
#include "TarnlyApp/DaemonOptions.hpp"
#include "TarnlyApp/StatusText.hpp"
#include "TarnlyCore/CompanionHost.hpp"
#include "TarnlyPlatform/Folders.hpp"
#include "TarnlyXPlane/NetworkTransport.hpp"
#include "TarnlyXPlane/XPlaneBackend.hpp"

namespace tarnly {
namespace {

/// Time for the last answers and the closing handshakes at the end.
constexpr auto closingPatience = std::chrono::milliseconds(300);

std::shared_ptr<NavDatabase> openNavDatabase(const DaemonOptions& options) {
    if (!options.navigationDatabase) return nullptr;
    return std::make_shared<NavDatabase>(options.navigationDatabase->string());
}

void runDaemon(const DaemonOptions& options) {
    const auto dataFolder = options.dataFolder ? *options.dataFolder : applicationSupportFolder();
    const auto settings = AppSettings::load(AppSettings::fileIn(dataFolder));
    const auto name = options.name.value_or(hostName());

    boost::asio::io_context network(1);
    const auto executor = network.get_executor();
    WorkerPool workers;
    SystemClock clock;
    const auto backend =
        std::make_shared<XPlaneBackend>(options.simulator, makeNetworkTransport(executor), clock, workers);

    if (options.situationsFolder) {
        backend->setSituationsDirectory(std::filesystem::absolute(*options.situationsFolder).string());
    }

    CompanionHost::Configuration configuration;
    configuration.recordingDirectory = dataFolder / "Recordings";
    configuration.instanceName = name;
    configuration.simKind = "xplane";
    configuration.appVersion = TARNLY_VERSION;
    configuration.password = settings.password;
    configuration.navDatabase = openNavDatabase(options);
    configuration.port = options.port;
    if (!options.advertises) configuration.publish = nullptr;
    CompanionHost host(executor, workers, clock, backend, std::move(configuration));

    boost::asio::signal_set signals(executor, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code& cancelled, int) {
        if (!cancelled) network.stop();
    });

    std::exception_ptr failure;
    boost::asio::co_spawn(network, host.start(), [&](const std::exception_ptr& error) {
        failure = error;
        if (failure) return network.stop();
        const auto published = options.advertises ? std::optional(name) : std::nullopt;
        std::cout << listeningText(host.advertiser().advertisedPort(), published,
                                   host.pairing().requiresPairing())
                  << std::endl;
    });
    network.run();

    host.stop();
    backend->close();
    network.restart();
    network.run_for(closingPatience);
    if (failure) std::rethrow_exception(failure);
}

} // namespace
} // namespace tarnly

int main(int argc, char** argv) {
    const auto parsed = tarnly::parseDaemonOptions(argc, argv);
    if (const auto* exit = std::get_if<tarnly::EarlyExit>(&parsed)) {
        (exit->status == 0 ? std::cout : std::cerr) << exit->text;
        return exit->status;
    }
    try {
        tarnly::runDaemon(std::get<tarnly::DaemonOptions>(parsed));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << tarnly::failureText(error.what()) << std::endl;
        return 1;
    }
}

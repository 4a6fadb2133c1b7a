#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <variant>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyApp/CompanionRuntime.hpp"
#include "TarnlyApp/DataFolderClaim.hpp"
#include "TarnlyApp/EndWatch.hpp"
#include "TarnlyApp/Settings.hpp"
#include "TarnlyPlatform/Base/FreedMemory.hpp"
#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {
namespace {

int runDaemon(const CompanionOptions& options) {
    EndWatch endWatch;
    const DataFolderClaim claim(dataFolder(options));
    // What starts at login is the desktop application; the daemon leaves that alone.
    SettingsStore settingsStore(AppSettings::fileIn(dataFolder(options)), nullptr);
    CompanionRuntime runtime(settingsStore, options);
    if (claim.problem()) runtime.warn(*claim.problem());
    boost::asio::signal_set signals(runtime.executor(), SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code& cancelled, int) {
        if (cancelled) return;
        endWatch.expectEnd(EndWatch::longest, 0);
        runtime.end();
    });
    runtime.onStatusChange = [&] {
        const bool failed = runtime.state() == CompanionRuntime::State::failed;
        (failed ? std::cerr : std::cout) << runtime.statusText() << std::endl;
        if (failed) runtime.end();
    };
    runtime.start();
    runtime.run();
    runtime.finishRecordings();
    settingsStore.finishSaving();
    const int status = runtime.state() == CompanionRuntime::State::failed ? 1 : 0;
    endWatch.expectEnd(EndWatch::takingDown, status);
    return status;
}

} // namespace
} // namespace tarnly

int main(int argc, char** argv) {
    try {
        tarnly::keepLittleFreedMemory();
        tarnly::failRatherThanEnd();
        const auto parsed = tarnly::prepareRun(tarnly::CompanionProgram::tarnlyd, argc, argv);
        if (const auto* exit = std::get_if<tarnly::EarlyExit>(&parsed)) {
            (exit->status == 0 ? std::cout : std::cerr) << exit->text;
            return exit->status;
        }
        return tarnly::runDaemon(std::get<tarnly::CompanionOptions>(parsed));
    } catch (const std::exception& error) {
        std::cerr << "Failed to start: " << error.what() << std::endl; // there may be no memory for more
        return 1;
    }
}

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyClient/Doctor/ReachCheck.hpp"
#include "TarnlyClient/Doctor/Rounds.hpp"
#include "TarnlyCore/Protocol/ReachTest.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"
#include "TarnlyPlatform/Qr/QrCode.hpp"

namespace tarnly::client {
namespace {

struct DoctorOptions {
    std::optional<std::filesystem::path> dataFolder;
    std::optional<std::string> simulatorHost;
    std::optional<std::uint16_t> simulatorPort;
    bool reach = false;
    std::chrono::milliseconds wait{120'000};

    std::filesystem::path folder() const { return dataFolder ? *dataFolder : applicationDataFolder(); }
};

void print(const CommandContext& context, const Finding& finding) {
    auto printer = context.printer();
    if (context.options.json) return printer.line(encodeJson(finding));
    for (const auto& line : findingLines(finding))
        printer.line(printable(line));
}

/// What answers at once has a tenth of the time that an answer may take.
std::chrono::milliseconds unitOf(const CommandContext& context) {
    constexpr int part = 10;
    return context.options.companion.patience / part;
}

/// For one whose trouble the findings do not end.
void pointFurther(const CommandContext& context) {
    constexpr auto page = "troubleshooting.md";
    const auto installed = installedDocument(page);
    const auto where = installed ? ", here as " + installed->string() : std::string();
    print(context,
          Finding::unknown("troubleshooting", "What else may be in the way, and what to do, is in docs/" +
                                                  std::string(page) + where + "."));
}

void makeRounds(const CommandContext& context, const DoctorOptions& options) {
    Rounds::Options given;
    given.companion = context.options.companion;
    given.dataFolder = options.folder();
    given.password = context.sessionOptions().password;
    given.simulatorHost = options.simulatorHost;
    given.simulatorPort = options.simulatorPort;
    given.unit = unitOf(context);
    Rounds rounds(std::move(given), [&](const Finding& finding) { print(context, finding); });
    const auto amiss = rounds.walk();
    if (amiss > 0) pointFurther(context);
    if (amiss == 1) throw ClientError("1 step needs your attention");
    if (amiss > 1) throw ClientError(std::to_string(amiss) + " steps need your attention");
}

void showPages(const CommandContext& context, const CompanionStatus& status) {
    const auto pages = ReachTest::pages(status);
    if (pages.empty())
        throw ClientError(
            "this computer has no address in a network; connect it to the one that the device is in");
    auto printer = context.printer();
    if (context.options.json)
        return print(context, Finding::unknown("reach", "Waiting for a device to open " + pages.front()));
    printer.line(ReachTest::instruction().text());
    for (const auto& page : pages)
        printer.line("  " + printable(page));
    if (const auto code = QrCode::of(pages.front())) {
        for (const auto& line : terminalLines(*code))
            printer.line(line);
    }
    printer.line("Waiting for it; Ctrl+C gives up.");
}

void tryReach(const CommandContext& context, const DoctorOptions& options) {
    if (context.options.companion.host || context.options.companion.instance)
        throw UsageError(
            "--reach is for the companion on this computer: it takes neither --host nor --instance");
    const auto limit = context.options.companion.patience;
    const auto finding = waitForADevice(options.folder(), options.wait, limit,
                                        [&](const CompanionStatus& status) { showPages(context, status); });
    print(context, finding);
    if (!finding.isAmiss()) return;
    pointFurther(context);
    throw ClientError("no device works with the companion yet");
}

} // namespace

void addDoctorCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("doctor", "Find out what keeps a lesson from working, and what to do");
    const auto options = std::make_shared<DoctorOptions>();
    command
        ->add_option("--data-dir", options->dataFolder,
                     "The companion's data folder, where it has another one")
        ->type_name("DIR");
    command
        ->add_option("--sim-host", options->simulatorHost,
                     "The simulator's host, where the companion does not tell")
        ->type_name("HOST");
    command->add_option("--sim-port", options->simulatorPort, "The port of the simulator's web API")
        ->type_name("PORT")
        ->check(CLI::Range(1, 65535));
    auto* reach =
        command->add_flag("--reach", options->reach, "Wait for a device to open the companion's address");
    addSeconds(*command, "--wait", "With --reach, how long; 120 when not given", [options](auto time) {
        options->wait = time;
    })->needs(reach);
    command->callback([&context, options] {
        options->reach ? tryReach(context, *options) : makeRounds(context, *options);
    });
}

} // namespace tarnly::client

#include "TarnlyClient/Doctor/Rounds.hpp"

#include <exception>

#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyClient/Doctor/Judgement.hpp"
#include "TarnlyClient/Doctor/Probes.hpp"
#include "TarnlyCore/Protocol/StatusQuery.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::client {
namespace {

constexpr auto loopback = "127.0.0.1";
constexpr std::uint16_t simulatorsOwnPort = 8086;
constexpr auto elsewhere = "Cannot be judged from here: the companion runs on another computer.";
constexpr auto notRunning = "Cannot be judged while no companion runs.";

/// "ws://[2001:db8::1]:41234" as a place.
Endpoint placeIn(const std::string& address, std::uint16_t port) {
    const auto begin = address.find("//") + 2;
    auto host = address.substr(begin, address.rfind(':') - begin);
    if (host.starts_with('[')) host = host.substr(1, host.size() - 2);
    return {std::move(host), port};
}

std::optional<std::filesystem::path> pathIn(const std::optional<SourcesStatus>& sources,
                                            std::optional<std::string> SourcesStatus::*member) {
    if (!sources || !((*sources).*member)) return std::nullopt;
    return *((*sources).*member);
}

} // namespace

CompanionStatus askForWholeStatus(const std::filesystem::path& dataFolder, std::chrono::milliseconds limit) {
    const auto json = askForStatus(dataFolder, limit);
    try {
        return decodeJson<CompanionStatus>(parseJson(json));
    } catch (const JsonError&) {
        throw ClientError(
            "the companion tells what this tool does not understand; use the tool that came with it");
    }
}

int Rounds::walk() {
    lookAtCompanion();
    lookAround();
    lookAtPlaces();
    lookAtSimulator();
    lookAtValues();
    lookAtFiles();
    return amiss_;
}

void Rounds::add(const Finding& finding) {
    if (finding.isAmiss()) ++amiss_;
    tell_(finding);
}

void Rounds::lookAtCompanion() {
    constexpr auto step = "companion";
    if (isElsewhere()) {
        add(Finding::unknown(step, elsewhere, "Run the doctor there as well."));
        return;
    }
    try {
        status_ = askForWholeStatus(options_.dataFolder, 2 * options_.unit);
        add(Finding::fine(step, status_->words.text()));
        add(judgeWarnings(*status_));
    } catch (const std::exception& error) {
        const std::string text = error.what();
        const auto cut = text.find("; ");
        const auto cure = cut == std::string::npos ? std::string() : text.substr(cut + 2);
        add(Finding::amiss(step, "Fails: " + text.substr(0, cut) + ".",
                           cure.empty() ? cure : "To do: " + cure + "."));
    }
}

void Rounds::lookAround() {
    constexpr auto step = "published";
    if (isElsewhere() && options_.companion.host) return add(Finding::unknown(step, elsewhere));
    if (!isElsewhere() && !status_) return add(Finding::unknown(step, notRunning));
    std::optional<std::vector<FoundService>> found;
    std::string failure;
    try {
        found = findCompanions(2 * options_.unit);
    } catch (const std::exception& error) {
        failure = error.what();
    }
    if (status_) return add(judgePublication(*status_, found, failure));
    try {
        const auto place =
            chooseCompanion(found.value_or(std::vector<FoundService>()), options_.companion.instance);
        companion_ = place.endpoint;
        add(Finding::fine(step, "\"" + *place.name + "\" is found."));
    } catch (const std::exception& error) {
        add(Finding::amiss(step, failure.empty() ? error.what() : failure,
                           "Start the companion and avahi-daemon on its computer, in the same network."));
    }
}

void Rounds::lookAtPlaces() {
    constexpr auto step = "reachable";
    std::vector<Endpoint> places;
    if (options_.companion.host) companion_ = Endpoint{*options_.companion.host, options_.companion.port};
    if (status_ && status_->port) {
        const auto port = static_cast<std::uint16_t>(*status_->port);
        companion_ = Endpoint{loopback, port};
        for (const auto& address : status_->addresses)
            places.push_back(placeIn(address, port));
        if (places.empty()) add(judgeNoAddress());
    }
    if (!companion_)
        return add(Finding::unknown(step, isElsewhere() ? "No companion is found." : notRunning));
    if (places.empty()) places.push_back(*companion_);
    for (const auto& page : probePages(places, options_.unit))
        add(judgePage(page));
    if (status_) add(judgePairing(*status_));
}

void Rounds::lookAtSimulator() {
    const auto sources = status_ ? status_->sources : std::nullopt;
    if (isElsewhere() && !options_.simulatorHost) return add(Finding::unknown("simulator", elsewhere));
    Endpoint simulator{loopback, simulatorsOwnPort};
    if (sources) simulator = {sources->simulatorHost, static_cast<std::uint16_t>(sources->simulatorPort)};
    if (options_.simulatorHost) simulator.host = *options_.simulatorHost;
    if (options_.simulatorPort) simulator.port = *options_.simulatorPort;
    const auto finding = judgeSimulator(probeSimulator(simulator, 2 * options_.unit));
    isSimulatorReady_ = !finding.isAmiss();
    add(finding);
}

void Rounds::lookAtValues() {
    constexpr auto step = "values";
    if (!companion_)
        return add(Finding::unknown(step, isElsewhere() ? "No companion is found." : notRunning));
    if (!isSimulatorReady_)
        return add(Finding::unknown(step, "Cannot be judged while the simulator is not ready to fly."));
    auto password = options_.password;
    if (!password && status_) password = passwordIn(options_.dataFolder / "settings.json", options_.unit);
    add(judgeValues(probeValues(*companion_, password, 2 * options_.unit), password.has_value()));
}

void Rounds::lookAtFiles() {
    if (isElsewhere()) {
        for (const char* step : {"situations", "navigation database", "disk", "settings"})
            add(Finding::unknown(step, elsewhere));
        return;
    }
    const auto limit = options_.unit;
    if (status_) {
        const auto situations = pathIn(status_->sources, &SourcesStatus::situations);
        const auto navDatabase = pathIn(status_->sources, &SourcesStatus::navDatabase);
        using Probed = std::optional<FolderProbe>;
        add(judgeSituations(situations ? Probed(probeFolder(*situations, lookAtSituations, limit))
                                       : Probed()));
        add(judgeNavDatabase(
            navDatabase ? Probed(probeFolder(*navDatabase, lookAtDatabase, limit)) : Probed(),
            status_->sources));
    } else {
        add(Finding::unknown("situations", notRunning));
        add(Finding::unknown("navigation database", notRunning));
    }
    add(judgeDisk(probeFolder(options_.dataFolder, lookAtDisk, limit)));
    add(judgeSettings(probeFolder(options_.dataFolder / "settings.json", lookAtSettings, limit)));
}

} // namespace tarnly::client

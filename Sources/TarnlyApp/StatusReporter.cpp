#include "TarnlyApp/StatusReporter.hpp"

#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

namespace tarnly {

StatusReporter::StatusReporter(CompanionHost& host, const SimBackend& backend, const Clock& clock,
                               Facts facts)
    : host_(host), backend_(backend), clock_(clock), facts_(std::move(facts)) {}

CompanionStatus StatusReporter::collect() const {
    CompanionStatus status;
    status.version = TARNLY_VERSION;
    status.isRunning = true;
    status.words = facts_.words();
    for (const auto& warning : facts_.warnings())
        status.warn(warning);
    for (const auto& problem : host_.recording().problemsOfEarlier())
        status.warn(problem);
    status.port = host_.advertiser().advertisedPort();
    status.published = PublicationStatus::of(host_.advertiser().publicationState());
    status.stage = StageStatus::of(backend_.stage(), clock_.now());
    status.pairing = host_.pairing().requiresPairing() ? "password" : "open";
    if (facts_.sources) status.sources = facts_.sources();
    status.visitors = VisitorsStatus::of(host_.visitors());
    status.clients = ClientsStatus::of(host_.server().pairedClients(), host_.server().connectionCount());
    if (const auto progress = host_.recording().progress()) {
        status.recording = RecordingStatus::of(*progress);
    }
    status.dataFolder = wellFormedUtf8(facts_.dataFolder);
    return status;
}

CompanionStatus endedStatus(Phrase words, std::string dataFolder) {
    CompanionStatus status;
    status.version = TARNLY_VERSION;
    status.words = std::move(words);
    status.dataFolder = wellFormedUtf8(std::move(dataFolder));
    return status;
}

std::string statusJson(CompanionStatus status) {
    if (status.port) {
        const auto port = static_cast<std::uint16_t>(*status.port);
        for (const auto& address : networkAddresses())
            status.addresses.push_back(webSocketUrl(address, port));
    }
    return encodeJson(status);
}

} // namespace tarnly

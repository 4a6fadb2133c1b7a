#include "TarnlyApp/Notices.hpp"

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <boost/system/error_code.hpp>

#include "TarnlyPlatform/Net/PeerNetwork.hpp"

namespace tarnly {
namespace {

Phrase pairedText(const std::vector<std::string>& addresses) {
    return Phrase::counted(
        "%n devices have paired for the first time, the last one from %1. If you do not know them, set "
        "another password in the settings, and disconnect them in the panel.",
        "%1 has paired for the first time. If you do not know it, set another password in the settings, and "
        "disconnect it in the panel.",
        static_cast<std::int64_t>(addresses.size()), addresses.back());
}

/// What stays the same of a device; absent for this computer and for nobody.
std::optional<std::string> deviceAt(const std::string& address) {
    boost::system::error_code error;
    const PeerNetwork network(boost::asio::ip::make_address(address, error));
    if (error || network.isLoopback() || network == PeerNetwork()) return std::nullopt;
    return network.text();
}

} // namespace

std::vector<Notice> Notices::newIn(const CompanionStatus& status) {
    thread_.check();
    std::vector<Notice> notices;
    for (auto notice : {ofPairings(status), ofRefusals(status), ofRecording(status)}) {
        if (notice) notices.push_back(std::move(*notice));
    }
    return notices;
}

/// One that has paired and gone at once is the last one to have paired.
std::optional<Notice> Notices::ofPairings(const CompanionStatus& status) {
    std::vector<std::string> news;
    const auto look = [&](const std::string& address) {
        if (isNew(address)) news.push_back(address);
    };
    if (status.clients.list) {
        for (const auto& client : *status.clients.list)
            look(client.address);
    }
    if (status.visitors && status.visitors->paired) look(status.visitors->paired->from);
    if (news.empty()) return std::nullopt;
    return Notice{Phrase::of("A new device is connected"), pairedText(news)};
}

bool Notices::isNew(const std::string& address) {
    auto device = deviceAt(address);
    if (!device) return false;
    const auto found = std::ranges::find(known_, *device);
    if (found != known_.end()) {
        std::rotate(found, found + 1, known_.end());
        return false;
    }
    if (known_.size() >= mostInARun) return false;
    known_.push_back(std::move(*device));
    return true;
}

std::vector<std::string> Notices::known() const {
    const auto count = std::min(known_.size(), mostKnown);
    return {known_.end() - static_cast<std::ptrdiff_t>(count), known_.end()};
}

std::optional<Notice> Notices::ofRefusals(const CompanionStatus& status) {
    if (!status.visitors || !status.visitors->refused) return std::nullopt;
    const auto& refusals = *status.visitors->refused;
    const auto count = refusals.count - refusalsTold_;
    const bool isTooSoon = refusalToldAt_ && clock_.now() - *refusalToldAt_ < pauseOfRefusals;
    if (count <= 0 || isTooSoon) return std::nullopt;
    refusalsTold_ = refusals.count;
    refusalToldAt_ = clock_.now();
    return Notice{Phrase::of("A password was refused"),
                  Phrase::counted("Refused %n times, last from %1. If that is your device, enter there the "
                                  "password that the settings show; if not, nothing has to be done.",
                                  "Refused once, last from %1. If that is your device, enter there the "
                                  "password that the settings show; if not, nothing has to be done.",
                                  count, refusals.from)};
}

std::optional<Notice> Notices::ofRecording(const CompanionStatus& status) {
    const auto& recording = status.recording;
    const auto file = recording ? recording->file : std::string();
    if (file != std::exchange(recording_, file)) problemsTold_.clear();
    if (!recording || !recording->problem || !problemsTold_.insert(recording->problem->text()).second)
        return std::nullopt;
    return Notice{Phrase::of("The recording cannot be written"), *recording->problem};
}

} // namespace tarnly

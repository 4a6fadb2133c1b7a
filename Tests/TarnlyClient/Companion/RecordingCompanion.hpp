#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Companion/ScriptedCompanion.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly::test {

/// A companion that records what a test gives it, and hangs up when told to. Safe from any thread.
class RecordingCompanion {
  public:
    RecordingCompanion() : server_([this](const boost::json::object& request) { return answer(request); }) {}

    std::uint16_t port() const { return server_.port(); }

    /// One more sample, at whole seconds, and the triggers that fired on it.
    void record(double elapsed, const std::vector<std::string>& fired = {}) {
        recording_.with([&](RecordedFlight& recording) {
            TrackSample sample;
            sample.elapsedSeconds = elapsed;
            recording.samples.push_back(sample);
            for (const auto& id : fired)
                recording.fired.push_back({id, elapsed, "speak"});
        });
    }

    void startAnew() {
        recording_.with([](RecordedFlight& recording) { recording = {}; });
    }

    RecordedFlight recording() const { return recording_.copy(); }

    /// Hangs up instead of answering so many times more.
    std::atomic<int> hangUps = 0;
    /// Whether pairing is granted.
    std::atomic<bool> isOpen = true;

    std::size_t requests() const { return server_.received().size(); }

  private:
    std::optional<std::vector<std::string>> answer(const boost::json::object& request) {
        if (hangUps > 0) {
            --hangUps;
            return std::nullopt;
        }
        if (request.at("type") == "pair")
            return std::vector{ScriptedCompanion::reply(
                request, isOpen ? R"({"accepted":true})" : R"({"accepted":false,"reason":"no"})")};
        const auto params = decodeJson<CatchUpRequest>(request.at("params"));
        return std::vector{ScriptedCompanion::reply(request, encodeJson(after(params.sinceElapsedSeconds)))};
    }

    RecordedFlight after(std::optional<double> since) const {
        auto result = recording();
        const auto isOld = [&](const auto& element) { return since && element.elapsedSeconds <= *since; };
        std::erase_if(result.samples, isOld);
        std::erase_if(result.fired, isOld);
        return result;
    }

    Guarded<RecordedFlight> recording_;
    ScriptedCompanion server_; // depends-on: all
};

} // namespace tarnly::test

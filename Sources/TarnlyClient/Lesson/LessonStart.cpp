#include "TarnlyClient/Lesson/LessonStart.hpp"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

#include "TarnlyClient/Lesson/SituationArrival.hpp"
#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::client {
namespace {

constexpr auto latitude = "sim/flightmodel/position/latitude";
constexpr auto longitude = "sim/flightmodel/position/longitude";
constexpr auto altitude = "sim/flightmodel/misc/h_ind";

constexpr std::chrono::milliseconds betweenLooks{500};

/// More would be no help.
constexpr std::size_t mostNames = 20;

std::string namesOf(const std::vector<FlightListing>& flights) {
    std::vector<std::string> names;
    names.reserve(flights.size());
    for (const auto& flight : flights)
        names.push_back(printable(flight.name));
    std::ranges::sort(names);
    std::string text;
    for (std::size_t index = 0; index < std::min(names.size(), mostNames); ++index)
        text += (text.empty() ? "" : ", ") + names[index];
    if (names.size() > mostNames) text += " and " + std::to_string(names.size() - mostNames) + " more";
    return text;
}

std::string secondsText(std::chrono::milliseconds time) {
    std::string text;
    appendNumber(text, std::chrono::duration<double>(time).count());
    return text + " s";
}

/// Absent while the companion cannot tell, for which the simulator has many reasons.
Task<std::optional<AircraftPlace>> askForPlace(CompanionSession& session) {
    try {
        const std::vector<std::string> names{latitude, longitude, altitude};
        auto params = namesParams(names);
        auto data = co_await session.request(MessageType::datarefSubscribeValues, std::move(params));
        const auto values = decodeAnswer<Values>(data);
        co_return AircraftPlace{values.at(latitude), values.at(longitude), values.at(altitude)};
    } catch (const ConnectionLost&) {
        throw;
    } catch (const ClientError&) {
        co_return std::nullopt;
    } catch (const std::out_of_range&) {
        co_return std::nullopt;
    }
}

ClientError notThere(const std::string& name, std::chrono::milliseconds patience,
                     const SituationArrival& arrival) {
    const auto text = inQuotes(name) + " is not loaded after " + secondsText(patience) + ": ";
    if (!arrival.isPlaceKnown()) {
        return ClientError(text +
                           "the simulator tells of no aircraft; wait until it has loaded, look what "
                           "its window says, or give it longer by --wait SECONDS");
    }
    if (arrival.hasBegun())
        return ClientError(text +
                           "the aircraft is put elsewhere again and again; try again when it is at rest");
    return ClientError(text +
                       "the aircraft flies on as if nothing had been loaded; look what the simulator's "
                       "window says, and whether the companion is on its computer");
}

Task<> loadSituation(CompanionSession& session, std::string name, LessonStart start) {
    auto listing = co_await session.request(MessageType::listFlights);
    const auto flights = decodeAnswer<FlightsPayload>(listing).flights;
    LoadFlightRequest params{pathOfSituation(flights, name)};
    const auto before = co_await askForPlace(session);
    start.progress("loading " + inQuotes(name));
    auto data = co_await session.request(MessageType::loadFlight, std::move(params));
    decodeAnswer<OkPayload>(data);

    SituationArrival arrival(before);
    const auto begin = session.clock().now();
    for (;;) {
        co_await session.clock().sleepFor(betweenLooks);
        const auto place = co_await askForPlace(session);
        const auto passed = session.clock().now() - begin;
        const auto state = arrival.see(std::chrono::duration<double>(passed).count(), place);
        if (state == SituationArrival::State::arrived) co_return;
        if (state == SituationArrival::State::still) {
            start.remark("nothing was seen of the loading of " + inQuotes(name) +
                         ", and the aircraft stands still: it seems to have been there already");
            co_return;
        }
        if (passed >= start.patience) throw notThere(name, start.patience, arrival);
    }
}

Task<> loadScript(CompanionSession& session, LoadScriptRequest script, LessonStart start) {
    auto data = co_await session.request(MessageType::loadScript, std::move(script));
    const auto payload = decodeAnswer<UnresolvedFixesPayload>(data);
    if (payload.unresolvedFixes.empty()) co_return;
    std::string fixes;
    for (const auto& fix : payload.unresolvedFixes)
        fixes += (fixes.empty() ? "" : ", ") + fix;
    start.remark("warning: the companion does not know these fixes, whose triggers will never fire: " +
                 printable(fixes));
}

} // namespace

std::string pathOfSituation(const std::vector<FlightListing>& flights, const std::string& name) {
    std::vector<std::string> paths;
    for (const auto& flight : flights) {
        if (flight.name == name) paths.push_back(flight.path);
    }
    if (paths.size() == 1) return paths.front();
    if (paths.size() > 1)
        throw ClientError("several situations are named " + inQuotes(name) + "; rename all but one");
    if (flights.empty()) {
        throw ClientError("there is no situation named " + inQuotes(name) +
                          ", nor any other; save it in the simulator");
    }
    throw ClientError("there is no situation named " + inQuotes(name) + "; there are " + namesOf(flights));
}

Task<> startLesson(CompanionSession& session, Lesson lesson, LessonStart start) {
    co_await session.pair();
    if (lesson.situation) {
        auto situation = *lesson.situation;
        co_await loadSituation(session, std::move(situation), start);
    }
    co_await loadScript(session, std::move(lesson.script), start);
    auto data = co_await session.request(MessageType::recordingStart);
    decodeAnswer<OkPayload>(data);
}

} // namespace tarnly::client

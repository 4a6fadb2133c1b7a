#include "TarnlySimulator/Api/Control.hpp"

#include <chrono>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonWriter.hpp"
#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/Api/JsonMembers.hpp"

namespace tarnly::simulator {
namespace {

constexpr std::int64_t longestDelayMs = 600'000;

std::chrono::milliseconds delayFrom(const boost::json::object& request) {
    const auto delay = integerMember(request, "milliseconds");
    if (delay < 0 || delay > longestDelayMs)
        throw ApiError(400, "invalid_body", "The key milliseconds needs a number from 0 to 600000.");
    return std::chrono::milliseconds(delay);
}

} // namespace

HttpResponse Control::answer(const HttpRequest& request) {
    thread_.check();
    constexpr auto type = "application/json";
    try {
        if (request.method == "POST") {
            carryOut(request.body);
        } else if (request.method != "GET") {
            throw ApiError(405, "invalid_method", "This address takes GET and POST.");
        }
        return {200, type, report()};
    } catch (const ApiError& error) {
        return {error.status(), type, errorBody(error)};
    } catch (const JsonError& error) {
        return {400, type, errorBody(ApiError(400, "invalid_body", error.what()))};
    }
}

void Control::carryOut(const std::string& body) {
    const auto json = parseJson(body);
    const auto& request = objectFrom(json);
    const auto name = stringMember(request, "quirk");
    if (name == "drop") return actions_.drop();
    if (name == "restart") return actions_.restart();
    const auto* quirk = quirkSwitchNamed(name);
    if (quirk == nullptr) throw ApiError(404, "invalid_quirk", "There is no quirk of that name.");
    const bool on = boolMember(request, "on");
    if (request.contains("milliseconds")) world_.quirks.slowBy = delayFrom(request);
    world_.quirks.*quirk->on = on;
}

std::string Control::report() const {
    JsonWriter writer;
    writer.beginObject();
    writer.key("phase");
    writer.string(name(world_.flight().phase()));
    writer.key("quirks");
    writer.beginObject();
    for (const QuirkSwitch& quirk : quirkSwitches()) {
        writer.key(quirk.name);
        writer.boolean(world_.quirks.*quirk.on);
    }
    writer.endObject();
    writer.endObject();
    return writer.take();
}

} // namespace tarnly::simulator

#include "TarnlySimulator/Api/Control.hpp"

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonWriter.hpp"
#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/Api/JsonMembers.hpp"

namespace tarnly::simulator {
namespace {

/// The line that says the same as `request`.
std::string orderFrom(const boost::json::object& request) {
    if (request.contains("order")) return std::string(stringMember(request, "order"));
    std::string line(stringMember(request, "quirk"));
    if (line == "drop" || line == "restart") return line;
    if (quirkSwitchNamed(line) == nullptr)
        throw ApiError(404, "invalid_quirk", "There is no quirk of that name.");
    line += boolMember(request, "on") ? " on" : " off";
    if (request.contains("milliseconds"))
        line += " " + std::to_string(integerMember(request, "milliseconds"));
    return line;
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
    orders_.obey(orderFrom(objectFrom(json)));
}

std::string Control::report() const {
    JsonWriter writer;
    writer.beginObject();
    writer.key("phase");
    writer.string(world_.flight().phase());
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

#include "TarnlySimulator/Api/HttpApi.hpp"

#include <algorithm>
#include <charconv>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonWriter.hpp"
#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/Api/JsonMembers.hpp"
#include "TarnlySimulator/World/Parts.hpp"

namespace tarnly::simulator {
namespace {

HttpResponse json(unsigned status, std::string body) { return {status, "application/json", std::move(body)}; }

std::string capabilities(const std::string& version) {
    JsonWriter writer;
    writer.string(version);
    return R"({"api":{"versions":["v1","v2","v3"]},"x-plane":{"version":)" + writer.take() + "}}";
}

bool isVersion(std::string_view part) { return part == "v1" || part == "v2" || part == "v3"; }

std::int64_t integerFrom(std::string_view text, const char* code) {
    std::int64_t value = 0;
    const auto end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end)
        throw ApiError(404, code, "A number was expected in the address.");
    return value;
}

boost::json::value parsedBody(const std::string& body) {
    try {
        return parseJson(body);
    } catch (const JsonError& error) {
        throw ApiError(400, "invalid_body", error.what());
    }
}

/// `{"data":[…]}` with the entries of those names that there are.
template <typename Entry>
HttpResponse filtered(const Catalogue<Entry>& catalogue, std::string_view query, const auto& shows) {
    std::string entries;
    for (const auto& name : queryValues(query, "filter[name]")) {
        const Entry* entry = catalogue.named(name);
        if (entry == nullptr || !shows(*entry)) continue;
        if (!entries.empty()) entries += ',';
        entries += catalogueEntry(*entry);
    }
    return json(200, R"({"data":[)" + entries + "]}");
}

bool hasFilter(std::string_view query) { return !queryValues(query, "filter[name]").empty(); }

std::string percentDecoded(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned char byte = 0;
        if (text[at] == '%' && at + 2 < text.size()) {
            const char* digits = text.data() + at + 1;
            if (std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
                out += static_cast<char>(byte);
                at += 2;
                continue;
            }
        }
        out += text[at] == '+' ? ' ' : text[at];
    }
    return out;
}

} // namespace

HttpResponse notFoundPage() {
    return {404, "text/html",
            "<!DOCTYPE html>\n<html><head><title>404 Not Found</title></head>"
            "<body><h1>404 Not Found</h1></body></html>\n"};
}

std::optional<HttpResponse> HttpApi::answer(const HttpRequest& request, bool isUpgrade) {
    thread_.check();
    const Quirks& quirks = world_.quirks;
    if (quirks.trafficDisabledPlain) return HttpResponse{403, "text/plain", "Forbidden\n"};
    if (quirks.trafficDisabled)
        return json(403,
                    errorBody(ApiError(403, "incoming_traffic_disabled", "Incoming traffic is disabled.")));
    if (quirks.tooOld && !request.target.starts_with("/api/v1/")) return notFoundPage();
    if (isUpgrade) {
        if (quirks.handshakeRefused) return HttpResponse{500, "text/plain", "Internal Server Error\n"};
        const auto path = parts(std::string_view(request.target).substr(0, request.target.find('?')), '/');
        if (path.size() == 3 && path[1] == "api" && isVersion(path[2])) return std::nullopt;
        return notFoundPage();
    }
    try {
        return plainAnswer(request);
    } catch (const ApiError& error) {
        return json(error.status(), errorBody(error));
    } catch (const WorldError& refusal) {
        const ApiError error(refusal);
        return json(error.status(), errorBody(error));
    }
}

HttpResponse HttpApi::plainAnswer(const HttpRequest& request) {
    const std::string_view target = request.target;
    const auto question = std::min(target.find('?'), target.size());
    const auto query = target.substr(std::min(question + 1, target.size()));
    auto path = parts(target.substr(0, question), '/');
    if (request.method == "GET" && target.substr(0, question) == "/api/capabilities")
        return json(200, capabilities(world_.version()));
    if (path.size() < 4 || path[1] != "api" || !isVersion(path[2])) return notFoundPage();
    path.erase(path.begin(), path.begin() + 3);
    if (request.method == "GET") return get(path, query);
    const bool hasThree = path.size() == 3;
    if (request.method == "POST" && hasThree && path[0] == "command" && path[2] == "activate")
        return activate(path[1], request.body);
    if (request.method == "PATCH" && hasThree && path[0] == "datarefs" && path[2] == "value")
        return setDataref(path[1], query, request.body);
    return notFoundPage();
}

HttpResponse HttpApi::get(const Path& path, std::string_view query) {
    const bool isDatarefs = path[0] == "datarefs";
    const bool isCommands = path[0] == "commands";
    if (path.size() == 1 && isDatarefs)
        return hasFilter(query) ? filteredDatarefs(query) : json(200, catalogues_.datarefs());
    if (path.size() == 1 && isCommands)
        return hasFilter(query) ? filteredCommands(query) : json(200, catalogues_.commands());
    if (path.size() == 2 && path[1] == "count") {
        if (isDatarefs) return datarefCount();
        if (isCommands)
            return json(200, R"({"data":)" + std::to_string(world_.commands().entries().size()) + "}");
    }
    if (path.size() == 3 && isDatarefs && path[2] == "value") return datarefValue(path[1]);
    return notFoundPage();
}

HttpResponse HttpApi::filteredDatarefs(std::string_view query) const {
    if (world_.quirks.mainMenu)
        throw ApiError(404, "invalid_dataref_name", "No dataref has one of these names.");
    return filtered(world_.datarefs(), query,
                    [this](const Dataref& dataref) { return world_.shows(dataref); });
}

HttpResponse HttpApi::filteredCommands(std::string_view query) const {
    return filtered(world_.commands(), query, [](const Command&) { return true; });
}

HttpResponse HttpApi::datarefCount() const {
    const auto count = std::ranges::count_if(
        world_.datarefs().entries(), [this](const Dataref& dataref) { return world_.shows(dataref); });
    return json(200, R"({"data":)" + std::to_string(count) + "}");
}

HttpResponse HttpApi::datarefValue(std::string_view id) const {
    const Dataref* dataref = world_.shownDataref(integerFrom(id, "invalid_dataref_id"));
    if (dataref == nullptr) throw ApiError(404, "invalid_dataref_id", "No dataref has that id.");
    std::string body = R"({"data":)";
    appendValue(body, dataref->type, world_.read(*dataref));
    return json(200, body + "}");
}

HttpResponse HttpApi::setDataref(std::string_view id, std::string_view query, const std::string& body) {
    std::optional<std::int64_t> index;
    if (const auto values = queryValues(query, "index"); !values.empty())
        index = integerFrom(values.front(), "invalid_index");
    const auto value = parsedBody(body);
    world_.write(integerFrom(id, "invalid_dataref_id"), member(objectFrom(value), "data"), index);
    return json(200, "null");
}

HttpResponse HttpApi::activate(std::string_view id, const std::string& body) {
    const auto commandId = integerFrom(id, "invalid_command_id");
    if (world_.commands().withId(commandId) == nullptr)
        throw ApiError(404, "invalid_command_id", "No command has that id.");
    boost::json::value request = boost::json::object();
    if (!body.empty()) request = parsedBody(body);
    if (objectFrom(request).contains("duration")) {
        checkDuration(member(objectFrom(request), "duration"));
    } else if (world_.quirks.durationRequired) {
        throw ApiError(400, "duration_missing", "A command is activated for a duration.");
    }
    world_.activate(commandId);
    return json(200, "null");
}

std::vector<std::string> queryValues(std::string_view query, std::string_view key) {
    std::vector<std::string> out;
    for (const auto pair : parts(query, '&')) {
        const auto equals = pair.find('=');
        if (equals == std::string_view::npos || percentDecoded(pair.substr(0, equals)) != key) continue;
        out.push_back(percentDecoded(pair.substr(equals + 1)));
    }
    return out;
}

} // namespace tarnly::simulator

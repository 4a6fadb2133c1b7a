#include "TarnlySimulator/Api/ApiConversation.hpp"

#include <algorithm>
#include <utility>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonWriter.hpp"
#include "TarnlySimulator/Api/JsonMembers.hpp"

namespace tarnly::simulator {
namespace {

std::string result(std::optional<std::int64_t> requestId, const std::optional<ApiError>& error) {
    JsonWriter writer;
    writer.beginObject();
    if (requestId) {
        writer.key("req_id");
        writer.integer(*requestId);
    }
    writer.key("type");
    writer.string("result");
    writer.key("success");
    writer.boolean(!error);
    if (error) {
        writer.key("error_code");
        writer.string(error->code());
        writer.key("error_message");
        writer.string(error->what());
    }
    writer.endObject();
    return writer.take();
}

boost::json::value parsed(std::string_view request) {
    try {
        return parseJson(request);
    } catch (const JsonError& error) {
        throw ApiError(400, "invalid_json", error.what());
    }
}

std::optional<std::int64_t> requestIdOf(const boost::json::object& request) {
    const auto* id = request.if_contains("req_id");
    if (id == nullptr || !id->is_int64()) return std::nullopt;
    return id->get_int64();
}

/// Calls `carryOut` with each entry of the list `key`, and notes how it fared.
std::vector<std::optional<ApiError>> forEach(const boost::json::object& parameters, std::string_view key,
                                             const auto& carryOut) {
    std::vector<std::optional<ApiError>> outcomes;
    for (const auto& entry : arrayMember(parameters, key)) {
        try {
            carryOut(objectFrom(entry));
            outcomes.emplace_back();
        } catch (const ApiError& error) {
            outcomes.emplace_back(error);
        } catch (const WorldError& refusal) {
            outcomes.emplace_back(ApiError(refusal));
        }
    }
    return outcomes;
}

} // namespace

void Subscriptions::freeze() {
    for (auto& [id, told] : told_)
        told.isFrozen = true;
}

std::string Subscriptions::update(const World& world) {
    std::string out;
    for (auto& [id, told] : told_) {
        const Dataref* dataref = world.shownDataref(id);
        if (told.isFrozen || dataref == nullptr) continue;
        std::string text;
        appendValue(text, dataref->type, world.read(*dataref));
        if (text == told.text) continue;
        told.text = std::move(text);
        out += out.empty() ? R"({"data":{")" : R"(,")";
        out += std::to_string(id);
        out += R"(":)";
        out += told.text;
    }
    if (!out.empty()) out += R"(},"type":"dataref_update_values"})";
    return out;
}

std::vector<std::string> ApiConversation::answer(std::string_view request) {
    thread_.check();
    std::optional<std::int64_t> requestId;
    try {
        const auto json = parsed(request);
        const auto& object = objectFrom(json);
        requestId = requestIdOf(object);
        return results(requestId, carryOut(object));
    } catch (const ApiError& error) {
        return {result(requestId, error)};
    }
}

std::vector<std::string> ApiConversation::results(std::optional<std::int64_t> requestId,
                                                  const Outcomes& outcomes) const {
    std::vector<std::string> out;
    if (world_.quirks.resultPerDataref && !outcomes.empty()) {
        for (const auto& outcome : outcomes)
            out.push_back(result(requestId, outcome));
        return out;
    }
    const auto bad = std::ranges::find_if(outcomes, [](const auto& outcome) { return outcome.has_value(); });
    out.push_back(result(requestId, bad == outcomes.end() ? std::nullopt : *bad));
    return out;
}

ApiConversation::Outcomes ApiConversation::carryOut(const boost::json::object& request) {
    if (!requestIdOf(request)) throw ApiError(400, "invalid_req_id", "A request has an integer req_id.");
    const auto type = stringMember(request, "type");
    const auto& parameters = objectFrom(member(request, "params"));
    if (type == "dataref_subscribe_values") return subscribe(parameters);
    if (type == "dataref_unsubscribe_values") return unsubscribe(parameters);
    if (type == "dataref_set_values") return set(parameters);
    if (type == "command_set_is_active") return activate(parameters);
    throw ApiError(400, "invalid_type", "There are no requests of that type here.");
}

ApiConversation::Outcomes ApiConversation::subscribe(const boost::json::object& parameters) {
    if (world_.quirks.stuck) subscriptions_.freeze();
    std::vector<std::int64_t> ids;
    auto outcomes = forEach(parameters, "datarefs", [&](const boost::json::object& entry) {
        const auto id = integerMember(entry, "id");
        if (entry.contains("index"))
            throw ApiError(400, "invalid_index", "Here only whole datarefs can be subscribed to.");
        if (world_.shownDataref(id) == nullptr)
            throw ApiError(404, "invalid_dataref_id", "No dataref has the id " + std::to_string(id) + ".");
        ids.push_back(id);
    });
    // One bad id fails them all, unless each has a result of its own.
    if (ids.size() < outcomes.size() && !world_.quirks.resultPerDataref) return outcomes;
    for (const auto id : ids)
        subscriptions_.add(id);
    return outcomes;
}

ApiConversation::Outcomes ApiConversation::unsubscribe(const boost::json::object& parameters) {
    if (member(parameters, "datarefs") == "all") {
        subscriptions_.removeAll();
        return {};
    }
    return forEach(parameters, "datarefs", [this](const boost::json::object& entry) {
        subscriptions_.remove(integerMember(entry, "id"));
    });
}

ApiConversation::Outcomes ApiConversation::set(const boost::json::object& parameters) {
    return forEach(parameters, "datarefs", [this](const boost::json::object& entry) {
        std::optional<std::int64_t> index;
        if (entry.contains("index")) index = integerMember(entry, "index");
        world_.write(integerMember(entry, "id"), member(entry, "value"), index);
    });
}

ApiConversation::Outcomes ApiConversation::activate(const boost::json::object& parameters) {
    return forEach(parameters, "commands", [this](const boost::json::object& entry) {
        const auto id = integerMember(entry, "id");
        if (entry.contains("duration")) checkDuration(member(entry, "duration"));
        if (boolMember(entry, "is_active")) world_.activate(id);
    });
}

std::string ApiConversation::update() {
    thread_.check();
    if (world_.quirks.valuesStop) return {};
    return subscriptions_.update(world_);
}

} // namespace tarnly::simulator

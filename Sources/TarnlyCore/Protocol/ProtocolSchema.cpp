#include "TarnlyCore/Protocol/ProtocolSchema.hpp"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <map>
#include <string_view>
#include <type_traits>
#include <utility>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyPlatform/Json/JsonSchema.hpp"

namespace tarnly {

template <>
struct CustomJsonSchema<Date> {
    static boost::json::object schema() {
        return {{"type", "number"}, {"description", "Seconds since 2001-01-01 00:00:00 UTC."}};
    }
};

template <>
struct CustomJsonSchema<JsonScalar> {
    static boost::json::object schema() {
        return {{"type", boost::json::array{"string", "number", "boolean", "null"}}};
    }
};

namespace {

namespace json = boost::json;
using Use = JsonSchema::Use;

/// By dataref, as it was asked for.
using DatarefValues = std::map<std::string, double>;

class Messages {
  public:
    /// A request with parameters of the record `Params` or with none (void), and the data of its answer.
    template <typename Params, typename Data>
    void add(std::string_view type) {
        auto request = message(type, Use::read);
        if constexpr (!std::is_void_v<Params>) addParams<Params>(request);
        requests_.emplace_back(std::move(request));
        replies_.emplace_back(reply<Data>(type));
    }

    json::object schema() {
        replies_.emplace_back(reply<ErrorPayload>("error"));
        json::object definitions{{"Request", json::object{{"oneOf", std::move(requests_)}}},
                                 {"Reply", json::object{{"oneOf", std::move(replies_)}}}};
        for (const auto& definition : schema_.definitions())
            definitions.insert(definition);
        json::array either{JsonSchema::reference("Request"), JsonSchema::reference("Reply")};
        return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                {"title", "Tarnly's protocol"},
                {"description", "One text frame of the WebSocket. What it means is told in protocol.md."},
                {"anyOf", std::move(either)},
                {"$defs", std::move(definitions)}};
    }

  private:
    static json::object message(std::string_view type, Use use) {
        json::object id{{"type", "integer"}};
        if (use == Use::read) id["type"] = json::array{"integer", "null"};
        return {
            {"type", "object"},
            {"properties", json::object{{"type", json::object{{"const", type}}}, {"req_id", std::move(id)}}},
            {"required", json::array{"type"}}};
    }

    template <typename Params>
    void addParams(json::object& request) {
        auto params = schema_.of<Params>(Use::read);
        const auto& record = schema_.definitions().at(schemaName<Params>()).as_object();
        if (record.contains("required")) {
            request["required"].as_array().emplace_back("params");
        } else {
            params = {{"anyOf", json::array{std::move(params), json::object{{"type", "null"}}}}};
        }
        request["properties"].as_object()["params"] = std::move(params);
    }

    template <typename Data>
    json::object reply(std::string_view type) {
        auto result = message(type, Use::written);
        result["properties"].as_object()["data"] = schema_.of<Data>(Use::written);
        result["required"].as_array().emplace_back("data");
        return result;
    }

    JsonSchema schema_;
    json::array requests_;
    json::array replies_;
};

} // namespace

std::string protocolSchema() {
    Messages messages;
    messages.add<PairRequest, PairResponse>(MessageType::pair);
    messages.add<void, SimInfo>(MessageType::simInfo);
    messages.add<void, FlightsPayload>(MessageType::listFlights);
    messages.add<LoadFlightRequest, OkPayload>(MessageType::loadFlight);
    messages.add<LoadScriptRequest, UnresolvedFixesPayload>(MessageType::loadScript);
    messages.add<void, OkPayload>(MessageType::recordingStart);
    messages.add<void, OkPayload>(MessageType::recordingStop);
    messages.add<CatchUpRequest, RecordedFlight>(MessageType::catchUp);
    messages.add<DatarefNamesParams, DatarefValues>(MessageType::datarefSubscribeValues);
    messages.add<DatarefSetParams, OkPayload>(MessageType::datarefSetValues);
    messages.add<RunCommandRequest, OkPayload>(MessageType::runCommand);
    messages.add<MoveToPreservingAglRequest, OkPayload>(MessageType::moveToPreservingAgl);
    messages.add<ApplyAttitudeRequest, OkPayload>(MessageType::applyAttitude);
    return json::serialize(messages.schema());
}

} // namespace tarnly

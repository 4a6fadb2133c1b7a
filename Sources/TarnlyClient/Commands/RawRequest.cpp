#include "TarnlyClient/Commands/RawRequest.hpp"

#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::client {
namespace {

/// Pairing takes the first.
constexpr std::int64_t addedId = 1'000;

struct IdOnly {
    std::optional<std::int64_t> reqId;

    static constexpr auto fields() { return std::tuple(field("req_id", &IdOnly::reqId)); }
};

boost::json::object parseObject(const std::string& text) {
    try {
        return jsonObject(parseJson(text));
    } catch (const JsonError& error) {
        throw UsageError(std::string("the request is not a JSON object: ") + error.what());
    }
}

std::optional<std::int64_t> givenId(const boost::json::object& object) {
    try {
        return decodeJson<IdOnly>(object).reqId;
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

} // namespace

RawRequest rawRequest(std::string text) {
    const auto object = parseObject(text);
    if (object.contains("req_id")) return {std::move(text), givenId(object)};
    const auto member = "\"req_id\":" + std::to_string(addedId) + (object.empty() ? "" : ",");
    text.insert(text.find('{') + 1, member);
    return {std::move(text), addedId};
}

} // namespace tarnly::client

#pragma once

#include <boost/json/value.hpp>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::client {

// The messages as this side of the wire sees them: requests to write, answers and pushes to read.

/// Dataref values by name.
using Values = std::map<std::string, double>;

/// The parameters of a request that has none.
struct NoParams {
    static constexpr auto fields() { return std::tuple(); }
};

/// A request as it is sent.
template <typename Params>
struct Request {
    std::string type;
    std::int64_t reqId = 0;
    std::optional<Params> params;

    static constexpr auto fields() {
        return std::tuple(field("type", &Request::type), field("req_id", &Request::reqId),
                          field("params", &Request::params));
    }
};

/// The parameters that ask for the values of `names`.
inline DatarefNamesParams namesParams(const std::vector<std::string>& names) {
    DatarefNamesParams params;
    for (const auto& name : names)
        params.datarefs.push_back({name});
    return params;
}

/// What the companion sent, taken apart as far as every message is alike.
struct Incoming {
    std::string text;
    std::string type;
    std::optional<std::int64_t> reqId;
    boost::json::value data;

    bool isError() const { return type == "error"; }
    bool isPush() const { return type == MessageType::datarefSubscribeValues && !reqId; }
};

/// `data` as a `T`. Throws `ClientError` when it is none.
template <typename T>
T decodeAnswer(const boost::json::value& data) {
    try {
        return decodeJson<T>(data);
    } catch (const JsonError& error) {
        throw ClientError(std::string("the companion's answer is not understood: ") + error.what() + "; " +
                          otherVersionAdvice);
    }
}

/// What the companion gives as its reason.
inline std::string errorMessage(const Incoming& error) {
    try {
        return decodeJson<ErrorPayload>(error.data).message;
    } catch (const JsonError&) {
        return error.text;
    }
}

} // namespace tarnly::client

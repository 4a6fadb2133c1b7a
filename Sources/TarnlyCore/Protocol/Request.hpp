#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyPlatform/Json/JsonText.hpp"

namespace tarnly {

/// What a client asks for, decoded: the head, and the parameters of its kind. A value; of a long text it
/// takes a while to make, and to let go.
struct Request {
    /// Empty: the request has none, or none that its kind could read.
    using Params = std::variant<std::monostate, PairRequest, LoadFlightRequest, LoadScriptRequest,
                                CatchUpRequest, DatarefNamesParams, DatarefSetParams, RunCommandRequest,
                                MoveToPreservingAglRequest, ApplyAttitudeRequest>;

    TypeOnly head;
    Params params;
    /// Of the text, in bytes.
    std::size_t size = 0;

    /// The parameters, which are handed out once.
    template <typename Record>
    std::optional<Record> take() {
        auto* record = std::get_if<Record>(&params);
        if (record == nullptr) return std::nullopt;
        return std::move(*record);
    }
};

/// No path that is longer, in bytes, means anything to a file system.
inline constexpr std::size_t longestPath = 64 * 1024;

/// Cuts a path that is longer than `longestPath`, at the end of a character: it stays one that means nothing,
/// and is no burden any more.
void cutPath(std::string& path);

/// A record that is one list, whose elements are decoded one by one.
template <typename Record>
constexpr bool isListRecord = false;
template <>
inline constexpr bool isListRecord<LoadScriptRequest> = true;
template <>
inline constexpr bool isListRecord<DatarefNamesParams> = true;
template <>
inline constexpr bool isListRecord<DatarefSetParams> = true;

/// Throws `JsonError` when "params" is something else.
template <typename Record>
std::optional<Record> decodeParams(std::string_view text) {
    if constexpr (isListRecord<Record>) {
        constexpr auto list = std::get<0>(Record::fields()).member;
        DecodedElements<typename std::decay_t<decltype(Record().*list)>::value_type> elements;
        auto params = decodeJsonText<Envelope<Record>>(text, &elements).params;
        if (params) (*params).*list = elements.take();
        return params;
    } else {
        return decodeJsonText<Envelope<Record>>(text).params;
    }
}

/// Reads the parameters of one kind of request from its text. Absent "params", null and anything that is not
/// a `Record` all count as missing.
template <typename Record>
Request::Params readParams(std::string_view text) {
    try {
        auto params = decodeParams<Record>(text);
        if (params) return std::move(*params);
    } catch (const JsonError&) {
        // missing
    }
    return {};
}

} // namespace tarnly

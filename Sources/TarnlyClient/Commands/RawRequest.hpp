#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarnly::client {

/// A request as the person wrote it.
struct RawRequest {
    std::string text;
    /// By which its answer is known; absent where `text` has one that is no id, as the companion will say.
    std::optional<std::int64_t> reqId;
};

/// Takes `text` as it is, but for a "req_id" that is added where there is none: without it the answer could
/// not be told from a push. Throws `UsageError` when it is not a JSON object.
RawRequest rawRequest(std::string text);

} // namespace tarnly::client

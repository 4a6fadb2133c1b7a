#pragma once

#include <string_view>
#include <vector>

#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyPlatform/Json/PlacedJson.hpp"
#include "TarnlyTrack/Grade/Tolerance.hpp"

namespace tarnly::track {

/// What a kind of tolerance is made of, beside `id`, `name` and `kind`.
struct KindKeys {
    std::vector<std::string_view> needed;
    /// Of which one is needed at least.
    std::vector<std::string_view> anyOf;
    std::vector<std::string_view> optional;
};

const KindKeys& keysOf(ToleranceKind kind);

/// Tells of values that no flight can meet, or that mean nothing. `json` is what `tolerance` was read from.
void checkValues(const PlacedJson& json, ToleranceKind kind, const Tolerance& tolerance,
                 ScriptFindings& findings);

} // namespace tarnly::track

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/Flight/Values.hpp"
#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"
#include "TarnlyPlatform/Json/PlacedJson.hpp"

/// Whether the keys of an object are those that are read, and their values of the kinds that are wanted.
namespace tarnly {

// What a value of a field's type is to people.
constexpr std::string_view wantedKind(const std::string*) { return "a text"; }
constexpr std::string_view wantedKind(const double*) { return "a number"; }
constexpr std::string_view wantedKind(const bool*) { return "true or false"; }
template <typename T>
constexpr std::string_view wantedKind(const std::vector<T>*) {
    return "a list";
}
template <typename T>
constexpr std::string_view wantedKind(const std::map<std::string, T>*) {
    return "an object";
}

/// A key that an object must have, and what is wanted there.
struct NeededKey {
    std::string_view key;
    std::string_view kind;
};

template <typename T>
constexpr NeededKey neededKey(std::string_view key) {
    return {key, wantedKind(static_cast<const T*>(nullptr))};
}

/// What an object may have, and must.
struct KeysOfObject {
    /// All that are read.
    std::vector<std::string_view> known;
    /// Those that must be there.
    std::vector<NeededKey> needed;
    /// What comes of one that is missing: "crosses_agl never holds".
    std::string consequence;
    /// What becomes of one that is unknown.
    std::string_view reader = "companions ignore";
};

/// Tells of keys that are missing, misspelt or unknown.
void checkKeys(const PlacedJson& object, const KeysOfObject& keys, ScriptFindings& findings);

/// Tells of keys that are given twice.
void checkRepeats(const PlacedJson& object, ScriptFindings& findings);

/// Tells that the value of `wanted` is of another kind, and how to write it.
void tellWrongKind(const NeededKey& wanted, const PlacedJson& found, ScriptFindings& findings);

/// Tells of each value in an object's that is a list or an object, which scripts do not have.
void checkScalars(const PlacedJson& object, ScriptFindings& findings);

/// The value as a `T` is read from it; absent where it is none.
template <typename T>
std::optional<T> readAs(const PlacedJson& json) {
    try {
        return decodeJson<T>(json.value);
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

} // namespace tarnly

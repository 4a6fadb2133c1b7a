#include "TarnlyCore/ScriptCheck/KeyCheck.hpp"

#include <algorithm>
#include <set>

#include "TarnlyCore/ScriptCheck/NearName.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

std::string_view kindOf(const boost::json::value& value) {
    switch (value.kind()) {
        case boost::json::kind::null:
            return "null";
        case boost::json::kind::bool_:
            return "true or false";
        case boost::json::kind::string:
            return "a text";
        case boost::json::kind::array:
            return "a list";
        case boost::json::kind::object:
            return "an object";
        default:
            return "a number";
    }
}

bool isNumber(const std::string& text) {
    try {
        return parseJson(text).is_number();
    } catch (const JsonError&) {
        return false;
    }
}

/// How to write the value instead; empty where nobody can know.
std::string cure(std::string_view wanted, const boost::json::value& found) {
    if (wanted == wantedKind(static_cast<const std::string*>(nullptr)) && found.is_number()) {
        return "; put it in quotation marks";
    }
    if (wanted == wantedKind(static_cast<const bool*>(nullptr)))
        return "; write true or false, without quotation marks";
    if (!found.is_string()) return "";
    const std::string text(found.get_string());
    return isNumber(text) ? "; write " + text + ", without quotation marks" : "";
}

std::vector<std::string_view> names(const std::vector<NeededKey>& keys) {
    std::vector<std::string_view> result;
    std::ranges::transform(keys, std::back_inserter(result), &NeededKey::key);
    return result;
}

} // namespace

void checkKeys(const PlacedJson& object, const KeysOfObject& keys, ScriptFindings& findings) {
    auto missing = keys.needed;
    std::erase_if(missing, [&](const NeededKey& key) { return object.find(key.key) != nullptr; });
    for (const auto& [key, at] : object.keys) {
        if (std::ranges::find(keys.known, key) != keys.known.end()) continue;
        const auto unknown = "unknown field " + inQuotes(key);
        const auto meant = nearName(key, names(missing));
        if (meant) {
            findings.error(at, unknown + "; did you mean " + inQuotes(*meant) + "?");
            std::erase_if(missing, [&](const NeededKey& other) { return other.key == *meant; });
        } else {
            findings.warning(at, unknown + ", which " + std::string(keys.reader) +
                                     didYouMean(key, keys.known, "; remove it"));
        }
    }
    for (const auto& [key, kind] : missing) {
        findings.error(object.at, inQuotes(key) + " is missing, so " + keys.consequence + "; it is " +
                                      std::string(kind));
    }
}

void checkRepeats(const PlacedJson& object, ScriptFindings& findings) {
    std::set<std::string_view> given;
    for (const auto& [key, at] : object.keys) {
        if (given.insert(key).second) continue;
        findings.warning(at, inQuotes(key) + " is given twice, and only the last one counts; remove one");
    }
}

void tellWrongKind(const NeededKey& wanted, const PlacedJson& found, ScriptFindings& findings) {
    findings.error(found.at, inQuotes(wanted.key) + " must be " + std::string(wanted.kind) + ", not " +
                                 std::string(kindOf(found.value)) + cure(wanted.kind, found.value));
}

void checkScalars(const PlacedJson& object, ScriptFindings& findings) {
    for (std::size_t index = 0; index < object.keys.size(); ++index) {
        const auto& element = object.elements[index];
        if (readAs<JsonScalar>(element)) continue;
        findings.error(element.at, inQuotes(object.keys[index].text) +
                                       " must be a text, a number, true, false or null, not " +
                                       std::string(kindOf(element.value)) +
                                       ", or companions refuse the whole script");
    }
}

} // namespace tarnly

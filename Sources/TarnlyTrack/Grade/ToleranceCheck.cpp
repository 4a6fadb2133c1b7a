#include "TarnlyTrack/Grade/ToleranceCheck.hpp"

#include <algorithm>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <utility>

#include "TarnlyCore/ScriptCheck/KeyCheck.hpp"
#include "TarnlyCore/ScriptCheck/NearName.hpp"
#include "TarnlyCore/ScriptCheck/SyntaxCure.hpp"
#include "TarnlyTrack/Grade/ToleranceKeys.hpp"

namespace tarnly::track {
namespace {

constexpr std::string_view ignored = "tarnly-track ignores";

std::string listed(std::span<const std::string_view> names) {
    std::string text;
    for (const auto name : names)
        text.append(text.empty() ? "" : ", ").append(name);
    return text;
}

template <typename T>
struct Plain {
    using Type = T;
};
template <typename T>
struct Plain<std::optional<T>> {
    using Type = T;
};

/// Reads the members of one tolerance, and tells of those of another kind of value.
Tolerance readMembers(const PlacedJson& json, ScriptFindings& findings) {
    Tolerance result;
    const auto read = [&]<typename Member>(const Field<Tolerance, Member>& field) {
        using Value = typename Plain<Member>::Type;
        const auto* found = json.find(field.key);
        if (found == nullptr) return;
        if (auto value = readAs<Value>(*found)) {
            result.*field.member = std::move(*value);
        } else {
            tellWrongKind(neededKey<Value>(field.key), *found, findings);
        }
    };
    std::apply([&](const auto&... fields) { (read(fields), ...); }, fieldsOf<Tolerance>());
    return result;
}

NeededKey neededByName(std::string_view key) {
    NeededKey result{key, ""};
    const auto look = [&]<typename Member>(const Field<Tolerance, Member>& field) {
        if (field.key == key) result = neededKey<typename Plain<Member>::Type>(key);
    };
    std::apply([&](const auto&... fields) { (look(fields), ...); }, fieldsOf<Tolerance>());
    return result;
}

/// Absent, and told, where there is none.
std::optional<ToleranceKind> kindOf(const PlacedJson& json, const Tolerance& tolerance,
                                    ScriptFindings& findings) {
    const auto* written = json.find("kind");
    if (written == nullptr) {
        findings.error(json.at, "\"kind\" is missing; the kinds are " + listed(toleranceKindNames));
    }
    if (written == nullptr || !written->value.is_string()) return std::nullopt;
    const auto* const place = std::ranges::find(toleranceKindNames, tolerance.kind);
    if (place != toleranceKindNames.end()) {
        return static_cast<ToleranceKind>(place - toleranceKindNames.begin());
    }
    findings.error(written->at, "there is no tolerance of the kind " + inQuotes(tolerance.kind) +
                                    didYouMean(tolerance.kind, toleranceKindNames,
                                               "; the kinds are " + listed(toleranceKindNames)));
    return std::nullopt;
}

void checkKeysOfKind(const PlacedJson& json, const std::string& kindName, const KindKeys& kind,
                     ScriptFindings& findings) {
    KeysOfObject keys{
        {"id", "name", "kind"}, {neededKey<std::string>("id")}, kindName + " cannot be graded", ignored};
    for (const auto* group : {&kind.needed, &kind.anyOf, &kind.optional})
        keys.known.insert(keys.known.end(), group->begin(), group->end());
    for (const auto key : kind.needed)
        keys.needed.push_back(neededByName(key));
    checkKeys(json, keys, findings);
    const auto isThere = [&](std::string_view key) { return json.find(key) != nullptr; };
    if (kind.anyOf.empty() || std::ranges::any_of(kind.anyOf, isThere)) return;
    findings.error(json.at, kindName + " needs at least one of " + listed(kind.anyOf));
}

Tolerance checkTolerance(const PlacedJson& json, ScriptFindings& findings) {
    if (!json.value.is_object()) {
        findings.error(json.at,
                       "a tolerance is wanted, an object with the fields id, kind and what the kind "
                       "needs; the kinds are " +
                           listed(toleranceKindNames));
        return {};
    }
    checkRepeats(json, findings);
    auto tolerance = readMembers(json, findings);
    if (const auto kind = kindOf(json, tolerance, findings)) {
        checkKeysOfKind(json, tolerance.kind, keysOf(*kind), findings);
        checkValues(json, *kind, tolerance, findings);
        // Told to be ignored.
        if (*kind == ToleranceKind::timeBetween) tolerance.fromSeconds = tolerance.toSeconds = std::nullopt;
    }
    return tolerance;
}

/// Null where there is none, which is told.
const PlacedJson* listIn(const PlacedJson& json, ScriptFindings& findings) {
    if (json.value.is_array()) return &json;
    const auto [key] = fieldsOf<Tolerances>();
    if (json.value.is_object()) {
        checkRepeats(json, findings);
        checkKeys(json, {{key.key}, {{key.key, "a list of tolerances"}}, "nothing can be graded", ignored},
                  findings);
        const auto* list = json.find(key.key);
        if (list == nullptr || list->value.is_array()) return list;
    }
    const auto* list = json.find(key.key);
    findings.error(list == nullptr ? json.at : list->at,
                   "a list of tolerances is wanted, or an object {\"tolerances\":[…]}");
    return nullptr;
}

void checkList(const PlacedJson& list, CheckedTolerances& result, ScriptFindings& findings) {
    std::set<std::string> ids;
    for (const auto& element : list.elements) {
        auto tolerance = checkTolerance(element, findings);
        const auto* id = element.find("id");
        if (id != nullptr && id->value.is_string() && !ids.insert(tolerance.id).second) {
            findings.error(id->at, "the id " + inQuotes(tolerance.id) +
                                       " is another tolerance's already; give this one another id");
        }
        result.tolerances.push_back(std::move(tolerance));
    }
    if (list.elements.empty()) findings.error(list.at, "the list is empty; add a tolerance");
}

} // namespace

bool CheckedTolerances::isUsable() const {
    return std::ranges::none_of(findings, [](const ScriptFinding& finding) {
        return finding.severity == ScriptFinding::Severity::error;
    });
}

CheckedTolerances readTolerances(std::string_view text) {
    CheckedTolerances result;
    ScriptFindings findings;
    try {
        const auto json = parsePlacedJson(text);
        if (const auto* list = listIn(json, findings)) checkList(*list, result, findings);
    } catch (const JsonTextError& error) {
        findings.error(error.at(),
                       std::string("no valid JSON: ") + error.what() + syntaxCure(text, error.at()));
    }
    result.findings = std::move(findings).inOrder(text);
    return result;
}

} // namespace tarnly::track

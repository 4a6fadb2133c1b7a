#include "TarnlyCore/ScriptCheck/TriggerCheck.hpp"

#include <map>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyCore/Script/ConditionFields.hpp"
#include "TarnlyCore/ScriptCheck/KeyCheck.hpp"
#include "TarnlyCore/ScriptCheck/NearName.hpp"

namespace tarnly {
namespace {

using Scalars = std::map<std::string, JsonScalar>;

/// By which the member of a trigger is written.
template <typename Member>
std::string_view keyOf(Member ScriptTrigger::*member) {
    std::string_view key;
    const auto look = [&](const auto& field) {
        if constexpr (std::is_same_v<decltype(field.member), Member ScriptTrigger::*>)
            if (field.member == member) key = field.key;
    };
    std::apply([&](const auto&... fields) { (look(fields), ...); }, fieldsOf<ScriptTrigger>());
    return key;
}

KeysOfObject keysOfTrigger() {
    KeysOfObject keys{{}, {}, "companions refuse the whole script"};
    const auto add = [&]<typename Member>(const Field<ScriptTrigger, Member>& field) {
        keys.known.push_back(field.key);
        keys.needed.push_back(neededKey<Member>(field.key));
    };
    std::apply([&](const auto&... fields) { (add(fields), ...); }, fieldsOf<ScriptTrigger>());
    return keys;
}

void checkLength(std::string_view key, const std::string& text, std::size_t at, ScriptFindings& findings) {
    if (text.size() <= ProtocolLimits::idSize) return;
    findings.error(at, inQuotes(key) + " has " + std::to_string(text.size()) +
                           " bytes, and companions take " + std::to_string(ProtocolLimits::idSize) +
                           " at most; shorten it");
}

void checkValue(const NeededKey& wanted, const PlacedJson& json, const std::string*,
                ScriptFindings& findings) {
    const auto text = readAs<std::string>(json);
    if (!text) return tellWrongKind(wanted, json, findings);
    checkLength(wanted.key, *text, json.at, findings);
}

void checkValue(const NeededKey& wanted, const PlacedJson& json, const Scalars*, ScriptFindings& findings) {
    if (!json.value.is_object()) return tellWrongKind(wanted, json, findings);
    checkRepeats(json, findings);
    checkScalars(json, findings);
}

/// Tells of fields that are of another kind, or too long.
void checkValues(const PlacedJson& trigger, ScriptFindings& findings) {
    const auto check = [&]<typename Member>(const Field<ScriptTrigger, Member>& field) {
        const auto* json = trigger.find(field.key);
        if (json == nullptr) return;
        checkValue(neededKey<Member>(field.key), *json, static_cast<const Member*>(nullptr), findings);
    };
    std::apply([&](const auto&... fields) { (check(fields), ...); }, fieldsOf<ScriptTrigger>());
}

/// Absent where it holds something else.
std::optional<Scalars> scalarsOf(const PlacedJson* object) {
    if (object == nullptr || !object->value.is_object()) return std::nullopt;
    Scalars scalars;
    for (std::size_t index = 0; index < object->keys.size(); ++index) {
        auto scalar = readAs<JsonScalar>(object->elements[index]);
        if (!scalar) return std::nullopt;
        scalars.insert_or_assign(object->keys[index].text, std::move(*scalar));
    }
    return scalars;
}

void tellUnknownKind(const std::string& name, std::size_t at, ScriptFindings& findings) {
    std::vector<std::string_view> kinds;
    std::string all;
    TriggerConditionKind::find([&](auto kind) {
        kinds.push_back(ScriptTriggerMapper::wireName(kind));
        all.append(all.empty() ? "" : ", ").append(kinds.back());
        return false;
    });
    findings.error(at, "there is no condition of the kind " + inQuotes(name) +
                           didYouMean(name, kinds, "; the kinds are " + all));
}

/// Tells of a key that only other kinds of conditions have. Null does nobody harm.
void checkIdleKey(std::string_view key, const PlacedJson& json, const std::string& kind,
                  ScriptFindings& findings) {
    for (std::size_t index = 0; index < json.keys.size(); ++index) {
        if (json.keys[index].text != key || json.elements[index].value.is_null()) continue;
        findings.warning(json.keys[index].at, inQuotes(key) + " means nothing to " + kind +
                                                  "; remove it, or choose another condition_kind");
    }
}

void checkCondition(const PlacedJson& json, const TriggerCondition& condition, ScriptFindings& findings) {
    const std::string kind(ScriptTriggerMapper::wireName(condition.kind));
    KeysOfObject keys{{}, {}, kind + " never holds"};
    forEachConditionField([&](const auto& field) {
        using Value = typename std::decay_t<decltype(field)>::Value;
        const auto* found = json.find(field.key);
        const auto& value = condition.*field.member;
        keys.known.push_back(field.key);
        if constexpr (std::is_same_v<Value, std::string>)
            if (value) checkLength(field.key, *value, found->at, findings);
        if (!field.isNeededBy(condition.kind)) return checkIdleKey(field.key, json, kind, findings);
        const auto wanted = neededKey<Value>(field.key);
        keys.needed.push_back(wanted);
        if (found != nullptr && !value) tellWrongKind(wanted, *found, findings);
    });
    checkKeys(json, keys, findings);
}

} // namespace

CheckedTrigger checkTrigger(const PlacedJson& trigger, ScriptFindings& findings) {
    CheckedTrigger result;
    result.json = &trigger;
    static const auto keys = keysOfTrigger();
    if (!trigger.value.is_object()) {
        std::string names;
        for (const auto key : keys.known)
            names.append(names.empty() ? "" : ", ").append(key);
        findings.error(trigger.at, "a trigger is wanted, an object with the fields " + names);
        return result;
    }
    checkKeys(trigger, keys, findings);
    checkRepeats(trigger, findings);
    checkValues(trigger, findings);
    const auto* id = trigger.find(keyOf(&ScriptTrigger::id));
    if (id != nullptr) result.id = readAs<std::string>(*id);
    if (result.id) {
        result.idAt = id->at;
        if (result.id->empty()) findings.warning(id->at, "the id is empty; name what fires");
    }
    const auto* kind = trigger.find(keyOf(&ScriptTrigger::conditionKind));
    const auto kindName = kind == nullptr ? std::nullopt : readAs<std::string>(*kind);
    if (!kindName) return result;
    if (!ScriptTriggerMapper::kindNamed(*kindName)) {
        tellUnknownKind(*kindName, kind->at, findings);
        return result;
    }
    result.conditionJson = trigger.find(keyOf(&ScriptTrigger::condition));
    const auto scalars = scalarsOf(result.conditionJson);
    if (!scalars) return result;
    result.condition = ScriptTriggerMapper::toCondition(*kindName, *scalars);
    checkCondition(*result.conditionJson, *result.condition, findings);
    return result;
}

std::size_t CheckedTrigger::placeOf(std::string_view conditionKey) const {
    const auto* value = conditionJson->find(conditionKey);
    return value == nullptr ? conditionJson->at : value->at;
}

} // namespace tarnly

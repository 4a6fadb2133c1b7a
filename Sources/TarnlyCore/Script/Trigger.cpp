#include "TarnlyCore/Script/Trigger.hpp"

namespace tarnly {

std::string_view TriggerConditionKind::name(Case which) {
    switch (which) {
        case reachesFix:
            return "reachesFix";
        case crossesAgl:
            return "crossesAgl";
        case crossesAltitude:
            return "crossesAltitude";
        case afterGearDown:
            return "afterGearDown";
        case afterStart:
            return "afterStart";
        case afterTrigger:
            return "afterTrigger";
    }
    return {};
}

void TriggerConditionKind::writeJson(JsonWriter& writer) const { writer.string(name(which_)); }

TriggerConditionKind TriggerConditionKind::readJson(const boost::json::value& json) {
    const auto text = decodeJson<std::string>(json);
    const auto kind = find([&](Case which) { return name(which) == text; });
    if (!kind) throw JsonError("unknown condition kind \"" + text + "\"");
    return *kind;
}

} // namespace tarnly

#include "TarnlyCore/Script/Trigger.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tarnly {
namespace {

/// In the order of the cases.
constexpr std::array<std::string_view, 6> rawValues = {"reachesFix",    "crossesAgl", "crossesAltitude",
                                                       "afterGearDown", "afterStart", "afterTrigger"};

} // namespace

void TriggerConditionKind::writeJson(JsonWriter& writer) const { writer.string(rawValues.at(which_)); }

TriggerConditionKind TriggerConditionKind::readJson(const boost::json::value& json) {
    const auto text = decodeJson<std::string>(json);
    const auto found = std::ranges::find(rawValues, text);
    if (found == rawValues.end()) throw JsonError("unknown condition kind \"" + text + "\"");
    return static_cast<Case>(found - rawValues.begin());
}

} // namespace tarnly

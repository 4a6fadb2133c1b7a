#pragma once

#include <cstdint>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly {

/// What a trigger waits for. Used as an enumeration; in JSON the case's own name.
class TriggerConditionKind {
  public:
    enum Case : std::uint8_t {
        reachesFix,
        crossesAgl,
        crossesAltitude,
        afterGearDown,
        afterStart,
        afterTrigger
    };

    constexpr TriggerConditionKind(Case which = reachesFix) : which_(which) {}
    constexpr operator Case() const { return which_; }

    void writeJson(JsonWriter& writer) const;
    /// Throws `JsonError` for anything but the name of a case, letter case included.
    static TriggerConditionKind readJson(const boost::json::value& json);

  private:
    Case which_;
};

} // namespace tarnly

#pragma once

#include <string>
#include <utility>

#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// A phrase in a record is its English in JSON; what is read is no pattern any more.
namespace tarnly {

inline void writeJson(JsonWriter& writer, const Phrase& value) { writer.string(value.text()); }

inline void readJson(const boost::json::value& json, Phrase& value) {
    std::string text;
    readJson(json, text);
    value = Phrase::verbatim(std::move(text));
}

} // namespace tarnly

#include "TarnlyPlatform/Json/JsonSchema.hpp"

#include <utility>

namespace tarnly {

boost::json::object JsonSchema::reference(std::string_view definition) {
    return {{"$ref", "#/$defs/" + std::string(definition)}};
}

void JsonSchema::permitNull(boost::json::object& schema) {
    auto* type = schema.if_contains("type");
    if (type != nullptr && type->is_string()) {
        *type = boost::json::array{*type, "null"};
    } else {
        boost::json::object present = std::exchange(schema, {});
        schema["anyOf"] = boost::json::array{std::move(present), boost::json::object{{"type", "null"}}};
    }
}

} // namespace tarnly

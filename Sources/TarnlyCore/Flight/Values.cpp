#include "TarnlyCore/Flight/Values.hpp"

namespace tarnly {
namespace {

constexpr std::chrono::sys_days referenceDate = std::chrono::year(2001) / 1 / 1;

} // namespace

void Date::writeJson(JsonWriter& writer) const { writer.number((time - referenceDate).count()); }

Date Date::readJson(const boost::json::value& json) {
    return {referenceDate + std::chrono::duration<double>(decodeJson<double>(json))};
}

void JsonScalar::writeJson(JsonWriter& writer) const {
    struct Writer {
        JsonWriter& to;
        void operator()(std::monostate) const { to.null(); }
        void operator()(const std::string& text) const { to.string(text); }
        void operator()(double number) const { to.number(number); }
        void operator()(bool flag) const { to.boolean(flag); }
    };
    std::visit(Writer{writer}, scalar);
}

JsonScalar JsonScalar::readJson(const boost::json::value& json) {
    if (json.is_string()) return {decodeJson<std::string>(json)};
    if (json.is_number()) return {decodeJson<double>(json)};
    if (json.is_bool()) return {decodeJson<bool>(json)};
    if (json.is_null()) return {};
    throw JsonError("unsupported JSON value");
}

} // namespace tarnly

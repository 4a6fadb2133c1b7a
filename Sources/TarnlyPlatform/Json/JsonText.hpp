#pragma once

#include <array>
#include <boost/json/monotonic_resource.hpp>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// Reading of a record from a text that may be long, and may hold much beside the record.
///
/// What `decodeJson` says of the whole value is what is said here; but of the text only the record's own
/// fields are built.
namespace tarnly {

template <typename T>
struct ShapeOf {
    static constexpr JsonShape shape{JsonShape::Kind::scalar, {}, nullptr};
};

template <JsonCustom T>
struct ShapeOf<T> {
    static constexpr JsonShape shape{JsonShape::Kind::whole, {}, nullptr};
};

template <typename T>
struct ShapeOf<std::map<std::string, T>> {
    static constexpr JsonShape shape{JsonShape::Kind::whole, {}, nullptr};
};

template <typename T>
struct ShapeOf<std::optional<T>> : ShapeOf<T> {};

template <typename T>
struct ShapeOf<std::vector<T>> {
    static constexpr JsonShape shape{JsonShape::Kind::list, {}, &ShapeOf<T>::shape};
};

template <typename Record, typename Member>
constexpr JsonShape::Member wantedMember(const Field<Record, Member>& field) {
    return {field.key, &ShapeOf<Member>::shape};
}

template <JsonRecord T>
struct ShapeOf<T> {
    static constexpr auto members =
        std::apply([](const auto&... fields) { return std::array{wantedMember(fields)...}; }, fieldsOf<T>());
    static constexpr JsonShape shape{JsonShape::Kind::object, members, nullptr};
};

/// Throws `JsonError` when the text is no JSON, or holds no `T`.
template <typename T>
T decodeJsonText(std::string_view text, JsonElements* elements = nullptr) {
    std::array<unsigned char, 1024> room;
    boost::json::monotonic_resource storage(room.data(), room.size());
    return decodeJson<T>(parseJson(text, ShapeOf<T>::shape, elements, &storage));
}

/// The elements of a list, each decoded as it comes.
template <typename T>
class DecodedElements final : public JsonElements {
  public:
    void restart() override {
        elements_.clear();
        firstFault_.reset();
    }

    void add(const boost::json::value& element) override {
        if (firstFault_) return;
        try {
            elements_.push_back(decodeJson<T>(element));
        } catch (const JsonError& error) {
            firstFault_ = error;
        }
    }

    /// Throws `JsonError` when one of them is no `T`.
    std::vector<T> take() {
        if (firstFault_) throw JsonError(*firstFault_);
        return std::move(elements_);
    }

  private:
    std::vector<T> elements_;
    std::optional<JsonError> firstFault_;
};

} // namespace tarnly

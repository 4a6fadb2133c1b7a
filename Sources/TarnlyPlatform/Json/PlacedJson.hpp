#pragma once

#include <boost/json/value.hpp>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyPlatform/Json/JsonError.hpp"

namespace tarnly {

/// A JSON value that knows where in its text it stands, for those who tell people what is wrong with a file.
/// A plain value; what need not tell anybody is read by `parseJson`.
struct PlacedJson {
    struct Key {
        std::string text;
        /// The byte of its quotation mark.
        std::size_t at = 0;
    };

    /// Its first byte.
    std::size_t at = 0;
    /// The value of a scalar; `[]` or `{}` for a container, whatever that holds.
    boost::json::value value{};
    /// Of an object, in the order of the text; a key that is given twice stands there twice.
    std::vector<Key> keys{};
    /// Of a list; of an object the values, one for each of `keys`.
    std::vector<PlacedJson> elements{};

    /// The value of `key`, of which the last one counts; null where there is none, or this is no object.
    const PlacedJson* find(std::string_view key) const;
};

/// A text that is no JSON, and where it stops being that.
class JsonTextError : public JsonError {
  public:
    JsonTextError(const std::string& what, std::size_t at) : JsonError(what), at_(at) {}

    /// The byte; the size of the text where that ends too early.
    std::size_t at() const { return at_; }

  private:
    std::size_t at_;
};

/// Takes what `parseJson` takes, and reads the same values. Throws `JsonTextError` for everything else.
PlacedJson parsePlacedJson(std::string_view text);

} // namespace tarnly

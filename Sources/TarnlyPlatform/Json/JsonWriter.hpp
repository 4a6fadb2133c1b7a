#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Json/JsonError.hpp"

namespace tarnly {

/// Writes one compact JSON text onto a string, in the order of the calls.
///
/// Doubles are written as by `appendNumber`, and read back the same; `/` in strings is escaped. The text is
/// well-formed UTF-8 whatever the strings hold: of a file's name, say, what is malformed becomes U+FFFD.
class JsonWriter {
  public:
    JsonWriter() = default;
    /// For a text that is going to have about as many bytes.
    explicit JsonWriter(std::size_t expected) { out_.reserve(expected); }

    void beginObject();
    void key(std::string_view name);
    void endObject();

    void beginArray();
    void endArray();

    void null();
    void boolean(bool value);
    void integer(std::int64_t value);
    /// Throws `JsonError` for infinity and NaN.
    void number(double value);
    void string(std::string_view value);

    /// The text so far; leaves the writer empty.
    std::string take();

    /// The text so far, as a piece: what is written next goes on where it ends.
    std::string takePiece();

    /// Of the text so far, in bytes, without the pieces that were taken.
    std::size_t size() const { return out_.size(); }

  private:
    void separate();
    void quote(std::string_view text);

    std::string out_;
    bool needsComma_ = false;
};

} // namespace tarnly

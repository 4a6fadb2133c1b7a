#pragma once

#include <boost/json/storage_ptr.hpp>
#include <boost/json/value.hpp>
#include <string_view>

#include "TarnlyPlatform/Json/JsonError.hpp"
#include "TarnlyPlatform/Json/JsonShape.hpp"

namespace tarnly {

/// What becomes of a number beyond the range of a double, such as 1e+9999.
enum class NonFinite { rejected, kept };

/// Parses one JSON text (RFC 8259) of at most 64 levels of nesting.
///
/// Numbers are read exactly: whole ones in the 64-bit range as integers, however they are written, others as
/// the nearest double. Of duplicate keys the last counts. Throws `JsonError` for anything that is not
/// exactly one JSON value: trailing text, a byte-order mark, a lone surrogate escape, nesting beyond the
/// limit included, and an exponent of ten digits or more.
boost::json::value parseJson(std::string_view text, NonFinite nonFinite = NonFinite::rejected);

/// The same of the whole text, but the value has only what is wanted of it, in `storage`. Where `elements` is
/// given, it takes those of the lists within `wanted`, which stand in the value as `[]`.
boost::json::value parseJson(std::string_view text, const JsonShape& wanted, JsonElements* elements,
                             boost::json::storage_ptr storage, NonFinite nonFinite = NonFinite::rejected);

} // namespace tarnly

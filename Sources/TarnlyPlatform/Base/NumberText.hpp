#pragma once

#include <cstdint>
#include <string>

namespace tarnly {

/// Appends `value` in decimal: a whole number below 10^16 as its digits, any other number in the shortest
/// form that reads back the same, 0.1 or 1e+21. Minus zero keeps its sign. From any thread, whatever the
/// locale.
///
/// Beyond 2^53 not every whole number is a double, and the digits would promise more than there is; people
/// and programs that read "1e+05" do not expect a count there.
void appendNumber(std::string& out, double value);

/// The same for a single: the shortest form that reads back as the same single.
void appendNumber(std::string& out, float value);

void appendNumber(std::string& out, std::int64_t value);

} // namespace tarnly

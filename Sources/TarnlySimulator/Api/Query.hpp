#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnly::simulator {

/// All values of `key` in a URL's query ("a=1&b=2"), percent-decoded, in their order.
std::vector<std::string> queryValues(std::string_view query, std::string_view key);

} // namespace tarnly::simulator

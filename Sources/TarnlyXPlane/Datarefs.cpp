#include "TarnlyXPlane/Datarefs.hpp"

#include "TarnlyXPlane/Link/WebApiMessages.hpp"

namespace tarnly {

std::optional<IndexedName> parseIndexedName(std::string_view name) {
    const auto bracket = name.find('[');
    if (bracket == std::string_view::npos || !name.ends_with(']')) return std::nullopt;
    const auto index = parseDecimalInteger(name.substr(bracket + 1, name.size() - bracket - 2));
    if (!index) return std::nullopt;
    return IndexedName{std::string(name.substr(0, bracket)), *index};
}

} // namespace tarnly

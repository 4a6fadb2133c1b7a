#include "TarnlyCore/Protocol/Request.hpp"

namespace tarnly {

void cutName(std::string& name) {
    if (name.size() <= longestName) return;
    const auto isInsideCharacter = [&](std::size_t at) {
        return (static_cast<unsigned char>(name[at]) & 0xC0U) == 0x80U;
    };
    auto size = longestName;
    while (size > 0 && isInsideCharacter(size))
        --size;
    name.resize(size);
    name.shrink_to_fit();
}

} // namespace tarnly

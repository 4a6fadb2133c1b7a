#include "TarnlyCore/Protocol/Request.hpp"

namespace tarnly {

void cutPath(std::string& path) {
    if (path.size() <= longestPath) return;
    const auto isInsideCharacter = [&](std::size_t at) {
        return (static_cast<unsigned char>(path[at]) & 0xC0U) == 0x80U;
    };
    auto size = longestPath;
    while (size > 0 && isInsideCharacter(size))
        --size;
    path.resize(size);
    path.shrink_to_fit();
}

} // namespace tarnly

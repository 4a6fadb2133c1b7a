#include "TarnlyPlatform/Base/SecureRandom.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tarnly {

void fillSecureRandom(std::span<std::byte> bytes) {
    constexpr std::size_t largestCall = 256; // getentropy gives no more at once
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), largestCall));
        if (getentropy(part.data(), part.size()) != 0) {
            std::perror("no secure random bytes");
            std::abort();
        }
        bytes = bytes.subspan(part.size());
    }
}

} // namespace tarnly

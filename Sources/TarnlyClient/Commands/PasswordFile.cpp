#include "TarnlyClient/Commands/PasswordFile.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"

namespace tarnly::client {

std::string readPassword(const std::filesystem::path& file) {
    const auto shown = "the password file " + file.string();
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::string line;
    std::getline(stream, line);
    if (stream.bad() || !stream.is_open()) {
        throw UsageError(shown + " cannot be read: " + std::strerror(errno) + "; name one that you may read");
    }
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty()) throw UsageError(shown + " has no password on its first line; write it there");
    if (wellFormedUtf8(line) != line)
        throw UsageError(shown + " is not UTF-8; save it anew in that encoding");
    return line;
}

} // namespace tarnly::client

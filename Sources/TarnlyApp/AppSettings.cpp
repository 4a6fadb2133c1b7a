#include "TarnlyApp/AppSettings.hpp"

#include <fstream>
#include <sstream>

#include "TarnlyPlatform/JsonParser.hpp"

namespace tarnly {

std::filesystem::path AppSettings::fileIn(const std::filesystem::path& dataFolder) {
    return dataFolder / "settings.json";
}

AppSettings AppSettings::load(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text; // stays empty when there is nothing to read
    text << stream.rdbuf();
    try {
        return decodeJson<AppSettings>(parseJson(text.view()));
    } catch (const JsonError&) {
        return {};
    }
}

} // namespace tarnly

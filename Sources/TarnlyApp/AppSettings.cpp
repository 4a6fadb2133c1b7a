#include "TarnlyApp/AppSettings.hpp"

#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonWriter.hpp"

namespace tarnly {

std::filesystem::path AppSettings::fileIn(const std::filesystem::path& dataFolder) {
    return dataFolder / "settings.json";
}

AppSettings AppSettings::load(const std::filesystem::path& file) {
    const auto text = readPrivateFile(file);
    if (!text) return {};
    try {
        return decodeJson<AppSettings>(parseJson(*text));
    } catch (const JsonError&) {
        return {};
    }
}

void AppSettings::save(const std::filesystem::path& file) const {
    createPrivateFolders(file.parent_path());
    overwritePrivateFile(file, encodeJson(*this));
}

} // namespace tarnly

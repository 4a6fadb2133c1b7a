#include "TarnlyApp/DeskMemory.hpp"

#include <exception>
#include <system_error>

#include "TarnlyApp/SettingsFile.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

std::filesystem::path fileIn(const std::filesystem::path& dataFolder) { return dataFolder / "desktop.json"; }

} // namespace

DeskMemory DeskMemory::in(const std::filesystem::path& dataFolder) {
    try {
        if (const auto text = readPrivateFile(fileIn(dataFolder)))
            return decodeJson<DeskMemory>(parseJson(*text));
    } catch (const JsonError&) {
        // Then it is not known.
    }
    DeskMemory memory;
    std::error_code ignored;
    memory.isIntroduced = std::filesystem::exists(AppSettings::fileIn(dataFolder), ignored);
    return memory;
}

void DeskMemory::keepIn(const std::filesystem::path& dataFolder) const {
    try {
        replaceFile(fileIn(dataFolder), encodeJson(*this), Lasting::no);
    } catch (const std::exception&) {
        // No lesson depends on it.
    }
}

} // namespace tarnly

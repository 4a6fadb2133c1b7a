#include "TarnlyXPlane/XPlaneBackendError.hpp"

#include "TarnlyPlatform/Base/TextualForm.hpp"

namespace tarnly {
namespace {

using Case = XPlaneBackendError::Case;

const char* name(Case which) {
    switch (which) {
        case Case::unknownDataref:
            return "unknownDataref";
        case Case::unknownCommand:
            return "unknownCommand";
        case Case::commandFailed:
            return "commandFailed";
        case Case::timeout:
            return "timeout";
        case Case::flightNotFound:
            return "flightNotFound";
        case Case::notImplemented:
            return "notImplemented";
        case Case::situationsDirectoryNotConfigured:
            return "situationsDirectoryNotConfigured";
    }
    return "xplaneBackendError";
}

std::string describe(Case which, const std::string& payload) {
    if (which == Case::situationsDirectoryNotConfigured) return name(which);
    return errorText(name(which), payload);
}

} // namespace

XPlaneBackendError::XPlaneBackendError(Case which, const std::string& payload)
    : std::runtime_error(describe(which, payload)), which_(which), payload_(payload) {}

} // namespace tarnly

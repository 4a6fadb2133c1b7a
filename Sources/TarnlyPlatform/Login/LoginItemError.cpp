#include "TarnlyPlatform/Login/LoginItemError.hpp"

#include "TarnlyPlatform/Base/TextualForm.hpp"

namespace tarnly {
namespace {

const char* name(LoginItemError::Case which) {
    switch (which) {
        case LoginItemError::Case::cannotWrite:
            return "cannotWrite";
        case LoginItemError::Case::cannotRemove:
            return "cannotRemove";
        case LoginItemError::Case::notRepresentable:
            return "notRepresentable";
    }
    return "loginItemError";
}

} // namespace

LoginItemError::LoginItemError(Case which, const std::string& detail)
    : std::runtime_error(errorText(name(which), detail)), which_(which) {}

} // namespace tarnly

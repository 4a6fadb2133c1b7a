#include "TarnlyCore/NavData/NavDatabaseError.hpp"

#include "TarnlyPlatform/Base/TextualForm.hpp"

namespace tarnly {

NavDatabaseError NavDatabaseError::openFailed(std::string_view path, std::string_view message) {
    return NavDatabaseError("openFailed(path: " + quoted(path) + ", message: " + quoted(message) + ")");
}

} // namespace tarnly

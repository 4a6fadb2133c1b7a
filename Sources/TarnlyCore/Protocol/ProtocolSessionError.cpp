#include "TarnlyCore/Protocol/ProtocolSessionError.hpp"

#include "TarnlyPlatform/Base/TextualForm.hpp"

namespace tarnly {

ProtocolSessionError ProtocolSessionError::missingParams(const std::string& message) {
    return ProtocolSessionError(errorText("missingParams", message));
}

} // namespace tarnly

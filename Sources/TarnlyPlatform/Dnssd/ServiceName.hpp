#pragma once

#include <string>

namespace tarnly {

/// `name` as a DNS-SD instance name: at most 63 bytes (RFC 6763, section 4.1.1), not cut within a character.
std::string cutServiceName(std::string name);

/// The name to try after `name` was found taken: "rig" gives "rig (2)", "rig (2)" gives "rig (3)". At most 63
/// bytes, not cut within a character.
std::string nextServiceName(const std::string& name);

} // namespace tarnly

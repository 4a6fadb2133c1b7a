#pragma once

#include "TarnlyPlatform/Net/WebPages.hpp"

namespace tarnly {

/// What the companion's port shows to a browser: one short page that says what this is and what to type into
/// the application, and tries from there what the application does.
WebPages reachPages();

} // namespace tarnly

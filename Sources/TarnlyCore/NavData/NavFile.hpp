#pragma once

namespace tarnly {

/// The name, in its data folder, of the database that the companion makes of the simulator's navigation data.
inline constexpr const char* ownNavFile = "navigation.db";

} // namespace tarnly

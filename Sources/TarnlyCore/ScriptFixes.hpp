#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "TarnlyCore/NavData/NavDatabase.hpp"
#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"

namespace tarnly {

struct NavDatabaseInUse {
    /// May be null: no fix is found.
    std::shared_ptr<NavDatabase> database;
    /// One that takes its place is about to come.
    bool isAnotherExpected = false;
};

/// Told, from the threads that load scripts, when one has come too early for its fixes.
using TellOfFixes = std::function<void(const std::string& text)>;

/// Where scripts have their fixes from, which may change from one script to the next. What it makes is for
/// one script and one thread, which it blocks: with the first fix it waits for a database that is about to
/// come, for `NavDatabase::lookupLimit` at most. A script must not keep a host from stopping, however slow
/// its fixes are to find. `clock` outlives it.
MakeFixResolver fixesIn(std::shared_ptr<Guarded<NavDatabaseInUse>> present, const Clock& clock,
                        std::shared_ptr<std::atomic<bool>> isStopping, TellOfFixes tell);

} // namespace tarnly

#include "TarnlyCore/ScriptFixes.hpp"

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace tarnly {
namespace {

/// The search for the fixes of one script, which begins with the first of them: a database that is about to
/// come is waited for. Blocks its thread.
class ScriptFixes {
  public:
    ScriptFixes(std::shared_ptr<Guarded<NavDatabaseInUse>> present, const Clock& clock,
                std::function<bool()> isWanted, TellOfFixes tell)
        : present_(std::move(present)),
          clock_(clock),
          isWanted_(std::move(isWanted)),
          tell_(std::move(tell)) {}

    std::optional<Coordinate> resolve(const std::string& ident) {
        if (!std::exchange(hasBegun_, true)) begin();
        return lookup_ ? lookup_->resolve(ident) : std::nullopt;
    }

  private:
    void begin() {
        constexpr std::chrono::milliseconds slice{5};
        const auto deadline = clock_.now() + NavDatabase::lookupLimit;
        auto inUse = present_->copy();
        while (!inUse.database && inUse.isAnotherExpected && isWanted_() && clock_.now() < deadline) {
            std::this_thread::sleep_for(slice);
            inUse = present_->copy();
        }
        // Kept: a lookup needs it to its end.
        database_ = std::move(inUse.database);
        if (database_) {
            lookup_ = std::make_unique<NavDatabase::Lookup>(*database_, clock_, isWanted_);
        } else if (inUse.isAnotherExpected && isWanted_()) {
            tell_(
                "A script has come before the navigation database is made of the simulator's data, so none "
                "of its fixes is found. Load it again in a moment.");
        }
    }

    const std::shared_ptr<Guarded<NavDatabaseInUse>> present_;
    const Clock& clock_;
    const std::function<bool()> isWanted_;
    const TellOfFixes tell_;
    bool hasBegun_ = false;
    std::shared_ptr<NavDatabase> database_;
    // depends-on: database_
    std::unique_ptr<NavDatabase::Lookup> lookup_;
};

} // namespace

MakeFixResolver fixesIn(std::shared_ptr<Guarded<NavDatabaseInUse>> present, const Clock& clock,
                        std::shared_ptr<std::atomic<bool>> isStopping, TellOfFixes tell) {
    return [=, &clock](std::function<bool()> isScriptWanted) -> FixResolver {
        auto isWanted = [isStopping, isScriptWanted = std::move(isScriptWanted)] {
            return !*isStopping && isScriptWanted();
        };
        auto fixes = std::make_shared<ScriptFixes>(present, clock, std::move(isWanted), tell);
        return [fixes](const std::string& ident) { return fixes->resolve(ident); };
    };
}

} // namespace tarnly

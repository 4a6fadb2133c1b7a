#pragma once

#include <string>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// One entry as the catalogue prints it: `{"id":…,"is_writable":…,"name":…,"value_type":…}`.
std::string catalogueEntry(const Dataref& dataref);
/// `{"description":…,"id":…,"name":…}`
std::string catalogueEntry(const Command& command);

/// The whole catalogues, which may be many megabytes long: made when first asked for, and again when what
/// they show has changed. Belongs to the thread of its world, which outlives it.
class CatalogueText {
  public:
    explicit CatalogueText(const World& world) : world_(world) {}

    /// `{"data":[…]}`
    const std::string& datarefs();
    const std::string& commands();

  private:
    struct Shown {
        std::uint64_t idGeneration = 0;
        bool mainMenu = false;
        bool lateDatarefs = false;
        bool nullEntries = false;
        bool awkward = false;

        bool operator==(const Shown&) const = default;
    };

    void forgetIfOutdated();

    OnOneThread thread_;
    const World& world_;
    Shown shown_;
    std::string datarefs_;
    std::string commands_;
};

} // namespace tarnly::simulator

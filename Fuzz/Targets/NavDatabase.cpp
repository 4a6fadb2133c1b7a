#include "TarnlyCore/NavData/NavDatabase.hpp"

#include <fstream>

#include "Fuzz/Targets.hpp"
#include "Support/TemporaryFolder.hpp"

namespace tarnly::fuzz {

/// Whatever the file is, the fixes are found or not, in time: the fuzzer is told how long an input may take.
void navDatabase(std::string_view bytes) {
    static const test::TemporaryFolder folder;
    static const SystemClock clock;
    const auto file = (folder.path() / "nav.db").string();
    std::ofstream(file, std::ios::binary | std::ios::trunc).write(bytes.data(), std::ssize(bytes));
    const NavDatabase database(file);
    NavDatabase::Lookup lookup(database, clock, [] { return true; });
    lookup.resolve("KLO");
    lookup.resolve("none");
}

} // namespace tarnly::fuzz

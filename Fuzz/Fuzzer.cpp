#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Fuzz/Targets.hpp"

/// One fuzzer, of the target that is named `TARNLY_FUZZ_TARGET`.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnly::fuzz;
    static const auto target = std::ranges::find(targets(), TARNLY_FUZZ_TARGET, &Target::name);
    require(target != targets().end(), "there is such a target");
    // Nothing may look at null, not even for no bytes.
    target->run({size == 0 ? "" : reinterpret_cast<const char*>(data), size});
    return 0;
}

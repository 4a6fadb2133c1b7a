#pragma once

#include <string>
#include <vector>

#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly::client {

/// The parameters that ask for the values of `names`.
inline DatarefNamesParams namesParams(const std::vector<std::string>& names) {
    DatarefNamesParams params;
    for (const auto& name : names)
        params.datarefs.push_back({name});
    return params;
}

} // namespace tarnly::client

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyXPlane/Link/WebApiLink.hpp"
#include "TarnlyXPlane/XPlaneBackendError.hpp"

namespace tarnly {

/// How long a value that is to come is waited for, and how far apart the cache is looked at meanwhile where
/// that takes long.
inline constexpr std::chrono::milliseconds datarefPatience{980};
inline constexpr std::chrono::milliseconds datarefLookInterval{20};

/// The id of a dataref or, with its catalogue, of a command. A catalogue that may know more by now is loaded
/// again for a name that it does not have. Absent for a name that there is not.
Task<std::optional<std::int64_t>> findId(std::shared_ptr<WebApiLink> link, Catalogue& catalogue,
                                         std::string name);

/// What is to be answered for a name that the catalogue does not have: at the main menu, where nobody can
/// know, `timeout` with what to do.
XPlaneBackendError unknownName(const WebApiLink& link, XPlaneBackendError::Case which,
                               const std::string& name);

/// The values of `names` over one link, in their order: those that are not there yet are asked for in few
/// messages and waited for together, for about a second.
///
/// A name may end in an index in brackets, "sim/a[3]", for one element of an array dataref. Throws
/// `XPlaneBackendError` for the first name in the order that is unknown, or whose value does not come.
Task<std::vector<double>> readDatarefs(std::shared_ptr<WebApiLink> link, Clock& clock,
                                       std::shared_ptr<const std::vector<std::string>> names);

/// The same where each name is known and its value there already, and they are no more than are read at once.
std::optional<std::vector<double>> presentValues(WebApiLink& link, const std::vector<std::string>& names);

} // namespace tarnly

#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tarnly::client {

/// Does what the command line asks for. `arguments` are those after the program's name. Returns the exit
/// code: 0 done, 1 the companion or the network refused, 2 wrong usage; the latter two with a text on `err`.
int runClient(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

} // namespace tarnly::client

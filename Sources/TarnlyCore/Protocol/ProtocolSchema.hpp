#pragma once

#include <string>

namespace tarnly {

/// The protocol as a JSON Schema (draft 2020-12), one compact JSON text: what writers of clients make their
/// types from. A text is one of `Request` (client to companion) or `Reply` (companion to client, pushes
/// included), which are definitions of it, as is each record.
std::string protocolSchema();

} // namespace tarnly

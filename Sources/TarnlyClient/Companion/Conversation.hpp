#pragma once

#include <functional>

#include "TarnlyClient/Companion/ClientOptions.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"

namespace tarnly::client {

/// How to talk with the companion. Throws `UsageError` for a password file that is no good.
CompanionSession::Options sessionOptions(const ClientOptions& options);

/// What is to be talked about. Not itself a coroutine with captures: it calls one and hands it what it needs.
using Work = std::function<Task<>(CompanionSession& session)>;

/// Finds the companion, does `work` with it and says good-bye. Blocks until that is done; throws what `work`
/// threw, `UsageError` for a password file that is no good and `ClientError` where there is no companion.
void converse(const ClientOptions& options, const Work& work);

} // namespace tarnly::client

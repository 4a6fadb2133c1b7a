#include "TarnlyClient/Companion/Conversation.hpp"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <exception>

#include "TarnlyClient/Commands/PasswordFile.hpp"
#include "TarnlyClient/Companion/CompanionFinder.hpp"
#include "TarnlyPlatform/Net/WebSocketClient.hpp"

namespace tarnly::client {

CompanionSession::Options sessionOptions(const ClientOptions& options) {
    CompanionSession::Options result{{}, options.timeout};
    if (options.passwordFile) result.password = readPassword(*options.passwordFile);
    return result;
}

void converse(const ClientOptions& options, const Work& work) {
    const auto sessionSettings = sessionOptions(options);
    const auto companion = locateCompanion(options);

    boost::asio::io_context io(1);
    CompanionSession session(io.get_executor(), openWebSocket(io.get_executor(), companion.endpoint, "/"),
                             sessionSettings);
    std::exception_ptr failure;
    boost::asio::co_spawn(io, work(session), [&](std::exception_ptr error) {
        failure = error;
        session.close();
    });
    io.run();
    try {
        if (failure) std::rethrow_exception(failure);
    } catch (const SessionClosed&) {
        // As the person wished.
    }
}

} // namespace tarnly::client

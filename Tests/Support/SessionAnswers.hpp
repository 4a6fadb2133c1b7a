#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "TarnlyCore/Protocol/ProtocolSession.hpp"

namespace tarnly::test {

/// The whole answer, however it comes about.
inline Task<std::optional<std::string>> answerOf(std::shared_ptr<ProtocolSession> session,
                                                 std::string message) {
    auto answering = session->handleMessage(std::move(message));
    ProtocolSession::Answer answer;
    if (auto* present = std::get_if<ProtocolSession::Answer>(&answering)) {
        answer = std::move(*present);
    } else {
        answer = co_await std::move(std::get<Task<ProtocolSession::Answer>>(answering));
    }
    if (!answer) co_return std::nullopt;
    auto text = std::move(answer->text);
    bool goesOn = answer->nextPiece != nullptr;
    while (goesOn) {
        const auto piece = co_await session->makePiece(answer->nextPiece);
        text += piece;
        goesOn = !piece.empty();
    }
    co_return text;
}

} // namespace tarnly::test

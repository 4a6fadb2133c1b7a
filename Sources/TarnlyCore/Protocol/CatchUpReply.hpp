#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Recording/CatchUpWriter.hpp"
#include "TarnlyPlatform/Json/JsonWriter.hpp"

namespace tarnly {

/// The text of the reply to a "catch_up", in pieces: each is written when it is asked for. For one thread at
/// a time, whichever.
class CatchUpReply {
  public:
    /// About as long a piece is, in bytes.
    static constexpr std::size_t pieceSize = 1024 * 1024;

    /// To the request of that head: what is after `since`, in seconds, or all when it is absent.
    CatchUpReply(const TypeOnly& request, FlightRecorder::Snapshot recorded, std::optional<double> since);

    /// Empty behind the last one.
    std::string nextPiece();

    /// Whether there is no further piece.
    bool isWhole() const { return isWhole_; }

  private:
    JsonWriter writer_;
    CatchUpWriter data_;
    bool isWhole_ = false;
};

} // namespace tarnly

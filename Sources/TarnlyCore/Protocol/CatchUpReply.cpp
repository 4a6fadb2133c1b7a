#include "TarnlyCore/Protocol/CatchUpReply.hpp"

#include <utility>

namespace tarnly {

CatchUpReply::CatchUpReply(const TypeOnly& request, FlightRecorder::Snapshot recorded,
                           std::optional<double> since)
    : data_(std::move(recorded), since) {
    writer_.beginObject();
    writeField(writer_, "type", request.type);
    writeField(writer_, "req_id", request.reqId);
    writer_.key("data");
}

std::string CatchUpReply::nextPiece() {
    if (isWhole_) return {};
    isWhole_ = data_.writeUpTo(pieceSize, writer_);
    if (isWhole_) writer_.endObject();
    return writer_.takePiece();
}

} // namespace tarnly

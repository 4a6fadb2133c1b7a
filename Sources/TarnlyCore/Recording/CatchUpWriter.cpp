#include "TarnlyCore/Recording/CatchUpWriter.hpp"

#include "TarnlyCore/Recording/FiredEvent.hpp"

namespace tarnly {

bool CatchUpWriter::writeUpTo(std::size_t limit, JsonWriter& writer) {
    if (stage_ == Stage::begin) {
        writer.beginObject();
        writer.key("samples");
        writer.beginArray();
        stage_ = Stage::samples;
    }
    if (stage_ == Stage::samples) {
        if (!writeSamples(limit, writer)) return false;
        writer.endArray();
        writer.key("fired");
        writer.beginArray();
        stage_ = Stage::fired;
    }
    if (stage_ == Stage::fired) {
        if (!writeFired(limit, writer)) return false;
        writer.endArray();
        writer.endObject();
        stage_ = Stage::end;
    }
    return true;
}

bool CatchUpWriter::writeSamples(std::size_t limit, JsonWriter& writer) {
    while (writer.size() < limit) {
        if (!recorded_.samples.next(cursor_, since_, sample_)) return true;
        writeJson(writer, sample_);
    }
    return false;
}

bool CatchUpWriter::writeFired(std::size_t limit, JsonWriter& writer) {
    for (; firing_ < recorded_.fired.size(); ++firing_, place_ = 0) {
        const auto& fired = recorded_.fired[firing_];
        if (!(fired.elapsed() > since_)) continue;
        for (; place_ < fired.size(); ++place_) {
            if (writer.size() >= limit) return false;
            writeJson(writer, eventOf(fired, place_));
        }
    }
    return true;
}

} // namespace tarnly

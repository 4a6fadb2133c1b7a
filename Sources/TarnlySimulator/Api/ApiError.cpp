#include "TarnlySimulator/Api/ApiError.hpp"

#include "TarnlyPlatform/Json/JsonWriter.hpp"

namespace tarnly::simulator {

std::string errorBody(const ApiError& error) {
    JsonWriter writer;
    writer.beginObject();
    writer.key("error_code");
    writer.string(error.code());
    writer.key("error_message");
    writer.string(error.what());
    writer.endObject();
    return writer.take();
}

} // namespace tarnly::simulator

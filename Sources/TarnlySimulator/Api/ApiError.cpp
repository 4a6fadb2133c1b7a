#include "TarnlySimulator/Api/ApiError.hpp"

#include "TarnlyPlatform/Json/JsonWriter.hpp"

namespace tarnly::simulator {
namespace {

unsigned statusOf(WorldError::Case which) {
    switch (which) {
        case WorldError::Case::invalidDatarefId:
        case WorldError::Case::invalidCommandId:
            return 404;
        case WorldError::Case::datarefIsReadOnly:
            return 403;
        case WorldError::Case::invalidValue:
        case WorldError::Case::invalidIndex:
            break;
    }
    return 400;
}

} // namespace

ApiError::ApiError(const WorldError& error)
    : ApiError(statusOf(error.which()), std::string(error.name()), error.payload()) {}

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

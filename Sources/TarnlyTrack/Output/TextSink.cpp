#include "TarnlyTrack/Output/TextSink.hpp"

#include <cerrno>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track {
namespace {

TrackError cannotWrite(const std::filesystem::path& file, const std::error_code& why) {
    return TrackError(printable(file.string()) + " cannot be written: " + why.message());
}

std::error_code lastError() { return {errno, std::generic_category()}; }

} // namespace

void StreamSink::write(std::string_view text) {
    stream_.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!stream_) throw TrackError("the output cannot be written");
}

void StreamSink::finish() {
    if (!stream_.flush()) throw TrackError("the output cannot be written");
}

FileSink::FileSink(std::filesystem::path target) : target_(std::move(target)) {
    if (std::filesystem::is_directory(target_))
        throw cannotWrite(target_, std::make_error_code(std::errc::is_a_directory));
    try {
        made_ = NewFile::beside(target_);
    } catch (const std::system_error& error) {
        throw cannotWrite(target_, error.code());
    }
}

FileSink::~FileSink() {
    if (made_) removeFile(made_->path);
}

void FileSink::write(std::string_view text) {
    if (made_->file.write(text) != text.size()) throw cannotWrite(target_, lastError());
}

void FileSink::finish() {
    if (!made_->file.flush()) throw cannotWrite(target_, lastError());
    made_->file = {}; // some systems move no open file
    std::error_code error;
    std::filesystem::rename(made_->path, target_, error);
    if (error) throw cannotWrite(target_, error);
    made_.reset();
}

} // namespace tarnly::track

#include "TarnlyCore/Protocol/StatusQuery.hpp"

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/File.hpp"
#include "TarnlyPlatform/Net/LocalSocket.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {

std::filesystem::path statusSocketIn(const std::filesystem::path& dataFolder) {
    return dataFolder / "status.socket";
}

std::string askForStatus(const std::filesystem::path& dataFolder, std::chrono::milliseconds limit) {
    const auto folder = printable(std::filesystem::absolute(dataFolder).string());
    try {
        return askLocally(statusSocketIn(dataFolder), limit);
    } catch (const NetworkError& error) {
        if (error.which() == NetworkError::Case::connectionFailed) {
            if (const auto why = whyUnwritable(dataFolder)) {
                // One may run, and has no place to answer.
                throw StatusQueryError("no companion can tell of itself in the data folder " + folder + ": " +
                                       why.message() +
                                       "; make it one that you may write to, or name another by --data-dir");
            }
            throw StatusQueryError(
                "no companion runs on the data folder " + folder +
                "; start tarnly or tarnlyd, or name another folder by --data-dir; why tarnlyd "
                "does not stay is told by journalctl --user -u tarnlyd");
        }
        throw StatusQueryError("the companion on the data folder " + folder +
                               " does not answer; end it, and start it again");
    }
}

} // namespace tarnly

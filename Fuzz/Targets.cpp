#include "Fuzz/Targets.hpp"

#include <cstdio>
#include <cstdlib>

namespace tarnly::fuzz {

std::span<const Target> targets() {
    static const Target all[] = {{"web_socket_decoder", webSocketDecoder},
                                 {"request_head", requestHead},
                                 {"strangers_session", strangersSession},
                                 {"paired_session", pairedSession},
                                 {"json_number", jsonNumber},
                                 {"web_api_messages", webApiMessages},
                                 {"script", script},
                                 {"recording_log", recordingLog},
                                 {"settings", settings},
                                 {"desktop_entry", desktopEntry},
                                 {"nav_database", navDatabase},
                                 {"nav_text", navText},
                                 {"tolerances", tolerances}};
    return all;
}

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

} // namespace tarnly::fuzz

#include <libwebsockets.h>

#include <cstdio>
#include <string>
#include <string_view>

/// A server by a library of another make: pairs with everybody, and answers each `sim_info` as the companion
/// does. Only for standing beside the companion in `scripts/benchmark`. Prints its port, and serves until it
/// is ended.
namespace {

/// What waits for the socket to be writable, with the room in front that the library wants.
struct Session {
    unsigned char bytes[LWS_PRE + 256];
    std::size_t size;
};

void prepareReply(Session& session, std::string_view request) {
    const auto begin = request.find(R"("req_id":)");
    const auto id = begin == request.npos
                        ? "0"
                        : request.substr(begin + 9, request.find_first_of(",}", begin) - begin - 9);
    const bool isPair = request.find(R"("pair")") != request.npos;
    const auto reply =
        (isPair ? R"({"type":"pair","req_id":)" : R"({"type":"sim_info","req_id":)") + std::string(id) +
        (isPair ? R"(,"data":{"accepted":true}})" : R"(,"data":{"sim":"xplane","version":"12.4.0"}})");
    session.size = reply.copy(reinterpret_cast<char*>(session.bytes) + LWS_PRE, 256);
}

int onEvent(lws* connection, lws_callback_reasons reason, void* user, void* in, std::size_t size) {
    auto* session = static_cast<Session*>(user);
    if (reason == LWS_CALLBACK_RECEIVE) {
        prepareReply(*session, {static_cast<const char*>(in), size});
        lws_callback_on_writable(connection);
    } else if (reason == LWS_CALLBACK_SERVER_WRITEABLE && session->size > 0) {
        const auto written = lws_write(connection, session->bytes + LWS_PRE, session->size, LWS_WRITE_TEXT);
        if (written < 0) return -1;
        session->size = 0;
    }
    return 0;
}

} // namespace

int main() {
    lws_set_log_level(LLL_ERR, nullptr);
    lws_protocols protocols[2]{};
    protocols[0].name = "echo";
    protocols[0].callback = onEvent;
    protocols[0].per_session_data_size = sizeof(Session);
    protocols[0].rx_buffer_size = 4096;
    lws_context_creation_info info{};
    info.port = 0;
    info.iface = "127.0.0.1";
    info.protocols = protocols;
    lws_context* context = lws_create_context(&info);
    if (context == nullptr) return 1;
    std::printf("Listening on port %d, for echoes.\n",
                lws_get_vhost_listen_port(lws_get_vhost_by_name(context, "default")));
    std::fflush(stdout);
    while (lws_service(context, 0) >= 0) {
    }
    lws_context_destroy(context);
}

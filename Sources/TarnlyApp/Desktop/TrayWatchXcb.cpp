#include "TarnlyApp/Desktop/TrayWatch.hpp"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace tarnly {
namespace {

xcb_connection_t* x11Connection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 == nullptr ? nullptr : x11->connection();
}

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

} // namespace

bool TrayWatch::canHaveXembedTray() { return x11Connection() != nullptr; }

// Whether somebody owns the selection by which trays make themselves known (System Tray Protocol).
bool TrayWatch::hasXembedTray() {
    auto* x11 = x11Connection();
    int display = 0;
    int screen = 0;
    char* host = nullptr;
    xcb_parse_display(nullptr, &host, &display, &screen);
    std::free(host);
    const auto name = "_NET_SYSTEM_TRAY_S" + std::to_string(screen);
    const auto asked = xcb_intern_atom(x11, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const auto atom = owned(xcb_intern_atom_reply(x11, asked, nullptr));
    if (!atom) return false;
    const auto owner =
        owned(xcb_get_selection_owner_reply(x11, xcb_get_selection_owner(x11, atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

} // namespace tarnly

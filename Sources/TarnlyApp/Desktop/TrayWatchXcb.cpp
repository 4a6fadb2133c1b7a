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

xcb_atom_t atomOf(xcb_connection_t* x11, const std::string& name) {
    const auto asked = xcb_intern_atom(x11, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const auto atom = owned(xcb_intern_atom_reply(x11, asked, nullptr));
    return atom ? atom->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

/// Who owns the selection by which trays make themselves known (System Tray Protocol).
xcb_window_t trayOwner(xcb_connection_t* x11) {
    int display = 0;
    int screen = 0;
    char* host = nullptr;
    xcb_parse_display(nullptr, &host, &display, &screen);
    std::free(host);
    const auto selection = atomOf(x11, "_NET_SYSTEM_TRAY_S" + std::to_string(screen));
    const auto owner =
        owned(xcb_get_selection_owner_reply(x11, xcb_get_selection_owner(x11, selection), nullptr));
    return owner ? owner->owner : static_cast<xcb_window_t>(XCB_NONE);
}

} // namespace

bool TrayWatch::canHaveXembedTray() { return x11Connection() != nullptr; }

bool TrayWatch::hasXembedTray() { return trayOwner(x11Connection()) != XCB_NONE; }

// The first three of twelve numbers: red, green and blue of what is neither error, warning nor success, of 16
// bits each.
std::optional<QColor> TrayWatch::xembedSymbolColour() {
    constexpr std::uint32_t parts = 3;
    auto* x11 = x11Connection();
    const auto owner = trayOwner(x11);
    if (owner == XCB_NONE) return std::nullopt;
    const auto property = atomOf(x11, "_NET_SYSTEM_TRAY_COLORS");
    const auto asked = xcb_get_property(x11, 0, owner, property, XCB_ATOM_CARDINAL, 0, parts);
    const auto told = owned(xcb_get_property_reply(x11, asked, nullptr));
    constexpr auto wanted = static_cast<int>(parts * sizeof(std::uint32_t));
    if (!told || told->format != 32 || xcb_get_property_value_length(told.get()) != wanted)
        return std::nullopt;
    const auto* numbers = static_cast<const std::uint32_t*>(xcb_get_property_value(told.get()));
    const auto part = [numbers](int index) { return static_cast<int>(numbers[index] >> 8 & 0xFF); };
    return QColor(part(0), part(1), part(2));
}

} // namespace tarnly

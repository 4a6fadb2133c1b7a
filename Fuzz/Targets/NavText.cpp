#include "TarnlyCore/NavSource/NavText.hpp"

#include <algorithm>
#include <vector>

#include "Fuzz/Targets.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::fuzz {
namespace {

struct Reading {
    std::vector<NavEntry> entries{};
    std::size_t unreadable = 0;
    bool hasHeader = false;

    bool operator==(const Reading&) const = default;
};

Reading readInPieces(NavFileKind kind, std::string_view bytes, std::size_t size) {
    Reading reading;
    NavText text(kind, [&](NavEntry entry) { reading.entries.push_back(std::move(entry)); });
    while (!bytes.empty()) {
        const auto piece = bytes.substr(0, size);
        bytes.remove_prefix(piece.size());
        text.feed(piece);
    }
    text.finish();
    reading.unreadable = text.unreadable();
    reading.hasHeader = text.header().has_value();
    return reading;
}

bool isSound(const NavEntry& entry) {
    const auto [latitude, longitude] = entry.place;
    const bool isOnTheGlobe = latitude >= -90 && latitude <= 90 && longitude >= -180 && longitude <= 180;
    return isOnTheGlobe && !entry.ident.empty() && isWellFormedUtf8(entry.ident) &&
           isWellFormedUtf8(entry.name) && entry.ident.find('\0') == std::string::npos;
}

} // namespace

/// The first byte says of which kind the file is, the second in what pieces it comes.
void navText(std::string_view bytes) {
    Choices choices(bytes);
    constexpr NavFileKind kinds[] = {NavFileKind::fixes, NavFileKind::navaids, NavFileKind::airports};
    const auto kind = choices.oneOf(kinds);
    const auto size = 1 + choices.below(255);
    const auto text = choices.rest();
    const auto whole = readInPieces(kind, text, std::max<std::size_t>(text.size(), 1));
    require(readInPieces(kind, text, size) == whole, "the pieces make no difference");
    require(std::ranges::all_of(whole.entries, isSound), "what is read makes sense");
    require(whole.hasHeader || whole.entries.empty(), "without a header nothing is read");
    const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
    require(whole.entries.size() + whole.unreadable <= lines, "no line is read twice");
}

} // namespace tarnly::fuzz

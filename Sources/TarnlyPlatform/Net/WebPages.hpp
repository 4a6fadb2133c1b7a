#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tarnly {

/// What a browser may show of a page and have the page do (the header Content-Security-Policy): styles,
/// scripts and pictures of this port, no frames, no scripts within the page, and WebSockets to here. Some
/// browsers hold "self" not to include these.
inline constexpr std::string_view pagePolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self' ws:; "
    "manifest-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

/// A file that a port serves beside its WebSockets. A plain value.
struct WebPage {
    enum class Coding : std::uint8_t { none, gzip };
    /// Whether a browser may keep it: what has a name of its own for each content need never be asked for
    /// again.
    enum class Keep : std::uint8_t { no, always };

    /// "text/html; charset=utf-8"
    std::string contentType;
    std::string body;
    /// Of the body. Who does not take gzip gets the text all the same.
    Coding coding = Coding::none;
    Keep keep = Keep::no;
    /// The text, once somebody has asked for it who does not take gzip: unpacking it for each of a crowd
    /// would hold up the lesson. Belongs to the network thread.
    mutable std::optional<std::string> decoded{};
};

/// The files of a port by their paths, "/" or "/reach.js". A plain value, constant once it is served.
class WebPages {
  public:
    void add(std::string path, WebPage page) { pages_[std::move(path)] = std::move(page); }

    /// The one that `target`, a path with or without a query, asks for; null where there is none.
    const WebPage* find(std::string_view target) const {
        const auto found = pages_.find(target.substr(0, target.find('?')));
        return found == pages_.end() ? nullptr : &found->second;
    }

  private:
    std::map<std::string, WebPage, std::less<>> pages_;
};

} // namespace tarnly

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlySimulator/Api/CatalogueText.hpp"
#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// The HTTP side of the web interface, without the sockets. Belongs to the thread of its world, which
/// outlives it.
class HttpApi {
  public:
    explicit HttpApi(World& world) : world_(world), catalogues_(world) {}

    /// Absent lets a WebSocket upgrade go ahead.
    std::optional<HttpResponse> answer(const HttpRequest& request, bool isUpgrade);

  private:
    using Path = std::vector<std::string_view>;

    HttpResponse plainAnswer(const HttpRequest& request);
    HttpResponse get(const Path& path, std::string_view query);
    HttpResponse filteredDatarefs(std::string_view query) const;
    HttpResponse filteredCommands(std::string_view query) const;
    HttpResponse datarefCount() const;
    HttpResponse datarefValue(std::string_view id) const;
    HttpResponse setDataref(std::string_view id, std::string_view query, const std::string& body);
    HttpResponse activate(std::string_view id, const std::string& body);

    OnOneThread thread_;
    World& world_;
    CatalogueText catalogues_;
};

/// The page for a path that leads nowhere: HTML with status 404.
HttpResponse notFoundPage();

/// All values of `key` in a URL's query ("a=1&b=2"), percent-decoded, in their order.
std::vector<std::string> queryValues(std::string_view query, std::string_view key);

} // namespace tarnly::simulator

#include "TarnlyApp/ReachPage.hpp"

#include <string>

namespace tarnly {
namespace {

/// Its words hold without the script as well.
constexpr auto page = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Tarnly</title>
<link rel="stylesheet" href="/reach.css">
<script src="/reach.js" defer></script>
</head>
<body>
<main>
<h1>Tarnly</h1>
<p>This device reaches the companion, which connects a flight simulator with your training application.</p>
<p>In the application, enter:</p>
<p><code id="address">the address above, with ws:// in place of http://</code></p>
<p id="works" role="status">Whether a connection can be opened from here is tried by a script, which this
browser does not run.</p>
</main>
</body>
</html>
)";

constexpr auto style = R"(:root { color-scheme: light dark; }
body { font: 1.1rem/1.5 system-ui, sans-serif; margin: 0; }
main { max-width: 32rem; margin: 0 auto; padding: 1.5rem; }
code { font-size: 1.3rem; overflow-wrap: anywhere; user-select: all; }
#works.fine::before { content: "\2713  "; }
#works.amiss::before { content: "\26a0  "; }
)";

constexpr auto script = R"("use strict";
(function () {
    var address = "ws://" + location.host;
    var works = document.getElementById("works");
    var isTold = false;
    function tell(kind, text) {
        if (isTold) return;
        isTold = kind !== "";
        works.className = kind;
        works.textContent = text;
    }
    function fail() {
        tell("amiss", "No connection can be opened from here: this browser, a proxy or a content filter is in " +
            "the way. The application may get through; try it.");
    }
    document.getElementById("address").textContent = address;
    tell("", "Trying to open a connection…");
    try {
        var socket = new WebSocket(address);
        socket.onopen = function () {
            tell("fine", "A connection can be opened from here.");
            socket.close();
        };
        socket.onerror = fail;
        setTimeout(function () {
            fail();
            socket.close();
        }, 10000);
    } catch (refused) {
        fail();
    }
})();
)";

} // namespace

WebPages reachPages() {
    WebPages pages;
    pages.add("/", {"text/html; charset=utf-8", page});
    pages.add("/reach.css", {"text/css; charset=utf-8", style});
    pages.add("/reach.js", {"text/javascript; charset=utf-8", script});
    return pages;
}

} // namespace tarnly

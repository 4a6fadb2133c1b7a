#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>

#include "TarnlyPlatform/Dnssd/ServiceBrowser.hpp"
#include "TarnlyPlatform/Dnssd/ServicePublisher.hpp"

/// tarnly_dnssd_publish publish NAME TYPE PORT [KEY VALUE]...
///     Publishes until its standard input ends, and prints the published name whenever it changes.
/// tarnly_dnssd_publish states NAME TYPE PORT
///     The same, but prints how the publication stands whenever that changes.
/// tarnly_dnssd_publish browse TYPE
///     Prints a line for each service found: name, address, port.
namespace tarnly {
namespace {

/// Whether standard input ends within `milliseconds`.
bool inputEnds(int milliseconds) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    char byte = 0;
    return ::poll(&input, 1, milliseconds) > 0 && ::read(STDIN_FILENO, &byte, 1) <= 0;
}

int publish(int argc, char** argv) {
    PublishedService service{argv[2], argv[3], static_cast<std::uint16_t>(std::atoi(argv[4])), {}};
    for (int i = 5; i + 1 < argc; i += 2)
        service.txt.emplace_back(argv[i], argv[i + 1]);
    ServicePublisher publisher(std::move(service));
    std::string shown;
    while (!inputEnds(20)) {
        const auto name = publisher.publishedName();
        if (name == shown) continue;
        shown = name;
        std::cout << "published: " << shown << std::endl;
    }
    std::cout << "withdrawing" << std::endl;
    return 0;
}

std::string describe(const PublicationState& state) {
    switch (state.kind) {
        case PublicationState::Kind::publishing:
            return "publishing";
        case PublicationState::Kind::published:
            return "published: " + state.text.text();
        case PublicationState::Kind::noDaemon:
        case PublicationState::Kind::refused:
            return "not published: " + state.text.text();
    }
    return "?";
}

int showStates(char** argv) {
    const ServicePublisher publisher({argv[2], argv[3], static_cast<std::uint16_t>(std::atoi(argv[4])), {}});
    std::string shown;
    while (!inputEnds(20)) {
        const auto state = describe(publisher.state());
        if (state == shown) continue;
        shown = state;
        std::cout << shown << std::endl;
    }
    return 0;
}

int browse(const std::string& type) {
    for (const auto& service : browseServices(type, std::chrono::seconds(30))) {
        std::cout << service.name << '\t' << service.address << '\t' << service.port << '\n';
    }
    return 0;
}

int run(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "publish" && argc >= 5) return publish(argc, argv);
    if (mode == "states" && argc == 5) return showStates(argv);
    if (mode == "browse" && argc == 3) return browse(argv[2]);
    return 2;
}

} // namespace
} // namespace tarnly

int main(int argc, char** argv) {
    try {
        return tarnly::run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}

#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

/// What is fed arbitrary bytes, and what must hold whatever they are. Each target runs one input, aborts
/// where something does not hold, and knows nothing of who feeds it: a fuzzer, or the test that replays
/// `Corpus`. One thread at a time.
namespace tarnly::fuzz {

/// A message's bytes of one direction of a WebSocket, and whatever we send.
void webSocketDecoder(std::string_view bytes);
/// The head of what comes to the companion's port.
void requestHead(std::string_view bytes);
/// The messages of a client that has not paired, one a line, and of one that has.
void strangersSession(std::string_view bytes);
void pairedSession(std::string_view bytes);
/// Numbers in JSON, against the C library's reading.
void jsonNumber(std::string_view bytes);
/// What the simulator's web API answers.
void webApiMessages(std::string_view bytes);
/// A script and a flight, against the plain walks of the tests.
void script(std::string_view bytes);
/// The log of a recording.
void recordingLog(std::string_view bytes);
/// The file with the settings.
void settings(std::string_view bytes);
/// An entry of the desktop, read and written.
void desktopEntry(std::string_view bytes);
/// The file of a navigation database.
void navDatabase(std::string_view bytes);
/// A file of the simulator's navigation data.
void navText(std::string_view bytes);
/// A file of tolerances, and a recording that is graded by it.
void tolerances(std::string_view bytes);

struct Target {
    std::string name;
    void (*run)(std::string_view bytes);
};

/// All of them, by the names of their folders in `Corpus`.
std::span<const Target> targets();

/// Aborts, with `what`, unless `condition` holds.
void require(bool condition, const char* what);

/// Takes choices from an input, front to back; zeros when it has come to its end.
class Choices {
  public:
    explicit Choices(std::string_view bytes) : bytes_(bytes) {}

    bool isAtEnd() const { return bytes_.empty(); }

    unsigned byte() {
        if (bytes_.empty()) return 0;
        const auto first = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        return first;
    }

    /// 0 to `end` - 1, of at most 256.
    std::size_t below(std::size_t end) { return byte() % end; }

    template <typename T, std::size_t size>
    T oneOf(const T (&values)[size]) {
        return values[below(size)];
    }

    std::string_view rest() const { return bytes_; }

  private:
    std::string_view bytes_;
};

} // namespace tarnly::fuzz

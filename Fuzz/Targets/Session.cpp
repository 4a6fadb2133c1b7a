#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Fuzz/Targets.hpp"
#include "Support/FakeBackend.hpp"
#include "Support/RunTask.hpp"
#include "Support/SessionAnswers.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/Protocol/ProtocolSession.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::fuzz {
namespace {

/// Lets time pass instead of waiting: guesses that are answered late cost nothing here.
class HastyClock final : public Clock {
  public:
    TimePoint now() const override { return now_; }
    Task<> sleepFor(Duration duration) override {
        auto executor = co_await boost::asio::this_coro::executor;
        co_await boost::asio::post(executor, boost::asio::use_awaitable);
        now_ += duration;
    }

  private:
    TimePoint now_{};
};

/// What one companion's sessions share; it outlives the inputs, as starting threads takes time.
struct Shared {
    boost::asio::io_context io;
    SystemClock clock;
    HastyClock hastyClock;
    WorkerPool workers{1};
    std::shared_ptr<test::FakeBackend> backend = std::make_shared<test::FakeBackend>();
    /// In memory only: there can be no such folder.
    std::shared_ptr<FlightRecorder> recording = std::make_shared<FlightRecorder>("/dev/null/none", clock);
    std::shared_ptr<LoadedScript> loadedScript = std::make_shared<LoadedScript>();

    Shared() {
        backend->datarefs = {{"a", 1}, {"b[2]", -0.5}};
        backend->flights = {{"Pattern 1", "/s/Pattern 1.sit", {}}};
        backend->failures = {{"runCommand fail", "commandFailed(\"fail\")"}};
    }

    std::shared_ptr<ProtocolSession> newSession(std::optional<std::string> password) {
        auto pairing = std::make_shared<PairingManager>(std::move(password));
        const MakeFixResolver makeFixResolver = [](const auto&) {
            return [](const std::string& ident) {
                return ident == "KSFO" ? std::optional(Coordinate{37.6, -122.4}) : std::nullopt;
            };
        };
        return std::make_shared<ProtocolSession>(ProtocolSession::Services{
            std::move(pairing), std::make_shared<PairingGuard>(io.get_executor(), hastyClock), backend,
            recording, loadedScript, makeFixResolver, std::make_shared<Allowance>(ProtocolLimits::namesInAll),
            workers, workers});
    }

    std::optional<std::string> answer(const std::shared_ptr<ProtocolSession>& session, std::string text) {
        backend->calls.clear();
        return test::runTask(io, test::answerOf(session, std::move(text)));
    }
};

Shared& shared() {
    static Shared all;
    return all;
}

std::string typeOf(const std::string& answer) {
    const auto json = parseJson(answer);
    require(json.is_object() && json.get_object().contains("type"), "an answer has a type");
    return std::string(json.at("type").as_string());
}

/// Says whether the connection goes on.
bool talk(const std::shared_ptr<ProtocolSession>& session, std::string_view message) {
    const bool wasPaired = session->isPaired();
    const auto answer = shared().answer(session, std::string(message));
    if (!answer) {
        require(!wasPaired, "who has paired is answered");
        return false;
    }
    const auto type = typeOf(*answer);
    if (!wasPaired) {
        require(type == "pair", "a stranger learns of pairing only");
        require(shared().backend->calls.empty(), "a stranger asks nothing of the simulator");
    }
    return true;
}

void talkLineByLine(const std::shared_ptr<ProtocolSession>& session, std::string_view lines) {
    bool goesOn = true;
    while (goesOn && !lines.empty()) {
        const auto end = lines.find('\n');
        goesOn = talk(session, lines.substr(0, end));
        lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 1);
    }
}

} // namespace

void strangersSession(std::string_view bytes) {
    const auto session = shared().newSession("secret that no fuzzer finds");
    talkLineByLine(session, bytes);
    require(!session->isPaired(), "nobody pairs without the password");
}

void pairedSession(std::string_view bytes) {
    const auto session = shared().newSession(std::nullopt);
    require(shared().answer(session, R"({"type":"pair"})").has_value() && session->isPaired(),
            "it has paired");
    talkLineByLine(session, bytes);
}

} // namespace tarnly::fuzz

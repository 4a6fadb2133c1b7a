#pragma once

#include <boost/asio/co_spawn.hpp>
#include <map>
#include <optional>

#include "TarnlyXPlane/BackendFixture.hpp"
#include "TarnlyXPlane/Link/LinkFailure.hpp"
#include "TarnlyXPlane/Link/WebApiLink.hpp"

namespace tarnly::test {

/// A link to a simulator in memory, which knows the datarefs "sim/x" (12) and "sim/a" (13) and the command
/// "sim/c" (818).
class LinkFixture : public BackendFixture {
  protected:
    /// An operation of the link under way.
    struct Waiting {
        bool isDone = false;
        std::exception_ptr error;

        bool hasSucceeded() const { return isDone && !error; }

        /// Of that kind.
        template <typename Error>
        bool hasFailedWith() const {
            if (!isDone || !error) return false;
            try {
                std::rethrow_exception(error);
            } catch (const Error&) {
                return true;
            } catch (...) {
                return false;
            }
        }
    };

    LinkFixture() {
        backend.reset();
        transport->datarefs = {{"sim/x", 12}, {"sim/a", 13}};
        transport->commands = {{"sim/c", 818}};
        transport->answer = [this](const HttpRequest& request) -> std::optional<HttpResponse> {
            const auto found = answers.find(request.target);
            if (found == answers.end()) return std::nullopt;
            return found->second;
        };
        answers["/api/v2/datarefs/count"] = httpResponse(200, R"({"data":2})");
    }

    void TearDown() override {
        link->close();
        BackendFixture::TearDown();
    }

    void connect() { run(link->ensureConnected()); }

    void watch() {
        link->watch([this] { ++changes; });
        VirtualClock::settle(io);
    }

    template <typename T>
    std::shared_ptr<Waiting> begin(Task<T> task) {
        auto waiting = std::make_shared<Waiting>();
        if constexpr (std::is_void_v<T>) {
            boost::asio::co_spawn(io, std::move(task), [waiting](std::exception_ptr error) {
                waiting->isDone = true;
                waiting->error = error;
            });
        } else {
            boost::asio::co_spawn(io, std::move(task), [waiting](std::exception_ptr error, T) {
                waiting->isDone = true;
                waiting->error = error;
            });
        }
        VirtualClock::settle(io);
        return waiting;
    }

    /// How often that has been requested: "GET /api/v2/datarefs".
    int requests(const std::string& line) const {
        const auto lines = transport->exchangeLines();
        return static_cast<int>(std::ranges::count(lines, line));
    }

    int datarefCatalogues() const { return requests("GET /api/v2/datarefs"); }
    int commandCatalogues() const { return requests("GET /api/v2/commands"); }
    int questions() const { return requests("GET /api/v2/datarefs/count"); }

    void advance(Clock::Duration duration) { clock.advance(io, duration); }

    FakeWebSocket& webSocket() const { return *transport->webSocket; }

    /// By target.
    std::map<std::string, HttpResponse> answers;
    int changes = 0;
    std::shared_ptr<WebApiLink> link = std::make_shared<WebApiLink>(
        io.get_executor(), Endpoint{"127.0.0.1", 8086}, transport, clock, workers);
};

} // namespace tarnly::test

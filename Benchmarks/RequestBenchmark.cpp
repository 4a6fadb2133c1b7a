#include <benchmark/benchmark.h>

#include <boost/asio/io_context.hpp>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "Support/FakeBackend.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/Protocol/ProtocolSession.hpp"

/// What a session does for a plain request, from the text of the request to that of the reply.
namespace tarnly {
namespace {

/// A paired session whose simulator answers at once.
class Conversation {
  public:
    Conversation() { session_->handleMessage(R"({"type":"pair"})"); }

    std::string reply(const std::string& request) {
        auto answering = session_->handleMessage(request);
        backend_->calls.clear();
        return std::get<ProtocolSession::Answer>(answering).value().text;
    }

  private:
    WorkerPool workers_{1};
    test::TemporaryFolder folder_;
    test::VirtualClock clock_;
    std::shared_ptr<test::FakeBackend> backend_ = std::make_shared<test::FakeBackend>();
    boost::asio::io_context io_;
    std::shared_ptr<ProtocolSession> session_ = std::make_shared<ProtocolSession>(ProtocolSession::Services{
        std::make_shared<PairingManager>(std::nullopt),
        std::make_shared<PairingGuard>(io_.get_executor(), clock_), backend_,
        std::make_shared<FlightRecorder>(folder_.path(), clock_), std::make_shared<LoadedScript>(),
        [](const auto&) { return [](const std::string&) { return std::optional<Coordinate>(); }; },
        std::make_shared<Allowance>(ProtocolLimits::namesInAll), workers_, workers_});
};

void answerRequest(benchmark::State& state, const std::string& request) {
    Conversation conversation;
    for (auto _ : state)
        benchmark::DoNotOptimize(conversation.reply(request));
}

void answerSimInfo(benchmark::State& state) {
    answerRequest(state, R"({"type":"sim_info","req_id":100000})");
}

void answerUnknownType(benchmark::State& state) { answerRequest(state, R"({"type":"?","req_id":100000})"); }

BENCHMARK(answerSimInfo);
BENCHMARK(answerUnknownType);

} // namespace
} // namespace tarnly

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <stdexcept>
#include <thread>

#include "Load/Client.hpp"
#include "Load/Report.hpp"
#include "Support/FakeBackend.hpp"
#include "Support/RunTask.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/CompanionHost.hpp"
#include "TarnlyCore/Recording/Recordings.hpp"

/// What a long recording costs those who ask for it over a socket, and the others: nobody can wait for ten
/// hours of flight, so the recording is filled by hand, and all else is the companion's core as it is.
namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// What the main thread's heap holds. Resident memory would not tell: it does not shrink between two
/// recordings.
double heapKibibytes() {
    const auto heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd) / 1024;
}

/// A core that listens, with a recording of so many samples in memory, and a thread that runs it.
class Companion {
  public:
    explicit Companion(std::int64_t samples)
        : host_(io_.get_executor(), workers_, clock_, backend_, configuration()) {
        const double before = heapKibibytes();
        host_.recording().start();
        for (std::int64_t i = 0; i < samples; ++i)
            host_.recording().recordSample(test::fullSampleAt(0.5001 * static_cast<double>(i)));
        host_.recording().stop();
        memory_ = heapKibibytes() - before;
        test::runTask(io_, host_.start());
        port_ = host_.advertiser().advertisedPort().value();
        io_.restart();
        thread_ = std::thread([this] { io_.run(); });
    }

    ~Companion() {
        boost::asio::post(io_, [this] {
            host_.stop();
            io_.stop();
        });
        thread_.join();
    }

    std::uint16_t port() const { return port_; }

    /// What the recording takes, in KiB.
    double memory() const { return memory_; }

  private:
    CompanionHost::Configuration configuration() {
        CompanionHost::Configuration result;
        result.recordingDirectory = folder_.write("plain", "") / "Recordings"; // no file can be written there
        result.instanceName = "benchmark";
        result.simKind = "xplane";
        result.appVersion = TARNLY_VERSION;
        result.publish = nullptr;
        return result;
    }

    const test::TemporaryFolder folder_;
    boost::asio::io_context io_;
    WorkerPool workers_;
    SystemClock clock_;
    const std::shared_ptr<test::FakeBackend> backend_ = std::make_shared<test::FakeBackend>();
    CompanionHost host_; // depends-on: folder_, io_, workers_, clock_, backend_
    std::uint16_t port_ = 0;
    double memory_ = 0;
    std::thread thread_;
};

/// The companion with a recording of so many samples, the same one as long as no other is wanted: the library
/// calls a benchmark several times, and filling takes longer than measuring.
const Companion& companionWith(std::int64_t samples) {
    static std::int64_t present = 0;
    static std::unique_ptr<Companion> companion;
    if (!companion || present != samples) {
        companion.reset();
        companion = std::make_unique<Companion>(samples);
        present = samples;
    }
    return *companion;
}

std::size_t catchUp(load::Client& client) {
    const auto reply = client.request(R"({"type":"catch_up","req_id":7})", 7);
    if (!reply.starts_with(R"({"type":"catch_up")") || !reply.ends_with("}}"))
        throw std::runtime_error("no recording");
    return reply.size();
}

/// From the request to the reply's last byte at the client.
void recordingComesOverASocket(benchmark::State& state) {
    const auto& companion = companionWith(state.range());
    load::Client client(companion.port());
    std::size_t bytes = 0;
    for (auto _ : state)
        bytes = catchUp(client);
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["recording_kib"] = companion.memory();
}

/// The round trips of one client, one every two milliseconds, while another catches up again and again or not
/// at all (`range(1)`). The counters are in microseconds; a trip counts from when it was due.
void othersAskBesideACatchUp(benchmark::State& state) {
    constexpr std::chrono::milliseconds pace(2);
    const auto& companion = companionWith(state.range(0));
    std::atomic<bool> isDone = state.range(1) == 0;
    std::thread neighbour([&] {
        load::Client client(companion.port());
        while (!isDone)
            catchUp(client);
    });
    load::Client client(companion.port());
    std::vector<double> microseconds;
    auto due = SteadyClock::now();
    for (auto _ : state) {
        due += pace;
        std::this_thread::sleep_until(due);
        client.request(load::simInfoRequest(1), 1);
        microseconds.push_back(std::chrono::duration<double, std::micro>(SteadyClock::now() - due).count());
    }
    isDone = true;
    neighbour.join();
    state.counters["p50_us"] = load::quantile(microseconds, 0.5);
    state.counters["p99_us"] = load::quantile(microseconds, 0.99);
    state.counters["max_us"] = load::quantile(microseconds, 1);
}

constexpr int minute = 120, hour = 60 * minute;

BENCHMARK(recordingComesOverASocket)
    ->ArgName("samples")
    ->Arg(minute)
    ->Arg(10 * minute)
    ->Arg(hour)
    ->Arg(3 * hour)
    ->Arg(10 * hour)
    ->Arg(24 * hour)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(othersAskBesideACatchUp)
    ->ArgNames({"samples", "catching_up"})
    ->Args({10 * hour, 0})
    ->Args({10 * hour, 1})
    ->UseRealTime()
    ->Iterations(1500)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tarnly

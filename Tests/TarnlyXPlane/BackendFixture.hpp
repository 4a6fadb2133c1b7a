#pragma once

#include <gtest/gtest.h>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyXPlane/FakeTransport.hpp"
#include "TarnlyXPlane/XPlaneBackend.hpp"

namespace tarnly::test {

using namespace std::chrono_literals;

/// A backend with a simulator in memory and a clock that the test turns. Proves at the end that closing the
/// backend leaves nothing running.
class BackendFixture : public testing::Test {
  protected:
    /// An operation under way.
    struct Pending {
        bool isDone = false;
        std::exception_ptr error;
        double value = 0;
    };

    BackendFixture() { makeBackend(); }

    void makeBackend() {
        const Endpoint endpoint{"127.0.0.1", 8086};
        backend = std::make_shared<XPlaneBackend>(io.get_executor(), endpoint, transport, clock, workers);
    }

    void TearDown() override {
        if (backend) backend->close();
        // A worker may need a moment to let go of what it has delivered.
        io.restart();
        io.run_for(30s);
        EXPECT_TRUE(io.stopped()) << "something still runs";
    }

    template <typename T>
    T run(Task<T> task) {
        return clock.run(io, std::move(task));
    }

    std::shared_ptr<Pending> start(Task<double> task) {
        auto pending = std::make_shared<Pending>();
        boost::asio::co_spawn(io, std::move(task), [pending](std::exception_ptr error, double value) {
            pending->isDone = true;
            pending->error = error;
            pending->value = value;
        });
        VirtualClock::settle(io);
        return pending;
    }

    /// What `task` fails with; throws when it does not.
    template <typename Error, typename T>
    Error failureOf(Task<T> task) {
        try {
            run(std::move(task));
        } catch (const Error& error) {
            return error;
        }
        throw std::logic_error("the operation succeeded");
    }

    /// Connects, by a write to the dataref "sim/connect" that is then forgotten.
    void connect() {
        transport->datarefs.emplace("sim/connect", 1);
        run(backend->setDataref("sim/connect", 0, std::nullopt));
        transport->webSocket->sent.clear();
    }

    void deliverValues(const std::map<std::int64_t, std::string>& values) {
        transport->webSocket->deliverValues(values);
        VirtualClock::settle(io);
    }

    const std::vector<boost::json::value>& sent() const { return transport->webSocket->sent; }

    /// "params.datarefs" of the message `number` (from 0) to the simulator.
    boost::json::value sentDatarefs(std::size_t number) const {
        return sent().at(number).at("params").at("datarefs");
    }

    boost::asio::io_context io;
    VirtualClock clock;
    WorkerPool workers{1};
    std::shared_ptr<FakeTransport> transport = std::make_shared<FakeTransport>(io.get_executor(), clock);
    std::shared_ptr<XPlaneBackend> backend;
};

} // namespace tarnly::test

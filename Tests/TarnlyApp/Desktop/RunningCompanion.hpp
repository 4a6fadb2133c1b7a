#pragma once

#include <gtest/gtest.h>

#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/RuntimeModel.hpp"

namespace tarnly::test {

constexpr int patienceMilliseconds = 60'000;

/// A companion that runs on a thread of its own, without a simulator, once it is started.
class RunningCompanionTest : public testing::Test {
  protected:
    ~RunningCompanionTest() override {
        runtime.end();
        if (network.joinable()) network.join();
    }

    /// And waits until it listens and has looked for its simulator.
    void start();

    const TemporaryFolder folder;
    SettingsStore store{folder.path() / "settings.json", nullptr};
    CompanionRuntime runtime{store, options()};
    RuntimeModel model{runtime};
    std::thread network;

  private:
    CompanionOptions options() const {
        CompanionOptions result;
        result.dataFolder = folder.path();
        result.simulatorPort = 1;
        result.advertises = false;
        result.port = 0;
        return result;
    }
};

} // namespace tarnly::test

#include "TarnlyApp/Desktop/RunningCompanion.hpp"

#include <QTest>

namespace tarnly::test {

void RunningCompanionTest::start() {
    runtime.start();
    network = std::thread([this] { runtime.run(); });
    const auto isUp = [this] { return model.activity().stage && model.activity().port && model.port(); };
    ASSERT_TRUE(QTest::qWaitFor(isUp, patienceMilliseconds));
}

} // namespace tarnly::test

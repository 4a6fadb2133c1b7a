#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "TarnlyCore/Script/RandomFlight.hpp"
#include "TarnlyCore/Script/ReferenceEngine.hpp"
#include "TarnlyCore/Script/TriggerEngine.hpp"

namespace tarnly {
namespace {

std::optional<Coordinate> fixPosition(const std::string& ident) {
    static const std::map<std::string, Coordinate> positions = {
        {"KSFO", {0, 0}}, {"STRASSE", {1, 1}}, {"POLE", {90, 0}}};
    const auto found = positions.find(ident);
    return found == positions.end() ? std::nullopt : std::optional(found->second);
}

/// NaN equals NaN here, unlike in a comparison of the records.
std::string described(const std::vector<FiredTrigger>& triggers) {
    std::ostringstream out;
    for (const auto& fired : triggers) {
        out << fired.triggerId << ' ' << fired.title << ' ' << fired.actionKind << ' '
            << encodeJson(fired.action) << ' ' << fired.elapsed << ' ' << fired.lat.value_or(-1000) << ' '
            << fired.lon.value_or(-1000) << '\n';
    }
    return out.str();
}

std::string described(const std::vector<ArmedTrigger>& triggers) {
    std::string out;
    for (const auto& trigger : triggers)
        out += trigger.id + ' ' + trigger.name + '\n';
    return out;
}

/// The engine and the reference side by side.
class Pair {
  public:
    explicit Pair(const std::vector<ArmedTrigger>& script)
        : engine_(script, fixPosition), reference_(script, fixPosition) {
        EXPECT_EQ(engine_.unresolvedFixes(), reference_.unresolvedFixes());
        EXPECT_EQ(described(engine_.waiting()), described(script));
    }

    void evaluate(const TriggerSample& sample) {
        const auto fired = engine_.evaluate(sample).described();
        EXPECT_EQ(described(fired), described(reference_.evaluate(sample)));
        EXPECT_EQ(described(engine_.fired()), described(reference_.fired()));
        EXPECT_EQ(described(engine_.waiting()), described(reference_.waiting()));
        firings_ += fired.size();
        mostWalks_ = std::max(mostWalks_, reference_.walks());
    }

    void reset() {
        engine_.reset();
        reference_.reset();
    }

    std::size_t firings() const { return firings_; }
    int mostWalks() const { return mostWalks_; }

  private:
    TriggerEngine engine_;
    test::ReferenceEngine reference_;
    std::size_t firings_ = 0;
    int mostWalks_ = 0;
};

TEST(TriggerEngineReference, RandomScriptsFireAsInPlainWalks) {
    std::size_t firings = 0;
    for (std::uint64_t seed = 0; seed < 5000 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        test::RandomFlight flight(seed);
        Pair pair(flight.script(flight.below(14)));
        for (int i = 0; i < 12; ++i) {
            pair.evaluate(flight.sample());
            if (flight.oneIn(25)) pair.reset();
        }
        firings += pair.firings();
    }
    // That much must have happened for the comparison to mean something.
    EXPECT_GT(firings, 10000U);
}

/// The comparison means something for links and unknown altitudes, too: the random flights tell engines apart
/// that know nothing of them.
TEST(TriggerEngineReference, InRandomScriptsLinksAndUnknownAltitudesMatter) {
    int differencesByLink = 0;
    int differencesByAltitude = 0;
    for (std::uint64_t seed = 0; seed < 500; ++seed) {
        test::RandomFlight flight(seed);
        const auto script = flight.script(14);
        test::ReferenceEngine reference(script, fixPosition);
        test::ReferenceEngine onOneLink(script, fixPosition);
        test::ReferenceEngine withZeros(script, fixPosition);
        for (int i = 0; i < 12; ++i) {
            auto sample = flight.sample();
            const auto fired = described(reference.evaluate(sample));
            auto zeroed = sample;
            zeroed.altFt = sample.altFt.value_or(0);
            if (described(withZeros.evaluate(zeroed)) != fired) ++differencesByAltitude;
            sample.link = 0;
            if (described(onOneLink.evaluate(sample)) != fired) ++differencesByLink;
        }
    }
    EXPECT_GT(differencesByLink, 20);
    EXPECT_GT(differencesByAltitude, 20);
}

TEST(TriggerEngineReference, RandomChainsFireAsInPlainWalks) {
    int mostWalks = 0;
    std::size_t firings = 0;
    for (std::uint64_t seed = 0; seed < 150 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        test::RandomFlight flight(seed);
        Pair pair(flight.chains(1 + flight.below(150)));
        for (int i = 0; i < 6; ++i)
            pair.evaluate(flight.sample());
        firings += pair.firings();
        mostWalks = std::max(mostWalks, pair.mostWalks());
    }
    EXPECT_GT(firings, 5000U);
    EXPECT_GT(mostWalks, 6);
}

TEST(TriggerEngineReference, ACopyGoesItsOwnWay) {
    for (std::uint64_t seed = 0; seed < 200 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        test::RandomFlight flight(seed);
        Pair pair(flight.script(10));
        for (int i = 0; i < 4; ++i)
            pair.evaluate(flight.sample());
        Pair copy = pair;
        for (int i = 0; i < 4; ++i) {
            pair.evaluate(flight.sample());
            copy.evaluate(flight.sample());
        }
    }
}

TEST(TriggerEngineReference, DistancesAreThoseOfTheFormulaToTheLastBit) {
    test::RandomFlight flight(1);
    for (int i = 0; i < 10000 && !testing::Test::HasFailure(); ++i) {
        const double lat1 = flight.between(-90, 90);
        const double lon1 = flight.between(-180, 180);
        const double lat2 = flight.between(-90, 90);
        const double lon2 = flight.between(-180, 180);
        EXPECT_EQ(TriggerEngine::distanceNm(lat1, lon1, lat2, lon2),
                  test::ReferenceEngine::distanceNm(lat1, lon1, lat2, lon2));
    }
}

} // namespace
} // namespace tarnly

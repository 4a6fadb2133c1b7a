#include "TarnlyCore/Recording/FiniteSample.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "TarnlyCore/Recording/Recordings.hpp"

namespace tarnly {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Puts `bad` into a value, as far as one of its type takes it; says whether it does.
bool spoil(bool&, double) { return false; }
bool spoil(double& value, double bad) {
    value = bad;
    return true;
}
bool spoil(std::vector<double>& values, double bad) {
    values.back() = bad;
    return true;
}
template <typename T>
bool spoil(std::optional<T>& value, double bad) {
    return spoil(value.value(), bad);
}

/// What becomes of a value that is left out.
void empty(double& value) { value = 0; }
template <typename T>
void empty(std::optional<T>& value) {
    value.reset();
}

TEST(FiniteSample, AWholeSampleStaysAsItIs) {
    EXPECT_EQ(withoutNonFinite(test::fullSampleAt(2)), test::fullSampleAt(2));
    EXPECT_EQ(withoutNonFinite(test::sampleAt(2)), test::sampleAt(2));
    auto largest = test::fullSampleAt(2);
    largest.aglFt = std::numeric_limits<double>::max();
    largest.propRatio.emplace();
    EXPECT_EQ(withoutNonFinite(largest), largest);
}

TEST(FiniteSample, OfEachFieldAValueThatIsNotFiniteIsLeftOut) {
    int spoiltFields = 0;
    const auto check = [&](const auto& field) {
        for (const double bad : {nan, infinity, -infinity}) {
            auto sample = test::fullSampleAt(2);
            if (!spoil(sample.*field.member, bad)) return;
            auto expected = test::fullSampleAt(2);
            empty(expected.*field.member);
            EXPECT_EQ(withoutNonFinite(sample), expected) << field.key;
            EXPECT_NO_THROW(encodeJson(withoutNonFinite(sample))) << field.key;
        }
        ++spoiltFields;
    };
    std::apply([&](const auto&... fields) { (check(fields), ...); }, TrackSample::fields());
    EXPECT_GE(spoiltFields, 12);
}

} // namespace
} // namespace tarnly

#include "TarnlyTrack/Grade/Grade.hpp"

#include <gtest/gtest.h>

#include <string>

#include "TarnlyTrack/Grade/Flights.hpp"

namespace tarnly::track {
namespace {

using test::altitudes;
using test::fired;
using test::gradeOf;
using test::sample;
using test::still;
using test::verdictOf;

const std::string held = R"("kind":"altitude_held","feet":1500,"within_ft":100)";

TEST(GradeAltitude, HeldIsMetWithTheFarthestMoment) {
    const auto lines = altitudes({1500, 1540, 1410, 1490});
    EXPECT_EQ(verdictOf(lines, held), "met: farthest 90 ft below 1500 ft, at 0:02");
    const auto grade = gradeOf(lines, held);
    EXPECT_EQ(grade.id, "it");
    EXPECT_EQ(grade.title, "it");
    EXPECT_EQ(grade.worst, 2U);
    EXPECT_EQ(grade.part, (Stretch{0, 4}));
    EXPECT_EQ(grade.judgedSeconds, 3);
    EXPECT_EQ(grade.outsideSeconds, 0);
}

TEST(GradeAltitude, OneSampleOutsideIsNotMet) {
    const auto lines = altitudes({1500, 1640, 1500});
    EXPECT_EQ(verdictOf(lines, held), "not met: farthest 140 ft above 1500 ft, at 0:01; outside for 1 s");
    EXPECT_EQ(gradeOf(lines, held).outsideSeconds, 1);
    EXPECT_EQ(gradeOf(lines, held).worst, 1U);
}

TEST(GradeAltitude, AtTheLimitIsMet) {
    EXPECT_EQ(verdictOf(altitudes({1600}), held), "met: farthest 100 ft above 1500 ft, at 0:00");
    EXPECT_EQ(verdictOf(altitudes({1400}), held), "met: farthest 100 ft below 1500 ft, at 0:00");
    // As doubles 1.1 is more than 0.1 from 1.
    EXPECT_EQ(verdictOf(altitudes({1.1}), R"("kind":"altitude_held","feet":1,"within_ft":0.1)"),
              "met: farthest 0.1 ft above 1 ft, at 0:00");
    EXPECT_EQ(verdictOf(altitudes({5, 5}), R"("kind":"altitude_held","feet":5,"within_ft":0)"),
              "met: always at 5 ft, at 0:00");
}

TEST(GradeAltitude, AValueBeyondTheLimitIsNotRoundedToIt) {
    EXPECT_EQ(verdictOf(altitudes({1600.03125}), held),
              "not met: farthest 100.03125 ft above 1500 ft, at 0:00");
}

TEST(GradeAltitude, LimitsBeyondAllAircraftAreToldAsTheyAre) {
    EXPECT_EQ(verdictOf(altitudes({1500}), R"("kind":"altitude_held","feet":1e308,"within_ft":1)"),
              "not met: farthest 1e+308 ft below 1e+308 ft, at 0:00");
}

TEST(GradeAltitude, OfEquallyBadMomentsTheFirstIsTold) {
    EXPECT_EQ(gradeOf(altitudes({1500, 1450, 1550, 1450}), held).worst, 1U);
}

TEST(GradeAltitude, HasTheNameForPeople) {
    EXPECT_EQ(gradeOf(altitudes({1500}), held + R"(,"name":"Circuit altitude")").title, "Circuit altitude");
}

TEST(GradeAltitude, NeitherGapsNorUnknownValuesCount) {
    // A sample without altitude, and one of 0 as the simulator tells it at first; a minute that nobody knows.
    const auto lines = sample(0, 0) + R"({"kind":"sample","sample":{"elapsed_s":1}})" + "\n" +
                       sample(2, 1500) + sample(3, 1700) + sample(63, 1500) + sample(64, 1500);
    EXPECT_EQ(verdictOf(lines, held),
              "not met: farthest 200 ft above 1500 ft, at 0:03; known for 2 s of 4 s");
    EXPECT_EQ(gradeOf(lines, held).judgedSeconds, 2);
    EXPECT_EQ(gradeOf(lines, held).outsideSeconds, 0);
    EXPECT_EQ(verdictOf(sample(0, 0) + sample(1, 0), held),
              "not judged: the recording does not tell the "
              "altitude");
    EXPECT_FALSE(gradeOf(sample(0, 0), held).worst);
}

TEST(GradeAltitude, FrozenTimeIsNoTimeFlown) {
    const auto lines = sample(0, 1500) + still(1, 21) + sample(22, 1510);
    EXPECT_EQ(verdictOf(lines, R"("kind":"altitude_held","feet":1400,"within_ft":10)"),
              "not met: farthest 110 ft above 1400 ft, at 0:22; outside for 2 s");
    EXPECT_EQ(gradeOf(lines, held).judgedSeconds, 2);
}

TEST(GradeAltitude, OfTwoRecordingsTheFirstCounts) {
    const auto lines = altitudes({1500, 1500}) + altitudes({9000}) + fired("later", 0);
    EXPECT_EQ(verdictOf(lines, held), "met: always at 1500 ft, at 0:00");
    EXPECT_EQ(verdictOf(lines, held + R"(,"from":"later")"), "not judged: \"later\" did not fire");
}

TEST(GradeHeight, IsThatAboveGround) {
    const auto lines = sample(0, 5000, R"("agl_ft":1010)") + sample(1, 5000, R"("agl_ft":970.25)");
    EXPECT_EQ(verdictOf(lines, R"("kind":"height_held","feet":1000,"within_ft":30)"),
              "met: farthest 29.8 ft below 1000 ft, at 0:01");
    EXPECT_EQ(verdictOf(lines, R"("kind":"height_held","feet":1000,"within_ft":20)"),
              "not met: farthest 29.8 ft below 1000 ft, at 0:01");
    EXPECT_EQ(verdictOf(sample(0, 5000), R"("kind":"height_held","feet":1000,"within_ft":20)"),
              "not judged: the recording does not tell the height above ground");
}

TEST(GradeBank, CountsToEitherSide) {
    const auto lines = sample(0, 1, R"("bank_deg":12)") + sample(1, 1, R"("bank_deg":-30)") +
                       sample(2, 1, R"("bank_deg":0)");
    EXPECT_EQ(verdictOf(lines, R"("kind":"bank_not_exceeded","bank_deg":30)"), "met: steepest 30°, at 0:01");
    EXPECT_EQ(verdictOf(lines, R"("kind":"bank_not_exceeded","bank_deg":29.5)"),
              "not met: steepest 30°, at 0:01; outside for 1 s");
    EXPECT_EQ(verdictOf(sample(0, 1), R"("kind":"bank_not_exceeded","bank_deg":29.5)"),
              "not judged: the recording does not tell the bank");
}

// Out of the tolerance before "abeam" and behind "landed".
std::string circuit() {
    return sample(0, 900) + sample(1, 1500) + fired("abeam", 1) + sample(2, 1520) + sample(3, 1450) +
           fired("landed", 3) + sample(4, 600);
}

TEST(GradePart, GoesFromTriggerToTriggerEndsIncluded) {
    EXPECT_EQ(verdictOf(circuit(), held + R"(,"from":"abeam","to":"landed")"),
              "met: farthest 50 ft below 1500 ft, at 0:03");
    EXPECT_EQ(gradeOf(circuit(), held + R"(,"from":"abeam","to":"landed")").part, (Stretch{1, 4}));
    EXPECT_EQ(gradeOf(circuit(), held + R"(,"from":"abeam")").part, (Stretch{1, 5}));
    EXPECT_EQ(gradeOf(circuit(), held + R"(,"to":"abeam")").part, (Stretch{0, 2}));
}

TEST(GradePart, TakesDelaysToTheTriggersAndSecondsOfTheRecording) {
    const auto part = [](const std::string& fields) { return gradeOf(circuit(), held + fields).part; };
    EXPECT_EQ(part(R"(,"from":"abeam","from_s":0.5,"to":"landed","to_s":-1)"), (Stretch{2, 3}));
    EXPECT_EQ(part(R"(,"from":"abeam","to":"abeam","to_s":1)"), (Stretch{1, 3}));
    EXPECT_EQ(part(R"(,"from_s":1,"to_s":2)"), (Stretch{1, 3}));
    EXPECT_EQ(part(R"(,"from_s":2,"to":"landed")"), (Stretch{2, 4}));
}

TEST(GradePart, ThatNeverCameIsNotJudged) {
    EXPECT_EQ(verdictOf(circuit(), held + R"(,"from":"crosswind")"),
              "not judged: \"crosswind\" did not fire");
    EXPECT_EQ(verdictOf(circuit(), held + R"(,"from":"abeam","to":"go")"), "not judged: \"go\" did not fire");
    EXPECT_EQ(verdictOf(circuit(), held + R"(,"from":"landed","to":"abeam")"),
              "not judged: \"abeam\" fired before \"landed\", and not again");
    EXPECT_EQ(verdictOf(circuit(), held + R"(,"from":"landed","from_s":10)"),
              "not judged: the recording has nothing of this part of the flight");
    EXPECT_EQ(verdictOf("", held), "not judged: the recording has nothing of this part of the flight");
    EXPECT_EQ(gradeOf(circuit(), held + R"(,"from":"landed","from_s":10)").part, Stretch());
}

TEST(GradePart, ATriggerThatFiresAgainMayEndIt) {
    const auto lines = sample(0, 1500) + fired("b", 0) + sample(1, 1500) + fired("a", 1) + sample(2, 1500) +
                       fired("b", 2) + sample(3, 1500);
    EXPECT_EQ(gradeOf(lines, held + R"(,"from":"a","to":"b")").part, (Stretch{1, 3}));
}

const std::string between = R"("kind":"time_between","from":"abeam","to":"landed",)";

TEST(GradeTime, IsJudgedByItsLeastAndItsMost) {
    EXPECT_EQ(verdictOf(circuit(), between + R"("at_most_s":3)"), "met: 2 s from \"abeam\" to \"landed\"");
    EXPECT_EQ(verdictOf(circuit(), between + R"("at_most_s":2,"at_least_s":2)"),
              "met: 2 s from \"abeam\" to \"landed\"");
    EXPECT_EQ(verdictOf(circuit(), between + R"("at_most_s":1.5)"),
              "not met: 2 s from \"abeam\" to \"landed\"; at most 1.5 s asked for");
    EXPECT_EQ(verdictOf(circuit(), between + R"("at_least_s":60)"),
              "not met: 2 s from \"abeam\" to \"landed\"; at least 60 s asked for");
    EXPECT_EQ(gradeOf(circuit(), between + R"("at_most_s":3)").part, (Stretch{1, 4}));
}

TEST(GradeTime, OfATriggerThatDidNotFireIsNotJudged) {
    const auto lines = sample(0, 1) + fired("abeam", 0) + sample(1, 1) + sample(2, 1);
    EXPECT_EQ(verdictOf(lines, between + R"("at_most_s":1)"), "not judged: \"landed\" did not fire");
    EXPECT_EQ(verdictOf(sample(0, 1), between + R"("at_most_s":1)"), "not judged: \"abeam\" did not fire");
    EXPECT_EQ(verdictOf(circuit(), R"("kind":"time_between","from":"landed","to":"abeam","at_most_s":9)"),
              "not judged: \"abeam\" fired before \"landed\", and not again");
}

TEST(GradeTime, WithoutASampleNothingIsJudged) {
    const auto lines = sample(0, 1) + fired("abeam", 1) + fired("landed", 2) + sample(9, 1);
    EXPECT_EQ(verdictOf(lines, between + R"("at_most_s":5)"),
              "not judged: the recording has nothing of this part of the flight");
}

TEST(GradeTime, FrozenTimeDoesNotCount) {
    const auto lines = still(0, 20) + sample(21, 1) + fired("landed", 21);
    const auto flown = sample(-2, 1) + fired("abeam", -2) + sample(-1, 1) + lines;
    EXPECT_EQ(verdictOf(flown, between + R"("at_most_s":3)"),
              "met: 3 s from \"abeam\" to \"landed\", and 20 s frozen, which do not count");
    EXPECT_EQ(verdictOf(flown, between + R"("at_least_s":4)"),
              "not met: 3 s from \"abeam\" to \"landed\", and 20 s frozen, which do not count; at least 4 s "
              "asked for");
}

TEST(GradeTime, AGapIsNeitherForNorAgainst) {
    const auto lines =
        sample(0, 1) + fired("abeam", 0) + sample(1, 1) + sample(11, 1) + sample(12, 1) + fired("landed", 12);
    const std::string found = "2 s from \"abeam\" to \"landed\", and 10 s in gaps";
    EXPECT_EQ(verdictOf(lines, between + R"("at_most_s":12)"), "met: " + found);
    EXPECT_EQ(verdictOf(lines, between + R"("at_least_s":2)"), "met: " + found);
    EXPECT_EQ(verdictOf(lines, between + R"("at_most_s":11)"),
              "not judged: " + found + ", which may have been flown");
    EXPECT_EQ(verdictOf(lines, between + R"("at_least_s":12)"),
              "not judged: " + found + ", which may have been flown");
    EXPECT_EQ(verdictOf(lines, between + R"("at_most_s":1)"),
              "not met: " + found + "; at most 1 s asked for");
    EXPECT_EQ(verdictOf(lines, between + R"("at_least_s":13)"),
              "not met: " + found + "; at least 13 s asked for");
}

TEST(Grade, OneForEachToleranceInTheirOrder) {
    const auto tolerances = readTolerances(R"([{"id":"b","kind":"bank_not_exceeded","bank_deg":5},)"
                                           R"({"id":"a",)" +
                                           held + "}]")
                                .tolerances;
    const auto grades = gradesOf(test::logOf(altitudes({1500})), tolerances);
    ASSERT_EQ(grades.size(), 2U);
    EXPECT_EQ(grades[0].id, "b");
    EXPECT_EQ(grades[0].verdict, Grade::Verdict::notJudged);
    EXPECT_EQ(grades[1].id, "a");
    EXPECT_EQ(grades[1].verdict, Grade::Verdict::met);
}

TEST(Grade, WhatATriggersNameHasIsPrintable) {
    EXPECT_EQ(verdictOf(sample(0, 1), held + R"(,"from":"\u001b[2J")"), "not judged: \"?[2J\" did not fire");
}

} // namespace
} // namespace tarnly::track

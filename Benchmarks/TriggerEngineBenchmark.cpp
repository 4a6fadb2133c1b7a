#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "TarnlyCore/Script/ReferenceEngine.hpp"
#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyCore/Script/Triggers.hpp"

/// The cost of one sample. What must hold: 100,000 triggers chained against the order of the script fire
/// within 50 ms, and 10,000 waiting triggers of all kinds cost less than 0.5 ms. The plain walk shows what a
/// walk a link costs.
namespace tarnly {
namespace {

/// Every fix lies somewhere else.
std::optional<Coordinate> fixPosition(const std::string& ident) {
    const auto number = std::stod(ident.substr(1));
    return Coordinate{number / 200, -number / 100};
}

std::string fix(std::int64_t number) { return std::string("F").append(std::to_string(number)); }

std::string id(std::int64_t number) { return "trigger-" + std::to_string(number); }

ArmedTrigger speaking(std::int64_t number, TriggerCondition condition) {
    auto trigger = test::armed(id(number), std::move(condition));
    trigger.action["text"] = JsonScalar{"Retract the flaps at a safe height."};
    return trigger;
}

/// A chain along the order of the script, of which the first trigger starts.
std::vector<ArmedTrigger> forwardChain(std::int64_t length) {
    std::vector<ArmedTrigger> script{speaking(0, test::afterStart(0))};
    for (std::int64_t i = 1; i < length; ++i)
        script.push_back(speaking(i, test::afterTrigger(id(i - 1))));
    return script;
}

std::vector<ArmedTrigger> reverseChain(std::int64_t length) {
    const auto forward = forwardChain(length);
    return {forward.rbegin(), forward.rend()};
}

/// Triggers of all kinds in turn, complete and tested to the end, none of which the sample below fires.
std::vector<ArmedTrigger> waitingOfAllKinds(std::int64_t size) {
    const auto condition = [](std::int64_t i) {
        switch (i % 6) {
            case 0:
                return test::reachesFix(fix(i), 0.5);
            case 1:
                return test::crossing(TriggerConditionKind::crossesAgl, 3000, true);
            case 2:
                return test::crossing(TriggerConditionKind::crossesAltitude, 3000, false);
            case 3:
                return test::afterGearDown(1e9);
            case 4:
                return test::afterStart(1e9);
            default:
                return test::afterTrigger("fired", 1e9);
        }
    };
    std::vector<ArmedTrigger> script{test::armed("fired", test::afterStart(0))};
    for (std::int64_t i = 0; i < size; ++i)
        script.push_back(speaking(i, condition(i)));
    return script;
}

std::vector<ArmedTrigger> waitingForFixes(std::int64_t size) {
    std::vector<ArmedTrigger> script;
    for (std::int64_t i = 0; i < size; ++i) {
        script.push_back(speaking(i, test::reachesFix(fix(i), 0.5)));
    }
    return script;
}

const TriggerSample cruise{
    .elapsed = 100, .lat = -45.0, .lon = 8.5, .altFt = 1500, .aglFt = 1200, .gearDown = true};

/// Evaluates one sample that fires the whole script, again and again.
template <typename Engine>
void fireAll(benchmark::State& state, const std::vector<ArmedTrigger>& script) {
    Engine engine(script, fixPosition);
    for (auto _ : state) {
        const auto fired = engine.evaluate(cruise);
        state.PauseTiming();
        if (fired.size() != script.size()) state.SkipWithError("not all fired");
        engine.reset();
        state.ResumeTiming();
    }
}

/// Evaluates samples that fire nothing.
template <typename Engine>
void fireNone(benchmark::State& state, const std::vector<ArmedTrigger>& script) {
    Engine engine(script, fixPosition);
    engine.evaluate(cruise);
    const auto waiting = engine.waiting().size();
    for (auto _ : state)
        benchmark::DoNotOptimize(engine.evaluate(cruise));
    if (engine.waiting().size() != waiting || waiting + 1 < script.size()) state.SkipWithError("some fired");
}

void reverseChainFires(benchmark::State& state) {
    fireAll<TriggerEngine>(state, reverseChain(state.range()));
}
void reverseChainFiresInPlainWalks(benchmark::State& state) {
    fireAll<test::ReferenceEngine>(state, reverseChain(state.range()));
}
void forwardChainFires(benchmark::State& state) {
    fireAll<TriggerEngine>(state, forwardChain(state.range()));
}
void allKindsWait(benchmark::State& state) {
    fireNone<TriggerEngine>(state, waitingOfAllKinds(state.range()));
}
void allKindsWaitInPlainWalks(benchmark::State& state) {
    fireNone<test::ReferenceEngine>(state, waitingOfAllKinds(state.range()));
}
void fixesWait(benchmark::State& state) { fireNone<TriggerEngine>(state, waitingForFixes(state.range())); }

void scriptLoads(benchmark::State& state) {
    const auto script = reverseChain(state.range());
    for (auto _ : state)
        benchmark::DoNotOptimize(TriggerEngine(script, fixPosition));
}

void engineIsCopied(benchmark::State& state) {
    TriggerEngine engine(reverseChain(state.range()), fixPosition);
    engine.evaluate(cruise);
    for (auto _ : state)
        benchmark::DoNotOptimize(TriggerEngine(engine));
}

BENCHMARK(reverseChainFires)->Arg(1000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(reverseChainFiresInPlainWalks)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(forwardChainFires)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(allKindsWait)->RangeMultiplier(10)->Range(10, 100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(allKindsWaitInPlainWalks)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(fixesWait)->RangeMultiplier(10)->Range(10, 100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(scriptLoads)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(engineIsCopied)->Arg(100'000)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tarnly

#include <benchmark/benchmark.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <string>

#include "TarnlyPlatform/Base/Text.hpp"

/// How fast the UTF-8 of a message is checked, beside looking at each of its characters.
namespace tarnly {
namespace {

/// A message as they come, most of it ASCII: one letter in `everyNth` is not. 0: all are.
std::string message(std::int64_t everyNth) {
    constexpr std::size_t size = 64 * 1024;
    std::string text;
    for (std::int64_t i = 1; text.size() < size; ++i) {
        text += everyNth > 0 && i % everyNth == 0 ? "\u00E9" : "e";
    }
    return text;
}

void countBytes(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void checkByWords(benchmark::State& state) {
    const auto text = message(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(isWellFormedUtf8(text));
    countBytes(state, text);
}

void checkByCharacters(benchmark::State& state) {
    const auto text = message(state.range(0));
    const auto* data = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int64_t>(text.size());
    for (auto _ : state) {
        bool isWellFormed = true;
        for (std::int64_t i = 0; i < length && isWellFormed;) {
            UChar32 codePoint = 0;
            U8_NEXT(data, i, length, codePoint);
            isWellFormed = codePoint >= 0;
        }
        benchmark::DoNotOptimize(isWellFormed);
    }
    countBytes(state, text);
}

BENCHMARK(checkByWords)->Arg(0)->Arg(1000)->Arg(10);
BENCHMARK(checkByCharacters)->Arg(0)->Arg(1000)->Arg(10);

} // namespace
} // namespace tarnly

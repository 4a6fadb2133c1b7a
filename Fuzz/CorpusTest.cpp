#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Fuzz/Targets.hpp"

/// Replays what the fuzzers begin with, and whatever they have found.
namespace tarnly::fuzz {
namespace {

namespace fs = std::filesystem;

const fs::path corpus = TARNLY_FUZZ_CORPUS;

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

class CorpusTest : public testing::TestWithParam<Target> {};

TEST_P(CorpusTest, HoldsForEachInput) {
    std::size_t inputs = 0;
    for (const auto& entry : fs::directory_iterator(corpus / GetParam().name)) {
        SCOPED_TRACE(entry.path().filename());
        GetParam().run(contentOf(entry.path()));
        ++inputs;
    }
    EXPECT_GT(inputs, 0U);
    GetParam().run("");
}

TEST(Corpus, HasNoFolderOfNobodys) {
    for (const auto& entry : fs::directory_iterator(corpus)) {
        const auto name = entry.path().filename().string();
        EXPECT_TRUE(std::ranges::any_of(targets(), [&](const Target& known) { return known.name == name; }))
            << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Fuzz, CorpusTest, testing::ValuesIn(targets().begin(), targets().end()),
                         [](const auto& tested) { return tested.param.name; });

} // namespace
} // namespace tarnly::fuzz

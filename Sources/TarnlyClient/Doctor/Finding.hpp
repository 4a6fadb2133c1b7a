#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::client {

/// What one step of the doctor has found, in words for people. A plain value.
struct Finding {
    /// "companion", "published", …
    std::string step;
    /// Absent where it could not be judged; `text` says why.
    std::optional<bool> ok;
    std::string text;
    /// What to do, in whole sentences; empty where there is nothing to do.
    std::string cure;

    static Finding fine(std::string step, std::string text) {
        return {std::move(step), true, std::move(text), {}};
    }
    static Finding amiss(std::string step, std::string text, std::string cure) {
        return {std::move(step), false, std::move(text), std::move(cure)};
    }
    static Finding unknown(std::string step, std::string text, std::string cure = {}) {
        return {std::move(step), std::nullopt, std::move(text), std::move(cure)};
    }

    bool isAmiss() const { return ok == false; }

    bool operator==(const Finding&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("step", &Finding::step), field("ok", &Finding::ok),
                          field("text", &Finding::text), field("cure", &Finding::cure));
    }
};

/// For people: a line with a mark, "ok", "!!" or "--", and below it what to do.
std::vector<std::string> findingLines(const Finding& finding);

} // namespace tarnly::client

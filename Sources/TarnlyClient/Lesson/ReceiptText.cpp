#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <tuple>

#include "TarnlyClient/Lesson/Receipt.hpp"
#include "TarnlyPlatform/Base/Columns.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/TimeText.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::client {
namespace {

constexpr std::string_view receiptKind = "receipt";

struct MissedListing {
    std::string triggerId;
    std::string words;

    static constexpr auto fields() {
        return std::tuple(field("trigger_id", &MissedListing::triggerId),
                          field("words", &MissedListing::words));
    }
};

struct GradeListing {
    std::string id;
    std::string title;
    std::string verdict;
    std::string words;

    static constexpr auto fields() {
        return std::tuple(field("id", &GradeListing::id), field("title", &GradeListing::title),
                          field("verdict", &GradeListing::verdict), field("words", &GradeListing::words));
    }
};

struct PartListing {
    std::string file;
    std::int64_t samples = 0;
    double lengthSeconds = 0;
    std::int64_t gaps = 0;
    double gapSeconds = 0;
    std::int64_t frozen = 0;
    double frozenSeconds = 0;
    std::vector<FiredTriggerEvent> fired;
    std::vector<GradeListing> grades;

    static constexpr auto fields() {
        return std::tuple(field("file", &PartListing::file), field("samples", &PartListing::samples),
                          field("length_s", &PartListing::lengthSeconds), field("gaps", &PartListing::gaps),
                          field("gap_s", &PartListing::gapSeconds), field("frozen", &PartListing::frozen),
                          field("frozen_s", &PartListing::frozenSeconds), field("fired", &PartListing::fired),
                          field("grades", &PartListing::grades));
    }
};

struct ReceiptListing {
    std::string kind;
    std::string lesson;
    std::string end;
    std::vector<PartListing> parts;
    std::vector<MissedListing> missed;

    static constexpr auto fields() {
        return std::tuple(field("kind", &ReceiptListing::kind), field("lesson", &ReceiptListing::lesson),
                          field("end", &ReceiptListing::end), field("parts", &ReceiptListing::parts),
                          field("missed", &ReceiptListing::missed));
    }
};

/// Rows of a receipt, of which those of one kind have their heading once.
class Rows {
  public:
    explicit Rows(std::string& text) : text_(text) {}

    void add(const std::string& head, const std::string& row) {
        text_ += "\n  " + padded(head == last_ ? "" : head, 11) + row;
        last_ = head;
    }

  private:
    std::string& text_;
    std::string last_;
};

/// "2, 14 s in all", or "none".
std::string stretchesText(std::size_t count, double seconds) {
    if (count == 0) return "none";
    return std::to_string(count) + ", " + timeText(seconds) + " in all";
}

std::size_t widthOfIds(const Receipt& receipt) {
    std::size_t width = 0;
    for (const auto& part : receipt.parts) {
        for (const auto& fired : part.fired)
            width = std::max(width, widthOf(printable(fired.triggerId)));
    }
    for (const auto& missed : receipt.missed)
        width = std::max(width, widthOf(printable(missed.triggerId)));
    return width + 2;
}

void addPart(const ReceiptPart& part, std::size_t width, Rows& rows) {
    rows.add("samples",
             std::to_string(part.summary.samples) + " over " + timeText(part.summary.lengthSeconds));
    rows.add("gaps", stretchesText(part.summary.gaps, part.summary.gapSeconds));
    rows.add("frozen", stretchesText(part.summary.frozenStretches, part.summary.frozenSeconds));
    for (const auto& fired : part.fired)
        rows.add("fired", padded(printable(fired.triggerId), width) + "at " + timeText(fired.elapsedSeconds));
    for (const auto& grade : part.grades) {
        rows.add("grades", padded(std::string(track::verdictWords(grade.verdict)), 12) +
                               printable(grade.title) + ": " + printable(grade.words));
    }
    rows.add("file", printable(part.file));
}

} // namespace

std::string receiptText(const Receipt& receipt) {
    auto text = printable(receipt.lesson) + ": " + printable(receipt.end);
    const auto width = widthOfIds(receipt);
    Rows rows(text);
    const bool hasParts = receipt.parts.size() > 1;
    for (std::size_t index = 0; index < receipt.parts.size(); ++index) {
        if (hasParts) {
            rows.add(
                "", "recording " + std::to_string(index + 1) + " of " + std::to_string(receipt.parts.size()));
        }
        addPart(receipt.parts[index], width, rows);
    }
    for (const auto& missed : receipt.missed)
        rows.add("not fired", padded(printable(missed.triggerId), width) + printable(missed.words));
    return text;
}

std::string receiptJson(const Receipt& receipt) {
    ReceiptListing listing{
        std::string(receiptKind), wellFormedUtf8(receipt.lesson), wellFormedUtf8(receipt.end), {}, {}};
    const auto count = [](std::size_t number) { return static_cast<std::int64_t>(number); };
    for (const auto& part : receipt.parts) {
        const auto& summary = part.summary;
        PartListing shown{wellFormedUtf8(part.file),
                          count(summary.samples),
                          summary.lengthSeconds,
                          count(summary.gaps),
                          summary.gapSeconds,
                          count(summary.frozenStretches),
                          summary.frozenSeconds,
                          part.fired,
                          {}};
        for (const auto& grade : part.grades) {
            shown.grades.push_back({wellFormedUtf8(grade.id), wellFormedUtf8(grade.title),
                                    std::string(track::verdictWords(grade.verdict)),
                                    wellFormedUtf8(grade.words)});
        }
        listing.parts.push_back(std::move(shown));
    }
    for (const auto& missed : receipt.missed)
        listing.missed.push_back({wellFormedUtf8(missed.triggerId), wellFormedUtf8(missed.words)});
    return encodeJson(listing);
}

} // namespace tarnly::client

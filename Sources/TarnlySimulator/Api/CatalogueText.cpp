#include "TarnlySimulator/Api/CatalogueText.hpp"

namespace tarnly::simulator {
namespace {

constexpr std::size_t entriesPerNull = 10;

// Names and descriptions are plain ASCII without quotes, and the real thing leaves their slashes alone.
void append(std::string& out, const Dataref& dataref) {
    out += R"({"id":)";
    out += std::to_string(dataref.id);
    out += dataref.isWritable ? R"(,"is_writable":true,"name":")" : R"(,"is_writable":false,"name":")";
    out += dataref.name;
    out += R"(","value_type":")";
    out += wireName(dataref.type);
    out += R"("})";
}

void append(std::string& out, const Command& command) {
    out += R"({"description":")";
    out += command.description;
    out += R"(","id":)";
    out += std::to_string(command.id);
    out += R"(,"name":")";
    out += command.name;
    out += R"("})";
}

void appendSeparated(std::string& out, const auto& entry) {
    if (out.back() != '[') out += ',';
    append(out, entry);
}

} // namespace

std::string catalogueEntry(const Dataref& dataref) {
    std::string out;
    append(out, dataref);
    return out;
}

std::string catalogueEntry(const Command& command) {
    std::string out;
    append(out, command);
    return out;
}

void CatalogueText::forgetIfOutdated() {
    thread_.check();
    const Quirks& quirks = world_.quirks;
    const Shown now{world_.idGeneration(), quirks.mainMenu, quirks.lateDatarefs, quirks.nullEntries};
    if (now == shown_) return;
    shown_ = now;
    datarefs_.clear();
    commands_.clear();
}

const std::string& CatalogueText::datarefs() {
    forgetIfOutdated();
    if (!datarefs_.empty()) return datarefs_;
    datarefs_ = R"({"data":[)";
    for (const Dataref& dataref : world_.datarefs().entries()) {
        if (world_.shows(dataref)) appendSeparated(datarefs_, dataref);
    }
    datarefs_ += "]}";
    return datarefs_;
}

const std::string& CatalogueText::commands() {
    forgetIfOutdated();
    if (!commands_.empty()) return commands_;
    commands_ = R"({"data":[)";
    std::size_t count = 0;
    for (const Command& command : world_.commands().entries()) {
        appendSeparated(commands_, command);
        if (world_.quirks.nullEntries && ++count % entriesPerNull == 0) commands_ += ",null";
    }
    commands_ += "]}";
    return commands_;
}

} // namespace tarnly::simulator

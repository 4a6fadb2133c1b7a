#include "TarnlySimulator/Api/CatalogueText.hpp"

namespace tarnly::simulator {
namespace {

constexpr std::size_t entriesPerNull = 10;

/// What is no entry, among those that are.
constexpr auto noEntries =
    R"(null,{"id":"17","is_writable":true,"name":"standin/awkward/text_for_id","value_type":"float"},)"
    R"({"is_writable":true,"name":"standin/awkward/no_id","value_type":"float"},)"
    R"({"id":18,"is_writable":true,"value_type":"float"},{"id":19,"name":null},{"id":20,"name":21},)"
    R"({"id":1.5,"name":"standin/awkward/fraction_for_id"},)"
    R"({"id":18446744073709551616,"name":"standin/awkward/long_id"},[],{},"standin/awkward/text",22)";

// Names and descriptions are without quotes, all but the awkward one are plain ASCII, and the real thing
// leaves their slashes alone.
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

std::string begun(const World& world) {
    std::string out = R"({"data":[)";
    if (world.quirks.awkwardCatalogue && !world.quirks.mainMenu) out += noEntries;
    return out;
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
    const Shown now{world_.idGeneration(), quirks.mainMenu, quirks.lateDatarefs, quirks.nullEntries,
                    quirks.awkwardCatalogue};
    if (now == shown_) return;
    shown_ = now;
    datarefs_.clear();
    commands_.clear();
}

const std::string& CatalogueText::datarefs() {
    forgetIfOutdated();
    if (!datarefs_.empty()) return datarefs_;
    datarefs_ = begun(world_);
    for (const Dataref& dataref : world_.datarefs().entries()) {
        if (world_.shows(dataref)) appendSeparated(datarefs_, dataref);
    }
    datarefs_ += "]}";
    return datarefs_;
}

const std::string& CatalogueText::commands() {
    forgetIfOutdated();
    if (!commands_.empty()) return commands_;
    commands_ = begun(world_);
    std::size_t count = 0;
    for (const Command& command : world_.commands().entries()) {
        appendSeparated(commands_, command);
        if (world_.quirks.nullEntries && ++count % entriesPerNull == 0) commands_ += ",null";
    }
    commands_ += "]}";
    return commands_;
}

} // namespace tarnly::simulator

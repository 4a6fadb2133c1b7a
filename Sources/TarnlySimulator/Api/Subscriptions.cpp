#include "TarnlySimulator/Api/Subscriptions.hpp"

#include <utility>

namespace tarnly::simulator {

void Subscriptions::freeze() {
    for (auto& [id, told] : told_)
        told.isFrozen = true;
}

std::string Subscriptions::update(const World& world) {
    std::string out;
    for (auto& [id, told] : told_) {
        const Dataref* dataref = world.shownDataref(id);
        if (told.isFrozen || dataref == nullptr) continue;
        std::string text;
        appendValue(text, dataref->type, world.read(*dataref));
        if (text == told.text) continue;
        told.text = std::move(text);
        out += out.empty() ? R"({"data":{")" : R"(,")";
        out += std::to_string(id);
        out += R"(":)";
        out += told.text;
    }
    if (!out.empty()) out += R"(},"type":"dataref_update_values"})";
    return out;
}

} // namespace tarnly::simulator

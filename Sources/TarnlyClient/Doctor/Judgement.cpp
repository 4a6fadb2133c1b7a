#include "TarnlyClient/Doctor/Judgement.hpp"

#include <algorithm>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::client {
namespace {

using Kind = SimulatorStage::Kind;

/// An hour of recording takes some 5 MiB.
constexpr std::uint64_t leastFreeSpace = std::uint64_t{200} * 1024 * 1024;
constexpr std::string_view stageSubject = "Simulator: ";
constexpr std::uint64_t mebibyte = std::uint64_t{1024} * 1024;

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::string sentence(std::string clause) {
    if (clause.empty()) return clause;
    if (clause.front() >= 'a' && clause.front() <= 'z')
        clause.front() = static_cast<char>(clause.front() - 'a' + 'A');
    return clause + ".";
}

std::string shown(const std::filesystem::path& path) { return printable(path.string()); }

Finding unanswered(const char* step, const FolderProbe& probe) {
    return Finding::amiss(step, shown(probe.path) + " does not answer.",
                          "Its disk or network mount hangs: look at it, and mount it anew.");
}

} // namespace

Finding judgeWarnings(const CompanionStatus& status) {
    const auto words = warningSentences(status).text();
    if (words.empty()) return Finding::fine("warnings", "The companion has none.");
    return Finding::amiss("warnings", "The companion warns of something.", words);
}

Finding judgePublication(const CompanionStatus& status, const std::optional<std::vector<FoundService>>& found,
                         const std::string& failure) {
    constexpr auto step = "published";
    if (!status.published || status.published->state == "off") {
        return Finding::unknown(step, "The companion is not published by DNS-SD, as it was told not to.",
                                "The address has to be entered in the application.");
    }
    if (status.published->state == "publishing") {
        return Finding::unknown(step, publicationSentence(*status.published).text(),
                                "Ask again in a moment.");
    }
    if (!status.published->name) {
        return Finding::amiss(
            step, publicationSentence(*status.published).text(),
            "Applications do not find the companion by themselves; enter the address there. "
            "Install and start avahi-daemon to be found.");
    }
    if (!found) {
        return Finding::amiss(step, "Nobody can be asked for companions: " + failure + ".",
                              "Start avahi-daemon: sudo systemctl start avahi-daemon.");
    }
    const auto& name = *status.published->name;
    const bool isFound = std::ranges::any_of(*found, [&](const FoundService& service) {
        return canonicallyEqual(service.name, name) && service.port == status.port;
    });
    if (isFound) return Finding::fine(step, "Published as " + quoted(name) + ", and found under that name.");
    return Finding::amiss(step, "Published as " + quoted(name) + ", and not found under that name.",
                          "Let the firewall accept UDP port 5353, and restart avahi-daemon.");
}

Finding judgePage(const PageProbe& page) {
    constexpr auto step = "reachable";
    if (page.status && page.isOurs) {
        return Finding::fine(step, page.place +
                                       " answers. Whether other devices get there is told by "
                                       "tarnly-client doctor --reach.");
    }
    if (page.status == 503U) {
        return Finding::amiss(step, page.place + " has as many clients as may be.",
                              "Disconnect one, or start the companion with a larger --max-clients.");
    }
    if (page.status) {
        return Finding::amiss(step, page.place + " answers, but not as this companion does.",
                              "Another program or an older companion has that port: end it, or use the tool "
                              "that came with the companion.");
    }
    return Finding::amiss(step, page.place + " does not answer: " + page.failure + ".",
                          "Let the firewall of that computer accept the port, and look whether the network "
                          "stands.");
}

Finding judgeNoAddress() {
    return Finding::amiss("reachable", "This computer has no address in a network.",
                          "Connect it to the network that the device is in.");
}

Finding judgePairing(const CompanionStatus& status) {
    constexpr auto step = "pairing";
    if (status.pairing == "password") return Finding::fine(step, "A password is asked for.");
    if (status.pairing == "open") {
        return Finding::fine(step,
                             "Open: everybody in the network may pair. Set a password where others use "
                             "it as well.");
    }
    return Finding::unknown(step, "The companion does not tell whether it wants a password.");
}

Finding judgeSimulator(const SimulatorProbe& simulator) {
    const auto who = simulator.place + (simulator.version.empty() ? "" : ", version " + simulator.version);
    // The step's name says already whose words these are.
    auto words = stageWords(simulator.stage, {}).text();
    if (words.starts_with(stageSubject)) words.erase(0, stageSubject.size());
    const auto text = sentence(words + " (" + who + ")");
    if (simulator.stage.kind == Kind::flightLoaded) return Finding::fine("simulator", text);
    return Finding::amiss("simulator", text, sentence(stageAdvice(simulator.stage).text()));
}

Finding judgeValues(const ValueProbe& value, bool hasPassword) {
    constexpr auto step = "values";
    if (value.hasValue) return Finding::fine(step, "The companion hands on the simulator's values.");
    if (value.isPaired) {
        return Finding::amiss(step, "The companion has no values of the simulator: " + value.failure + ".",
                              "Look at the step \"simulator\". Where that is fine, restart the companion.");
    }
    if (!hasPassword) {
        return Finding::unknown(step, "The companion does not let the doctor in: " + value.failure + ".",
                                "Give it the password by --password-file FILE.");
    }
    return Finding::amiss(step, "The companion does not let the doctor in: " + value.failure + ".",
                          "A companion reads the password at its start: restart it, or give the right one by "
                          "--password-file FILE.");
}

Finding judgeSituations(const std::optional<FolderProbe>& folder) {
    constexpr auto step = "situations";
    if (!folder) {
        return Finding::unknown(
            step, "The companion has no folder of saved flights.",
            "Where the application is to load some, name one in the settings, or by --situations DIR.");
    }
    if (!folder->isAnswered) return unanswered(step, *folder);
    if (!folder->failure.empty()) {
        return Finding::amiss(
            step, shown(folder->path) + " cannot be read: " + folder->failure + ".",
            "Name the simulator's folder Output/situations in the settings, or by --situations DIR.");
    }
    return Finding::fine(step,
                         shown(folder->path) + " has " + std::to_string(folder->count) + " saved flights.");
}

Finding judgeNavDatabase(const std::optional<FolderProbe>& file,
                         const std::optional<SourcesStatus>& sources) {
    constexpr auto step = "navigation database";
    if (!file && sources && sources->isNavDatabaseInTheMaking) {
        return Finding::unknown(step, "The companion makes one of the simulator's data just now.",
                                "Ask again in a minute.");
    }
    if (!file) {
        return Finding::unknown(step, "The companion has none, so scripts find no fixes.",
                                "Where scripts name fixes, make one by tarnly-navdb build -o FILE, and name "
                                "it in the settings, or by --nav-db FILE.");
    }
    if (!file->isAnswered) return unanswered(step, *file);
    if (!file->failure.empty()) {
        // Its clause on what to do comes last.
        const auto cut = file->failure.rfind("; ");
        const bool hasCure = cut != std::string::npos;
        return Finding::amiss(step, file->failure.substr(0, cut) + ".",
                              (hasCure ? sentence(file->failure.substr(cut + 2)) + " " : "") +
                                  "The settings name the file, or --nav-db FILE.");
    }
    const bool hasCycle = sources && sources->navCycle;
    return Finding::fine(step, shown(file->path) +
                                   (hasCycle ? ", cycle " + printable(*sources->navCycle) + "," : "") +
                                   " shows no fault.");
}

Finding judgeDisk(const FolderProbe& folder) {
    constexpr auto step = "disk";
    if (!folder.isAnswered) return unanswered(step, folder);
    if (!folder.failure.empty()) {
        return Finding::amiss(
            step, "Nothing can be recorded in " + shown(folder.path) + ": " + folder.failure + ".",
            "Make the folder writable, or name another one by --data-dir DIR.");
    }
    const auto free =
        std::to_string(folder.freeSpace / mebibyte) + " MiB are free in " + shown(folder.path) + ".";
    if (folder.freeSpace >= leastFreeSpace) return Finding::fine(step, free);
    return Finding::amiss(step, "Only " + free, "Make room there: recordings need it.");
}

Finding judgeSettings(const FolderProbe& file) {
    constexpr auto step = "settings";
    if (!file.isAnswered) return unanswered(step, file);
    if (!file.failure.empty()) {
        return Finding::amiss(
            step, shown(file.path) + " cannot be read as settings: " + file.failure + ".",
            "Mend it, or remove it and set them anew. Until then no password is asked for.");
    }
    if (file.count == 0) return Finding::fine(step, "None are saved yet: the usual ones hold.");
    return Finding::fine(step, shown(file.path) + " can be read.");
}

} // namespace tarnly::client

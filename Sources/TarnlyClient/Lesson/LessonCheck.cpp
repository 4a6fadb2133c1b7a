#include "TarnlyClient/Lesson/LessonCheck.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include "TarnlyCore/ScriptCheck/KeyCheck.hpp"
#include "TarnlyCore/ScriptCheck/NearName.hpp"
#include "TarnlyCore/ScriptCheck/ScriptCheck.hpp"
#include "TarnlyCore/ScriptCheck/SyntaxCure.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/PlacedJson.hpp"
#include "TarnlyTrack/Grade/ToleranceCheck.hpp"

namespace tarnly::client {
namespace {

using Keys = std::span<const std::string_view>;

constexpr std::array<std::string_view, 6> keysOfLesson{"name",   "situation",  "briefing",
                                                       "script", "tolerances", "ends"};
constexpr std::array<std::string_view, 2> keysOfEnds{"trigger", "seconds"};

constexpr double longestSeconds = 1e7;

/// One that is misspelt would leave something of the lesson out, and nobody would notice before the flight.
void checkLessonKeys(const PlacedJson& object, Keys known, ScriptFindings& findings) {
    checkRepeats(object, findings);
    for (const auto& [key, at] : object.keys) {
        if (std::ranges::find(known, key) != known.end()) continue;
        const auto unknown = "unknown field " + inQuotes(key);
        if (nearName(key, known)) {
            findings.error(at, unknown + didYouMean(key, known, ""));
        } else {
            findings.warning(at, unknown + ", which lessons do not have; remove it");
        }
    }
}

/// The value of `key`; null where there is none, or `null`.
const PlacedJson* valueOf(const PlacedJson& object, std::string_view key) {
    const auto* found = object.find(key);
    return found == nullptr || found->value.is_null() ? nullptr : found;
}

template <typename T>
std::optional<T> readValue(const PlacedJson& object, std::string_view key, ScriptFindings& findings) {
    const auto* found = valueOf(object, key);
    if (found == nullptr) return std::nullopt;
    auto value = readAs<T>(*found);
    if (!value) tellWrongKind(neededKey<T>(key), *found, findings);
    return value;
}

std::vector<std::string_view> idsOf(const LoadScriptRequest& script) {
    std::vector<std::string_view> ids;
    ids.reserve(script.triggers.size());
    for (const auto& trigger : script.triggers)
        ids.push_back(trigger.id);
    return ids;
}

std::string withoutBlankEnd(std::string text) {
    text.erase(text.find_last_not_of(" \t\r\n") + 1);
    return text;
}

/// One lesson on its way from its texts.
class LessonReader {
  public:
    LessonReader(const LessonFile& file, const FixResolver& fixPosition)
        : file_(file), fixPosition_(fixPosition) {
        result_.lesson.name = file.plainName;
    }

    CheckedLesson read() && {
        try {
            const auto json = parsePlacedJson(file_.own.text);
            if (json.value.is_object()) {
                readObject(json);
            } else {
                own_.error(json.at, "a lesson is wanted, an object with the key \"script\"");
            }
        } catch (const JsonTextError& error) {
            own_.error(error.at(), std::string("no valid JSON: ") + error.what() +
                                       syntaxCure(file_.own.text, error.at()));
        }
        std::vector<LessonFinding> all;
        for (auto& finding : std::move(own_).inOrder(file_.own.text))
            all.push_back({file_.own.file, std::move(finding)});
        std::ranges::move(result_.findings, std::back_inserter(all));
        result_.findings = std::move(all);
        return std::move(result_);
    }

  private:
    void readObject(const PlacedJson& json) {
        auto& lesson = result_.lesson;
        checkLessonKeys(json, keysOfLesson, own_);
        if (auto name = readValue<std::string>(json, "name", own_)) lesson.name = std::move(*name);
        lesson.situation = readValue<std::string>(json, "situation", own_);
        if (lesson.situation && lesson.situation->empty()) {
            own_.error(json.find("situation")->at, "the name of the situation is empty; name a saved flight");
        }
        readBriefing(json);
        const auto script = partOf(json, "script");
        if (script) readScript(*script);
        if (!script && valueOf(json, "script") == nullptr) {
            own_.error(json.at,
                       "\"script\" is missing, so there is nothing to fly; write the script here, or "
                       "the name of its file");
        }
        if (const auto tolerances = partOf(json, "tolerances"))
            readTolerances(*tolerances, script.has_value());
        if (const auto* ends = valueOf(json, "ends")) readEnds(*ends, script.has_value());
    }

    void readBriefing(const PlacedJson& json) {
        auto text = readValue<std::string>(json, "briefing", own_);
        for (const auto* usual : {"briefing.txt", "briefing.md"}) {
            if (text || json.find("briefing") != nullptr || !isBeside(usual)) continue;
            text = textOf(usual, json.at);
        }
        if (text) result_.lesson.briefing = withoutBlankEnd(wellFormedUtf8(std::move(*text)));
    }

    bool isBeside(const std::string& name) const {
        std::error_code error;
        return file_.isFolder && std::filesystem::exists(file_.folder / name, error);
    }

    std::optional<std::string> textOf(const std::string& name, std::size_t at) {
        try {
            return readAll(file_.folder / name);
        } catch (const LessonUnreadable& why) {
            own_.error(at, inQuotes(name) + " cannot be read: " + why.what() +
                               "; names are relative to the lesson's folder");
            return std::nullopt;
        }
    }

    /// A part that stands in the lesson itself, in a file that it names, or in one of the usual name.
    std::optional<LessonText> partOf(const PlacedJson& json, std::string_view key) {
        const auto* found = valueOf(json, key);
        if (found != nullptr && (found->value.is_object() || found->value.is_array()))
            return LessonText{file_.own.file, partInPlace(file_.own.text, found->at)};
        if (found != nullptr && !found->value.is_string()) {
            tellWrongKind({key, "an object, a list, or the name of a file"}, *found, own_);
            return std::nullopt;
        }
        const auto usual = std::string(key) + ".json";
        if (found == nullptr && !isBeside(usual)) return std::nullopt;
        const auto name = found == nullptr ? usual : std::string(found->value.get_string());
        auto text = textOf(name, found == nullptr ? json.at : found->at);
        if (!text) return std::nullopt;
        return LessonText{(file_.folder / name).string(), std::move(*text)};
    }

    void add(const std::string& file, std::vector<ScriptFinding> findings) {
        for (auto& finding : findings)
            result_.findings.push_back({file, std::move(finding)});
    }

    void readScript(const LessonText& script) {
        auto findings = checkScript(script.text, fixPosition_);
        add(script.file, std::move(findings));
        try {
            const auto json = parseJson(script.text);
            if (json.is_array()) {
                result_.lesson.script.triggers = decodeJson<std::vector<ScriptTrigger>>(json);
            } else {
                result_.lesson.script = decodeJson<LoadScriptRequest>(json);
            }
        } catch (const JsonError&) {
            // The check has told why.
            isScriptRead_ = false;
        }
    }

    void readTolerances(const LessonText& text, bool hasScript) {
        auto checked = track::readTolerances(text.text);
        const bool isUsable = checked.isUsable();
        add(text.file, std::move(checked.findings));
        if (!isUsable) return;
        result_.lesson.tolerances = std::move(checked.tolerances);
        if (!hasScript || !isScriptRead_) return;
        ScriptFindings findings;
        const auto json = parsePlacedJson(text.text);
        const auto& list = json.value.is_array() ? json : *json.find("tolerances");
        for (const auto& tolerance : list.elements) {
            for (const auto* key : {"from", "to"})
                if (const auto* found = valueOf(tolerance, key)) checkTrigger(*found, findings);
        }
        add(text.file, std::move(findings).inOrder(text.text));
    }

    void readEnds(const PlacedJson& json, bool hasScript) {
        if (!json.value.is_object())
            return tellWrongKind({"ends", "an object with trigger or seconds"}, json, own_);
        checkLessonKeys(json, keysOfEnds, own_);
        auto& lesson = result_.lesson;
        lesson.endTrigger = readValue<std::string>(json, "trigger", own_);
        if (lesson.endTrigger && hasScript && isScriptRead_) checkTrigger(*json.find("trigger"), own_);
        const auto seconds = readValue<double>(json, "seconds", own_);
        if (!seconds) return;
        if (*seconds > 0 && *seconds <= longestSeconds) {
            lesson.endTime =
                std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(*seconds));
        } else {
            own_.error(json.find("seconds")->at, "this is no time to fly; write seconds, more than 0");
        }
    }

    void checkTrigger(const PlacedJson& name, ScriptFindings& findings) const {
        const auto ids = idsOf(result_.lesson.script);
        const auto id = readAs<std::string>(name).value_or("");
        if (std::ranges::find(ids, id) != ids.end()) return;
        findings.error(name.at, "the script has no trigger with the id " + inQuotes(id) +
                                    didYouMean(id, ids, "; name one that it has"));
    }

    const LessonFile& file_;
    const FixResolver& fixPosition_;
    ScriptFindings own_;
    bool isScriptRead_ = true;
    CheckedLesson result_;
};

} // namespace

bool CheckedLesson::isUsable() const { return std::ranges::none_of(findings, &LessonFinding::isError); }

CheckedLesson checkLesson(const LessonFile& file, const FixResolver& fixPosition) {
    return LessonReader(file, fixPosition).read();
}

} // namespace tarnly::client

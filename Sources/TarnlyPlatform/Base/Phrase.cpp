#include "TarnlyPlatform/Base/Phrase.hpp"

#include <algorithm>
#include <utility>

#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {

struct Phrase::Parts {
    Kind kind = Kind::verbatim;
    /// What is the same everywhere, or the pattern.
    std::string text{};
    /// Of what is counted.
    std::string one{};
    std::int64_t count = 0;
    double number = 0;
    std::vector<Phrase> arguments{};
};

namespace {

class English : public Phrase::Language {
  public:
    std::string translated(std::string_view pattern) const override { return std::string(pattern); }
    std::string translated(std::string_view one, std::string_view many, std::int64_t count) const override {
        return std::string(count == 1 ? one : many);
    }
    std::string number(double value) const override {
        std::string text;
        appendNumber(text, value);
        return text;
    }
    std::string number(std::int64_t value) const override { return std::to_string(value); }
};

std::string capitalized(const std::string& text) {
    if (text.empty()) return text;
    const auto rest = std::find_if_not(text.begin() + 1, text.end(), isContinuation);
    return upperCased(std::string(text.begin(), rest)).append(rest, text.end());
}

/// `pattern` with `arguments` for %1 to %9, and `count` for %n. What stands in an argument stays as it is.
std::string filled(std::string_view pattern, const std::vector<std::string>& arguments,
                   const std::string& count) {
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char next = pattern[i] == '%' && i + 1 < pattern.size() ? pattern[i + 1] : '\0';
        const auto place = static_cast<std::size_t>(next - '1');
        if (next == 'n') {
            text += count;
        } else if (next >= '1' && next <= '9' && place < arguments.size()) {
            text += arguments[place];
        } else {
            text += pattern[i];
            continue;
        }
        ++i;
    }
    return text;
}

} // namespace

Phrase::Phrase(Parts parts) : parts_(std::make_shared<const Parts>(std::move(parts))) {}

Phrase Phrase::verbatim(std::string text) {
    if (text.empty()) return {};
    return Phrase(Parts{.kind = Kind::verbatim, .text = wellFormedUtf8(std::move(text))});
}

Phrase Phrase::sentence(Phrase clause) {
    if (clause.empty()) return {};
    return Phrase(Parts{.kind = Kind::sentence, .arguments = {std::move(clause)}});
}

Phrase Phrase::joined(std::vector<Phrase> phrases) {
    std::erase_if(phrases, [](const Phrase& one) { return one.empty(); });
    if (phrases.empty()) return {};
    return Phrase(Parts{.kind = Kind::joined, .arguments = std::move(phrases)});
}

Phrase Phrase::make(Pattern pattern, std::vector<Phrase> arguments) {
    return Phrase(
        Parts{.kind = Kind::pattern, .text = std::string(pattern.text()), .arguments = std::move(arguments)});
}

Phrase Phrase::make(Pattern many, Pattern one, std::int64_t count, std::vector<Phrase> arguments) {
    return Phrase(Parts{.kind = Kind::counted,
                        .text = std::string(many.text()),
                        .one = std::string(one.text()),
                        .count = count,
                        .arguments = std::move(arguments)});
}

Phrase Phrase::argument(double value) { return Phrase(Parts{.kind = Kind::real, .number = value}); }

Phrase Phrase::whole(std::int64_t value) { return Phrase(Parts{.kind = Kind::integer, .count = value}); }

bool Phrase::empty() const { return !parts_; }

std::string Phrase::text() const { return in(English()); }

std::string Phrase::in(const Language& language) const {
    if (!parts_) return {};
    std::vector<std::string> arguments;
    for (const auto& argument : parts_->arguments)
        arguments.push_back(argument.in(language));
    switch (parts_->kind) {
        case Kind::verbatim:
            break;
        case Kind::pattern:
            return filled(language.translated(parts_->text), arguments, {});
        case Kind::counted:
            return filled(language.translated(parts_->one, parts_->text, parts_->count), arguments,
                          language.number(parts_->count));
        case Kind::sentence:
            return capitalized(arguments.front()) + ".";
        case Kind::joined: {
            std::string text;
            for (const auto& argument : arguments)
                text.append(text.empty() ? "" : " ").append(argument);
            return text;
        }
        case Kind::integer:
            return language.number(parts_->count);
        case Kind::real:
            return language.number(parts_->number);
    }
    return parts_->text;
}

} // namespace tarnly

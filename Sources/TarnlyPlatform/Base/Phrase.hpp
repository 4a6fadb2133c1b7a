#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// Tells the tool that collects the texts for translators the context in which this class's stand.
#define TARNLY_TEXTS_OF(context)

namespace tarnly {

/// What a person is told, kept by its parts, so that it can be said in another language: a pattern with
/// places, "Simulator: silent for %1 s", and what stands in them. `text()` is the English of logs, tools and
/// JSON. What a system or a person has written is no pattern but an argument, the same in every language.
///
/// A plain value, well-formed UTF-8 throughout; two are equal when their English is. Patterns are literals of
/// a call of `of` or `counted`, where the tool that collects the texts for translators finds them.
class Phrase {
    TARNLY_TEXTS_OF(Companion)

  public:
    /// A text that is known when the program is compiled.
    class Pattern {
      public:
        consteval Pattern(const char* text) : text_(text) {}
        constexpr std::string_view text() const { return text_; }

      private:
        std::string_view text_;
    };

    /// How another language says it.
    class Language {
      public:
        virtual ~Language() = default;
        /// `pattern`, a source text, by its translation; of several forms the one for `count`.
        virtual std::string translated(std::string_view pattern) const = 0;
        virtual std::string translated(std::string_view one, std::string_view many,
                                       std::int64_t count) const = 0;
        virtual std::string number(double value) const = 0;
        virtual std::string number(std::int64_t value) const = 0;
    };

    /// Says nothing.
    Phrase() = default;

    /// `pattern` with `arguments` for its %1, %2 and so on: phrases, texts or numbers.
    template <typename... Arguments>
    static Phrase of(Pattern pattern, const Arguments&... arguments) {
        return make(pattern, {argument(arguments)...});
    }

    /// The same by a number, which stands for %n: `one` is the English for 1.
    template <typename... Arguments>
    static Phrase counted(Pattern many, Pattern one, std::int64_t count, const Arguments&... arguments) {
        return make(many, one, count, {argument(arguments)...});
    }

    /// A name, an address, a system's own message.
    static Phrase verbatim(std::string text);

    /// A clause as a sentence: with a capital and a full stop.
    static Phrase sentence(Phrase clause);

    /// One after the other, with blanks between them; those that say nothing are left out.
    static Phrase joined(std::vector<Phrase> phrases);

    bool empty() const;
    std::string text() const;
    std::string in(const Language& language) const;
    explicit operator std::string() const { return text(); }

    friend bool operator==(const Phrase& a, const Phrase& b) { return a.text() == b.text(); }
    friend bool operator==(const Phrase& phrase, std::string_view text) { return phrase.text() == text; }
    friend std::ostream& operator<<(std::ostream& stream, const Phrase& phrase) {
        return stream << phrase.text();
    }

  private:
    enum class Kind { verbatim, pattern, counted, sentence, joined, integer, real };
    struct Parts;

    explicit Phrase(Parts parts);
    static Phrase make(Pattern pattern, std::vector<Phrase> arguments);
    static Phrase make(Pattern many, Pattern one, std::int64_t count, std::vector<Phrase> arguments);
    static Phrase argument(Phrase phrase) { return phrase; }
    static Phrase argument(std::string_view text) { return verbatim(std::string(text)); }
    static Phrase argument(double value);
    static Phrase argument(std::integral auto value) { return whole(static_cast<std::int64_t>(value)); }
    static Phrase whole(std::int64_t value);

    /// Shared, as it never changes; null says nothing.
    std::shared_ptr<const Parts> parts_;
};

} // namespace tarnly

#include "TarnlyCore/NavSource/NavRow.hpp"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

constexpr std::string_view blanks = " \t\r\v\f";
/// Bytes: identifiers have five at most, those that people make up some more.
constexpr std::size_t longestIdent = 32;
constexpr std::size_t longestName = 200;

/// Takes the fields of a line one after the other.
class Fields {
  public:
    explicit Fields(std::string_view line) : rest_(line) {}

    /// Empty at the end.
    std::string_view next() {
        skipBlanks();
        const auto end = std::min(rest_.find_first_of(blanks), rest_.size());
        const auto field = rest_.substr(0, end);
        rest_.remove_prefix(end);
        return field;
    }

    void skip(int count) {
        while (count-- > 0)
            next();
    }

    /// With the blanks between its words.
    std::string_view rest() {
        skipBlanks();
        const auto last = rest_.find_last_not_of(blanks);
        return rest_.substr(0, last == std::string_view::npos ? 0 : last + 1);
    }

  private:
    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size())); }

    std::string_view rest_;
};

template <typename Number>
std::optional<Number> numberIn(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    Number value{};
    const auto* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stopped != end || text.empty()) return std::nullopt;
    return value;
}

/// Degrees. What is no number is within no limits either.
std::optional<double> degrees(std::string_view text, double most) {
    const auto value = numberIn<double>(text);
    const bool isDegrees = value && *value >= -most && *value <= most;
    return isDegrees ? value : std::nullopt;
}

bool readPlace(Fields& fields, Coordinate& place) {
    const auto latitude = degrees(fields.next(), 90);
    const auto longitude = degrees(fields.next(), 180);
    if (!latitude || !longitude) return false;
    place = {*latitude, *longitude};
    return true;
}

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char letter) { return letter >= ' ' && letter <= '~'; });
}

std::string readable(std::string_view text) {
    text = text.substr(0, longestName);
    return isPlain(text) ? std::string(text) : printable(text);
}

std::string identFrom(std::string_view text) {
    const auto isSmall = [](char letter) { return letter >= 'a' && letter <= 'z'; };
    if (!isPlain(text)) return upperCased(printable(text));
    return std::ranges::any_of(text, isSmall) ? upperCased(text) : std::string(text);
}

bool isIdent(std::string_view text) { return !text.empty() && text.size() <= longestIdent; }

/// `ident area region`, and all three are wanted.
bool readNames(Fields& fields, NavEntry& entry) {
    const auto ident = fields.next();
    const auto area = fields.next();
    const auto region = fields.next();
    if (!isIdent(ident) || !isIdent(area) || !isIdent(region)) return false;
    entry.ident = identFrom(ident);
    entry.area = identFrom(area);
    entry.region = identFrom(region);
    return true;
}

NavRow rowOf(NavEntry entry, bool isWhole) {
    if (!isWhole) return {NavRow::Kind::unreadable};
    return {NavRow::Kind::entry, std::move(entry)};
}

/// `lat lon ident area region [type [name…]]`
NavRow fixFrom(Fields fields) {
    NavEntry entry;
    const bool isWhole = readPlace(fields, entry.place) && readNames(fields, entry);
    fields.skip(1);
    if (isWhole) entry.name = readable(fields.rest());
    return rowOf(std::move(entry), isWhole);
}

/// What the code of a row stands for, of those that are looked up.
std::optional<NavKind> navaidKind(int code) {
    if (code == 2) return NavKind::ndb;
    if (code == 3) return NavKind::vor;
    if (code == 13) return NavKind::dme;
    return std::nullopt;
}

/// Localizers, glideslopes, markers, the DMEs beside a VOR, which are there already, and what satellites and
/// ground stations augment.
bool isOtherNavaid(int code) { return (code >= 4 && code <= 9) || code == 12 || (code >= 14 && code <= 16); }

/// `code lat lon elevation frequency range bias ident area region [name…]`
NavRow navaidFrom(Fields fields) {
    const auto code = numberIn<int>(fields.next());
    if (code && isOtherNavaid(*code)) return {};
    const auto kind = code ? navaidKind(*code) : std::nullopt;
    if (!kind) return {NavRow::Kind::unreadable};
    NavEntry entry;
    entry.kind = *kind;
    bool isWhole = readPlace(fields, entry.place);
    fields.skip(4);
    isWhole = isWhole && readNames(fields, entry);
    if (isWhole) entry.name = readable(fields.rest());
    return rowOf(std::move(entry), isWhole);
}

/// `ident region lat lon elevation …`
NavRow airportFrom(Fields fields) {
    NavEntry entry;
    entry.kind = NavKind::airport;
    const auto ident = fields.next();
    const auto region = fields.next();
    const bool isWhole = isIdent(ident) && isIdent(region) && readPlace(fields, entry.place) &&
                         numberIn<double>(fields.next());
    if (isWhole) {
        entry.ident = identFrom(ident);
        entry.region = identFrom(region);
    }
    return rowOf(std::move(entry), isWhole);
}

/// The digits behind `label`, if there are `count` of them.
std::string digitsAfter(std::string_view label, std::size_t count, std::string_view line) {
    const auto place = line.find(label);
    if (place == std::string_view::npos) return {};
    const auto field = Fields(line.substr(place + label.size())).next();
    const auto end = std::min(field.find_first_not_of("0123456789"), field.size());
    return end == count ? std::string(field.substr(0, end)) : std::string();
}

} // namespace

std::optional<NavHeader> parseNavHeader(std::string_view line) {
    const auto version = numberIn<int>(Fields(line).next());
    if (!version) return std::nullopt;
    return NavHeader{*version, digitsAfter("cycle ", 4, line), digitsAfter("build ", 8, line)};
}

NavRow parseNavRow(NavFileKind kind, std::string_view line) {
    const Fields fields(line);
    auto ahead = fields;
    const auto first = ahead.next();
    if (first.empty() || first.starts_with('#')) return {};
    if (first == "99" && ahead.next().empty()) return {NavRow::Kind::end};
    switch (kind) {
        case NavFileKind::fixes:
            return fixFrom(fields);
        case NavFileKind::navaids:
            return navaidFrom(fields);
        case NavFileKind::airports:
            return airportFrom(fields);
    }
    return {NavRow::Kind::unreadable};
}

} // namespace tarnly

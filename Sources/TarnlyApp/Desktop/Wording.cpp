#include "TarnlyApp/Desktop/Wording.hpp"

#include <QCoreApplication>
#include <QLocale>
#include <algorithm>
#include <limits>
#include <string>

namespace tarnly {
namespace {

/// Of the texts that `Phrase` marks.
constexpr const char* context = "Companion";

class WindowLanguage : public Phrase::Language {
  public:
    std::string translated(std::string_view pattern) const override {
        return QCoreApplication::translate(context, std::string(pattern).c_str()).toStdString();
    }

    /// Without a translation Qt knows one form only.
    std::string translated(std::string_view one, std::string_view many, std::int64_t count) const override {
        const auto number = static_cast<int>(std::min<std::int64_t>(count, std::numeric_limits<int>::max()));
        const auto source = std::string(many);
        const auto text =
            QCoreApplication::translate(context, source.c_str(), std::string(one).c_str(), number);
        const auto untranslated =
            QString::fromStdString(source).replace(QLatin1String("%n"), QString::number(number));
        return text == untranslated ? std::string(count == 1 ? one : many) : text.toStdString();
    }

    std::string number(double value) const override {
        return QLocale().toString(value, 'f', QLocale::FloatingPointShortest).toStdString();
    }

    std::string number(std::int64_t value) const override {
        return QLocale().toString(qlonglong{value}).toStdString();
    }
};

} // namespace

QString inWords(const Phrase& phrase) { return QString::fromStdString(phrase.in(WindowLanguage())); }

} // namespace tarnly

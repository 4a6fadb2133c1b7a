#pragma once

#include <QCoreApplication>
#include <QStringList>
#include <optional>

#include "TarnlyApp/Desktop/Translations.hpp"

namespace tarnly::test {

/// Has the windows speak a language of the tests while it lives.
class SpokenLanguage {
  public:
    explicit SpokenLanguage(const char* language) {
        qputenv("TARNLY_TRANSLATIONS", TARNLY_TEST_TRANSLATIONS);
        translations_.emplace(QStringList{language});
        QCoreApplication::processEvents(); // the windows turn
    }
    SpokenLanguage(const SpokenLanguage&) = delete;
    SpokenLanguage& operator=(const SpokenLanguage&) = delete;
    ~SpokenLanguage() { qunsetenv("TARNLY_TRANSLATIONS"); }

  private:
    std::optional<Translations> translations_;
};

} // namespace tarnly::test

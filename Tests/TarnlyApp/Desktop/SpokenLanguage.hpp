#pragma once

#include <optional>

#include "TarnlyApp/Desktop/Translations.hpp"

namespace tarnly::test {

/// Has the windows speak a language of the tests while it lives.
class SpokenLanguage {
  public:
    explicit SpokenLanguage(const char* language);
    SpokenLanguage(const SpokenLanguage&) = delete;
    SpokenLanguage& operator=(const SpokenLanguage&) = delete;
    ~SpokenLanguage();

  private:
    std::optional<Translations> translations_;
};

} // namespace tarnly::test

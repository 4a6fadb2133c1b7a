#pragma once

#include <QString>
#include <QStringList>
#include <QTranslator>

namespace tarnly {

/// The language of the windows: the first one of those that the person prefers that the program has been
/// translated into, English where there is none before it. Qt's own texts follow where the system has them.
///
/// Belongs to the main thread; to be made after the application and before its windows, and to outlive them.
class Translations {
  public:
    /// Goes by `languages`, the preferred one first, as `QLocale::uiLanguages` has them. Translations in the
    /// folder that the environment variable TARNLY_TRANSLATIONS names come before those that are built in,
    /// so that a translator sees the own ones at work.
    explicit Translations(const QStringList& languages);

    Translations(const Translations&) = delete;
    Translations& operator=(const Translations&) = delete;

  private:
    bool speak(const QString& language);

    QTranslator own_;
    QTranslator qt_;
};

} // namespace tarnly

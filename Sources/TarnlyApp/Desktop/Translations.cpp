#include "TarnlyApp/Desktop/Translations.hpp"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

/// In which the program is written.
bool isSource(const QLocale& locale) {
    return locale.language() == QLocale::English || locale.language() == QLocale::C;
}

bool loadOwn(QTranslator& translator, const QLocale& locale) {
    const auto folder = qEnvironmentVariable("TARNLY_TRANSLATIONS");
    return (!folder.isEmpty() && translator.load(locale, u"tarnly"_s, u"_"_s, folder)) ||
           translator.load(locale, u"tarnly"_s, u"_"_s, u":/translations"_s);
}

} // namespace

Translations::Translations(const QStringList& languages) {
    for (const auto& language : languages)
        if (speak(language)) return;
}

/// Whether the windows are in this language from now on.
bool Translations::speak(const QString& language) {
    const QLocale locale(language);
    if (isSource(locale)) return true;
    if (!loadOwn(own_, locale)) return false;
    if (qt_.load(locale, u"qtbase"_s, u"_"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&qt_);
    QCoreApplication::installTranslator(&own_); // asked first
    return true;
}

} // namespace tarnly

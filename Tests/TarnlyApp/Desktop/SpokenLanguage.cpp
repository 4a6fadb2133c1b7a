#include "TarnlyApp/Desktop/SpokenLanguage.hpp"

#include <QCoreApplication>
#include <QStringList>

namespace tarnly::test {

SpokenLanguage::SpokenLanguage(const char* language) {
    qputenv("TARNLY_TRANSLATIONS", TARNLY_TEST_TRANSLATIONS);
    translations_.emplace(QStringList{language});
    QCoreApplication::processEvents(); // the windows turn
}

SpokenLanguage::~SpokenLanguage() { qunsetenv("TARNLY_TRANSLATIONS"); }

} // namespace tarnly::test

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QLocale>
#include <exception>
#include <iostream>
#include <variant>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyApp/CompanionRuntime.hpp"
#include "TarnlyApp/Desktop/DesktopApplication.hpp"
#include "TarnlyApp/Desktop/Display.hpp"
#include "TarnlyApp/Desktop/QuitSignals.hpp"
#include "TarnlyApp/Desktop/SingleInstance.hpp"
#include "TarnlyApp/Desktop/Translations.hpp"
#include "TarnlyApp/EndWatch.hpp"
#include "TarnlyPlatform/Base/FreedMemory.hpp"
#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

/// The application's icon in all its sizes.
QIcon applicationIcon() {
    QIcon icon;
    const QDir sizes(u":/icons"_s);
    for (const auto& name : sizes.entryList()) {
        icon.addFile(sizes.filePath(name));
    }
    return icon;
}

int complain(const char* text) {
    std::cerr << "tarnly: " << text << std::endl;
    return 1;
}

int runApplication(const CompanionOptions& options, const char* program) {
    if (!hasDisplay()) return complain("there is no display; tarnlyd runs without one");
    int argc = 1; // the options are ours, not Qt's
    char* argv[] = {const_cast<char*>(program), nullptr};
    QApplication::setApplicationName(u"Tarnly"_s);
    QApplication::setDesktopFileName(u"tarnly"_s);
    QApplication application(argc, argv);
    QApplication::setWindowIcon(applicationIcon());
    const Translations translations(QLocale::system().uiLanguages());

    SingleInstance instance(SingleInstance::runtimeFolder());
    switch (instance.claim(!options.startsInBackground)) {
        case SingleInstance::Outcome::first:
        case SingleInstance::Outcome::unknown: // no reason to fail a lesson
            break;
        case SingleInstance::Outcome::toldFirst:
            return 0;
        case SingleInstance::Outcome::noAnswer:
            return complain("it is running already, and does not answer; to end it: pkill -x tarnly");
    }
    EndWatch endWatch;
    DesktopApplication app(options, endWatch);
    QObject::connect(&instance, &SingleInstance::panelRequested, &app, &DesktopApplication::showPanel);
    const int status = app.run();
    endWatch.expectEnd(EndWatch::takingDown, status);
    return status;
}

} // namespace
} // namespace tarnly

int main(int argc, char** argv) {
    try {
        tarnly::keepLittleFreedMemory();
        tarnly::failRatherThanEnd();
        tarnly::QuitSignals::block(); // before there are other threads, which inherit it
        const auto parsed = tarnly::prepareRun(tarnly::CompanionProgram::tarnly, argc, argv);
        if (const auto* exit = std::get_if<tarnly::EarlyExit>(&parsed)) {
            (exit->status == 0 ? std::cout : std::cerr) << exit->text;
            return exit->status;
        }
        return tarnly::runApplication(std::get<tarnly::CompanionOptions>(parsed), argv[0]);
    } catch (const std::exception& error) {
        std::cerr << "Failed to start: " << error.what() << std::endl; // there may be no memory for more
        return 1;
    }
}

#include "TarnlyApp/Desktop/Translations.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QLocale>
#include <QTest>
#include <algorithm>
#include <optional>

#include "Support/SimulatorFiles.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyApp/Desktop/AddressesWindow.hpp"
#include "TarnlyApp/Desktop/AttentionIcon.hpp"
#include "TarnlyApp/Desktop/ClientList.hpp"
#include "TarnlyApp/Desktop/ReachWindow.hpp"
#include "TarnlyApp/Desktop/RunningCompanion.hpp"
#include "TarnlyApp/Desktop/SettingsWindow.hpp"
#include "TarnlyApp/Desktop/SpokenLanguage.hpp"
#include "TarnlyApp/Desktop/TrayIcon.hpp"
#include "TarnlyApp/Desktop/Widgets.hpp"
#include "TarnlyApp/Desktop/Wording.hpp"
#include "TarnlyApp/Notices.hpp"
#include "TarnlyApp/SettingRules.hpp"
#include "TarnlyCore/NavData/NavDatabase.hpp"
#include "TarnlyCore/NavSource/NavBuild.hpp"
#include "TarnlyCore/Protocol/ReachTest.hpp"
#include "TarnlyPlatform/Net/ListenError.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

/// Esperanto stands for a language whose letters are all foreign ones, Hebrew for German from right to left.
constexpr const char* foreign = "eo";
constexpr const char* mirrored = "he";

class TranslationsTest : public testing::Test {
  protected:
    TranslationsTest() { qputenv("TARNLY_TRANSLATIONS", TARNLY_TEST_TRANSLATIONS); }
    ~TranslationsTest() override {
        qunsetenv("TARNLY_TRANSLATIONS");
        QLocale::setDefault(QLocale::C);
    }

    void speak(const QStringList& languages) { translations.emplace(languages); }

    /// "Load a flight" in the language that is spoken.
    static std::string word() { return inWords(Phrase::of("load a flight")).toStdString(); }

    std::optional<Translations> translations;
};

TEST_F(TranslationsTest, TheFirstLanguageThatThereIsIsSpoken) {
    const auto wordIn = [this](const QStringList& languages) {
        speak(languages);
        return word();
    };
    EXPECT_EQ(wordIn({"de"}), "laden Sie einen Flug");
    EXPECT_EQ(wordIn({"de-AT", "de"}), "laden Sie einen Flug");
    EXPECT_EQ(wordIn({"fr-FR", "fr", "de"}), "laden Sie einen Flug")
        << "nobody has translated it into French";
    EXPECT_EQ(wordIn({"fr"}), "load a flight");
    EXPECT_EQ(wordIn({"en-GB", "en", "de"}), "load a flight") << "English needs no translation";
    EXPECT_EQ(wordIn({"C"}), "load a flight");
    EXPECT_EQ(wordIn({}), "load a flight");
}

TEST_F(TranslationsTest, EachNumberHasItsForm) {
    const auto sentences = [](std::int64_t count) {
        return inWords(clientsSentence({count, count})).toStdString();
    };
    EXPECT_EQ(sentences(1), "1 client is paired.");
    EXPECT_EQ(sentences(2), "2 clients are paired.");
    speak({"de"});
    EXPECT_EQ(sentences(0), "Kein Gerät ist gekoppelt.");
    EXPECT_EQ(sentences(1), "1 Gerät ist gekoppelt.");
    EXPECT_EQ(sentences(2), "2 Geräte sind gekoppelt.");
}

TEST_F(TranslationsTest, NumbersAreWrittenAsInTheLanguage) {
    RecordingStatus recording;
    recording.samples = 2;
    recording.lastSampleAgeSeconds = 0.4;
    speak({"de"});
    QLocale::setDefault(QLocale("de_DE"));
    EXPECT_EQ(inWords(samplesSentence(recording)), "2 Messpunkte, der letzte vor 0,4 s.");
    EXPECT_EQ(samplesSentence(recording), "2 samples, the last one taken 0.4 s ago.") << "what tools say";
}

TEST_F(TranslationsTest, ALanguageFromRightToLeftTurnsTheWindows) {
    EXPECT_EQ(QGuiApplication::layoutDirection(), Qt::LeftToRight);
    speak({mirrored});
    QCoreApplication::processEvents();
    EXPECT_EQ(QGuiApplication::layoutDirection(), Qt::RightToLeft);
    translations.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(QGuiApplication::layoutDirection(), Qt::LeftToRight);
}

class ForeignTest : public TranslationsTest {
  protected:
    ForeignTest() { speak({foreign}); }

    /// Nobody's name.
    static QStringList plainWords(const QString& text) { return test::plainWords(text); }
    static QStringList plainWords(const Phrase& phrase) { return test::plainWords(inWords(phrase)); }

    static QStringList plainWordsBesideFiles(const Phrase& phrase) {
        static const QRegularExpression file("/[^ :,]*( [Dd]ata[^ :,]*)?|earth_[a-z]+\\.dat");
        return test::plainWords(inWords(phrase).remove(file));
    }

    const test::TemporaryFolder folder;
};

TEST_F(ForeignTest, TellsWhatIsNotTranslated) {
    QLabel label("Not translated by anybody");
    label.setToolTip("Nor this");
    EXPECT_THAT(test::plainWordsOfAllWindows(),
                testing::UnorderedElementsAre("Not", "translated", "by", "anybody", "Nor", "this"));
}

TEST_F(ForeignTest, EveryTextOfEveryWindowIsTranslated) {
    SettingsStore store{folder.path() / "settings.json", nullptr};
    CompanionRuntime runtime{store, {}};
    RuntimeModel model{runtime};
    Panel panel{model};
    AddressesWindow addresses{model};
    ReachWindow reach{model};
    reach.show();
    SettingsWindow settings{store};
    CompanionOptions all;
    all.name = "1";
    all.port = 1;
    all.simulatorHost = "1";
    all.simulatorPort = 1;
    all.situationsFolder = "/1";
    all.navigationDatabase = "/1";
    all.allowedOrigins.push_back(*WebOrigin::parse("http://1"));
    all.advertises = false;
    SettingsWindow overruled{store, all};
    all.advertises = true;
    SettingsWindow advertised{store, all};
    TrayIcon icon{panel, model, false};
    ClientList list;
    QLocale::setDefault(QLocale("de_DE")); // its dates are digits
    list.showClients({7, 7, std::vector<ClientStatus>(7, {1, "10.0.0.1", "2026-11-21T15:04:05Z", 2})});
    panel.setWindowFlags(Qt::Window);
    panel.show();
    panel.close(); // it asks whether to quit
    EXPECT_THAT(test::plainWordsOfAllWindows(), IsEmpty());
    EXPECT_GT(test::textsOfAllWindows().size(), 80) << "they have been looked at";
}

TEST_F(ForeignTest, SoIsWhatIsWrongWithASetting) {
    for (const auto& fault : {nameFault(""), hostFault("["), simulatorPortFault(0), portFault(-1)})
        EXPECT_THAT(plainWords(fault), IsEmpty()) << fault;
    // Examples are the same everywhere.
    EXPECT_THAT(plainWords(originFault("1")), IsEmpty());
    EXPECT_THAT(plainWords(pathFault("1")), IsEmpty());
}

TEST_F(ForeignTest, SoIsWhatIsWrongWithTheSimulatorsNavigationData) {
    using test::navHeader;
    const test::SimulatorFiles files;
    const auto found = [&] { return findNavSources(files.folder.path()); };
    const auto build = [&](const std::string& target) {
        buildNavDatabase(found(), target, {}, [] { return true; });
    };
    files.put("Custom Data/earth_424.dat", "HDR");
    files.put("Custom Data/earth_fix.dat", navHeader("1101"));
    files.put("Custom Data/user_fix.dat", navHeader("600"));
    files.put("Resources/default data/earth_nav.dat", navHeader("1300", "2412"));
    const auto sources = found();
    EXPECT_THAT(sources.warnings, testing::SizeIs(5));
    for (const auto& warning : sources.warnings)
        EXPECT_THAT(plainWordsBesideFiles(warning), IsEmpty()) << warning;

    for (const auto& content :
         {std::string(), std::string("\n"), navHeader("600"), navHeader("1200") + "x\n"}) {
        files.put("Resources/default data/earth_fix.dat", content);
        try {
            build("/nowhere/1");
            FAIL() << content;
        } catch (const NavSourceError& error) {
            EXPECT_THAT(plainWordsBesideFiles(error.told()), IsEmpty()) << error.told();
        }
    }
    EXPECT_THAT(plainWordsBesideFiles(NavTargetError({}, "/1").told()), ElementsAre("Success"))
        << "what the system says";
}

TEST_F(ForeignTest, SoIsWhyAStartFailed) {
    EXPECT_THAT(plainWords(ListenError(1, {}).told()), ElementsAre("Success")) << "what the system says";
    EXPECT_THAT(plainWords(NavDatabaseError("1", "2").told()), IsEmpty());
}

TEST_F(ForeignTest, SoIsEveryStageOfTheSimulator) {
    using Kind = SimulatorStage::Kind;
    for (const auto kind :
         {Kind::notRunning, Kind::refusing, Kind::tooOld, Kind::mainMenu, Kind::flightLoaded, Kind::silent}) {
        SimulatorStage stage;
        stage.kind = kind;
        for (const bool isTimed : {false, true}) {
            if (isTimed) stage.silentSince = Clock::TimePoint();
            CompanionStatus status;
            status.stage = StageStatus::of(stage, Clock::TimePoint(7s));
            EXPECT_THAT(plainWords(stageSentences(*status.stage)), IsEmpty());
            EXPECT_THAT(plainWords(toolTipOf(status)), IsEmpty());
        }
    }
}

TEST_F(ForeignTest, SoIsHowItStands) {
    using Kind = PublicationState::Kind;
    std::vector<std::optional<PublicationState>> publications{std::nullopt};
    for (const auto kind : {Kind::publishing, Kind::published, Kind::noDaemon, Kind::refused})
        publications.push_back(PublicationState{kind, Phrase::verbatim("1")});
    for (const auto& publication : publications) {
        EXPECT_THAT(plainWords(publicationSentence(PublicationStatus::of(publication))), IsEmpty());
        EXPECT_THAT(plainWords(listeningText(1, publication, true)), IsEmpty());
        EXPECT_THAT(plainWords(listeningText(1, publication, false)), IsEmpty());
    }
    RecordingStatus recording;
    EXPECT_THAT(plainWords(recordingSentence({})), IsEmpty());
    EXPECT_THAT(plainWords(recordingSentence(recording)), IsEmpty());
    recording.lastSampleAgeSeconds = 0.4;
    for (recording.samples = 1; recording.samples < 3; ++recording.samples) {
        EXPECT_THAT(plainWords(recordingSentence(recording)), IsEmpty());
        EXPECT_THAT(plainWords(samplesSentence(recording)), IsEmpty());
    }
    EXPECT_THAT(plainWords(failureText(Phrase::verbatim("1"))), IsEmpty());
}

TEST_F(ForeignTest, SoIsWhatCameOfATestOfTheWayHere) {
    const ReachTest test{CompanionStatus()};
    CompanionStatus status;
    std::vector<ReachFinding> findings{ReachTest::neverArrived(status), test.look(status)};
    status.port = 1;
    findings.push_back(ReachTest::neverArrived(status));
    for (const auto visit : {&VisitorsStatus::page, &VisitorsStatus::refused, &VisitorsStatus::paired}) {
        if (!status.visitors) status.visitors.emplace();
        ((*status.visitors).*visit) = VisitStatus{1, "", "10.0.0.3"};
        findings.push_back(test.look(status));
    }
    for (const auto& finding : findings) {
        EXPECT_THAT(plainWords(finding.text), IsEmpty()) << finding.text;
        EXPECT_THAT(plainWords(finding.cure), IsEmpty()) << finding.cure;
    }
}

TEST_F(ForeignTest, SoIsWhatThePersonIsToldUnasked) {
    SystemClock clock;
    Notices notices(clock);
    CompanionStatus status;
    status.clients = {2, 2, std::vector<ClientStatus>{{1, "10.0.0.1", "", 0}, {2, "10.0.0.2", "", 0}}};
    status.visitors.emplace().refused = VisitStatus{2, "", "10.0.0.3"};
    status.recording.emplace().problem = Phrase::verbatim("1");
    const auto told = notices.newIn(status);
    EXPECT_THAT(told, testing::SizeIs(3));
    for (const auto& notice : told) {
        EXPECT_THAT(plainWords(notice.title), IsEmpty()) << notice.title;
        EXPECT_THAT(plainWords(notice.text), IsEmpty()) << notice.text;
    }
}

class ForeignReachTest : public test::RunningCompanionTest {
  protected:
    const test::SpokenLanguage spoken{foreign};
};

TEST_F(ForeignReachTest, SoIsATestWhileItWaitsAndOnceItIsOver) {
    start();
    if (model.addresses().empty()) GTEST_SKIP() << "this computer has no network";
    ReachWindow patient(model);
    patient.show();
    ReachWindow brief(model, 1ms);
    brief.show();
    const auto never = inWords(ReachTest::neverArrived(model.activity()).text).toStdString();
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::ranges::count(test::textsFromTop(brief), never) > 0; },
                                test::patienceMilliseconds));
    EXPECT_THAT(test::plainWordsOfAllWindows(), IsEmpty());
}

} // namespace
} // namespace tarnly

#include <gtest/gtest.h>

#include <future>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyXPlane/BackendFixture.hpp"
#include "TarnlyXPlane/Situations.hpp"

namespace tarnly {
namespace {

using namespace test;
using Case = XPlaneBackendError::Case;

/// These run in real time: the folder is read on a worker thread.
class XPlaneBackendFlightsTest : public BackendFixture {
  protected:
    void TearDown() override {
        EXPECT_TRUE(transport->exchanges.empty()) << "flights need no connection";
        BackendFixture::TearDown();
    }

    template <typename T>
    XPlaneBackendError failureInRealTime(Task<T> task) {
        try {
            runTask(io, std::move(task));
        } catch (const XPlaneBackendError& error) {
            return error;
        }
        throw std::logic_error("the operation succeeded");
    }

    TemporaryFolder folder;
};

TEST_F(XPlaneBackendFlightsTest, WithoutAFolderListingFails) {
    const XPlaneBackendError expected(Case::situationsDirectoryNotConfigured);
    EXPECT_EQ(failureInRealTime(backend->listFlights()), expected);
    backend->setSituationsDirectory(folder.path().string());
    backend->setSituationsDirectory(std::nullopt);
    EXPECT_EQ(failureInRealTime(backend->listFlights()), expected);
}

TEST_F(XPlaneBackendFlightsTest, ListsTheSituationsOfTheFolder) {
    const auto path = folder.write("a.sit", "").string();
    folder.write("b.txt", "");
    folder.write("c.SIT", "");
    backend->setSituationsDirectory(folder.path().string());
    const auto flights = runTask(io, backend->listFlights());
    ASSERT_EQ(flights.size(), 1U);
    EXPECT_EQ(flights[0].name, "a");
    EXPECT_EQ(flights[0].path, path);
}

TEST_F(XPlaneBackendFlightsTest, MissingFolderHasNoFlights) {
    backend->setSituationsDirectory((folder.path() / "missing").string());
    EXPECT_TRUE(runTask(io, backend->listFlights()).empty());
}

TEST_F(XPlaneBackendFlightsTest, FailureToListIsPassedOn) {
    backend->setSituationsDirectory(folder.write("file", "").string());
    EXPECT_THROW(runTask(io, backend->listFlights()), std::filesystem::filesystem_error);
}

TEST_F(XPlaneBackendFlightsTest, LoadingSendsOneDatagramWithTheFileName) {
    runTask(io, backend->loadFlight(folder.write("Pattern 1.sit", "").string()));
    ASSERT_EQ(transport->datagrams.size(), 1U);
    EXPECT_EQ(transport->datagrams[0].endpoint, (Endpoint{"127.0.0.1", 49000}));
    EXPECT_EQ(transport->datagrams[0].bytes, buildSimoLoadSituationPacket("Output/situations/Pattern 1.sit"));
}

TEST_F(XPlaneBackendFlightsTest, MissingFlightIsNotLoaded) {
    const auto path = (folder.path() / "none.sit").string();
    EXPECT_EQ(failureInRealTime(backend->loadFlight(path)), XPlaneBackendError(Case::flightNotFound, path));
    EXPECT_EQ(failureInRealTime(backend->loadFlight("")), XPlaneBackendError(Case::flightNotFound, ""));
    EXPECT_TRUE(transport->datagrams.empty());
}

TEST_F(XPlaneBackendFlightsTest, FailureToSendIsPassedOn) {
    transport->onDatagram = [] { throw NetworkError(NetworkError::Case::sendFailed, "x"); };
    EXPECT_THROW(runTask(io, backend->loadFlight(folder.write("a.sit", "").string())), NetworkError);
}

TEST_F(XPlaneBackendFlightsTest, ANameThatIsNotUtf8IsLeftOutWithOneWarning) {
    folder.write("a.sit", "");
    folder.write("b\xFF.sit", "");
    std::vector<Phrase> warnings;
    backend->onWarning([&](const Phrase& text) { warnings.push_back(text); });
    backend->setSituationsDirectory(folder.path().string());
    EXPECT_EQ(runTask(io, backend->listFlights()).size(), 1U);
    EXPECT_EQ(runTask(io, backend->listFlights()).size(), 1U);
    EXPECT_EQ(warnings, std::vector<Phrase>{
                            Phrase::verbatim("Saved flights in " + folder.path().string() +
                                             " whose names are not UTF-8 are left out (1); give them other "
                                             "names.")});
    EXPECT_EQ(backend->warnings(), warnings);
    std::filesystem::remove(folder.path() / "b\xFF.sit");
    runTask(io, backend->listFlights());
    EXPECT_TRUE(backend->warnings().empty());
}

TEST_F(XPlaneBackendFlightsTest, AFolderThatNobodyCanLookIntoIsToldOnce) {
    std::vector<Phrase> warnings;
    backend->onWarning([&](const Phrase& text) { warnings.push_back(text); });
    const auto tooLong = folder.path() / std::string(5000, 'x');
    backend->setSituationsDirectory(tooLong.string());
    EXPECT_TRUE(runTask(io, backend->listFlights()).empty());
    EXPECT_TRUE(runTask(io, backend->listFlights()).empty());
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_TRUE(warnings[0].text().starts_with("The saved flights in " + tooLong.string() +
                                               " cannot be listed: File name too long. "))
        << warnings[0];
}

TEST_F(XPlaneBackendFlightsTest, AListingThatFailsIsToldBesides) {
    std::vector<Phrase> warnings;
    backend->onWarning([&](const Phrase& text) { warnings.push_back(text); });
    backend->setSituationsDirectory((folder.path() / "missing").string());
    runTask(io, backend->listFlights());
    EXPECT_TRUE(warnings.empty()) << "a folder that is not there has no flights";
    backend->setSituationsDirectory(folder.write("file", "").string());
    EXPECT_THROW(runTask(io, backend->listFlights()), std::filesystem::filesystem_error);
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_NE(warnings[0].text().find("Not a directory"), std::string::npos) << warnings[0];
    EXPECT_EQ(backend->warnings(), warnings);
    backend->setSituationsDirectory(folder.path().string());
    EXPECT_TRUE(backend->warnings().empty()) << "it is another folder now";
}

/// Files on a mount that hangs until the test lets it go on.
struct HungMount {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();

    XPlaneBackend::Situations situations() const {
        XPlaneBackend::Situations hung;
        hung.list = [released = released](const std::string& directory) {
            released.wait();
            return listSituations(directory);
        };
        hung.exists = [released = released](const std::string& path) {
            released.wait();
            return situationExists(path);
        };
        return hung;
    }
};

TEST_F(XPlaneBackendFlightsTest, AMountThatHangsIsWaitedForFiveSeconds) {
    HungMount mount;
    const auto path = folder.write("a.sit", "").string();
    const Endpoint endpoint{"127.0.0.1", 8086};
    backend = std::make_shared<XPlaneBackend>(io.get_executor(), endpoint, transport, clock, workers, 1,
                                              mount.situations());
    backend->setSituationsDirectory(folder.path().string());
    const XPlaneBackendError expected(Case::timeout, "situations");
    const auto begin = clock.now();
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->listFlights()), expected);
    EXPECT_EQ(clock.now() - begin, 5s);
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->listFlights()), expected);
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->loadFlight(path)), expected);
    EXPECT_STREQ(expected.what(), "timeout(\"situations\")");
    mount.release.set_value();
    EXPECT_EQ(runTask(io, backend->listFlights()).size(), 1U);
    runTask(io, backend->loadFlight(path));
    EXPECT_EQ(transport->datagrams.size(), 1U);
}

TEST_F(XPlaneBackendFlightsTest, AMountThatHangsDoesNotKeepTheBackendFromEnding) {
    HungMount mount;
    const Endpoint endpoint{"127.0.0.1", 8086};
    backend = std::make_shared<XPlaneBackend>(io.get_executor(), endpoint, transport, clock, workers, 1,
                                              mount.situations());
    backend->setSituationsDirectory(folder.path().string());
    EXPECT_THROW(run(backend->listFlights()), XPlaneBackendError);
    TearDown();
    backend.reset();
    mount.release.set_value();
}

} // namespace
} // namespace tarnly

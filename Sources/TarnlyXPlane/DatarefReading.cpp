#include "TarnlyXPlane/DatarefReading.hpp"

#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <utility>

#include "TarnlyXPlane/Datarefs.hpp"
#include "TarnlyXPlane/Link/LinkFailure.hpp"

namespace tarnly {
namespace {

using Case = XPlaneBackendError::Case;

/// Names between which others get their turn.
constexpr std::size_t namesAtOnce = 256;
/// The same of names whose ids are known.
constexpr std::size_t looksAtOnce = 4096;

Task<> letOthersRun() {
    auto executor = co_await boost::asio::this_coro::executor;
    co_await boost::asio::post(executor, boost::asio::use_awaitable);
}

/// One name of a request. Small and plain: there may be a million.
struct Wanted {
    std::optional<std::int64_t> index;
    std::int64_t id = 0;
    std::optional<double> value;

    void look(const ValueCache& values) {
        if (!value) value = index ? values.element(id, *index) : values.scalar(id);
    }
};

/// The dataref that is meant: the name without its index.
std::string datarefOf(const std::string& name) {
    auto indexed = parseIndexedName(name);
    if (!indexed) return name;
    return std::move(indexed->base);
}

/// Absent for a name that the catalogue does not have.
std::optional<Wanted> findWanted(WebApiLink& link, const std::string& name) {
    const auto indexed = parseIndexedName(name);
    const auto id = link.datarefs().idOf(indexed ? indexed->base : name);
    if (!id) return std::nullopt;
    Wanted wanted;
    if (indexed) wanted.index = indexed->index;
    wanted.id = *id;
    wanted.look(link.values());
    return wanted;
}

/// Looks until all have their values, or that has taken too long: at once when values come, but through long
/// lists at intervals only.
Task<> waitForAll(std::shared_ptr<WebApiLink> link, Clock& clock, std::vector<Wanted>& wanted) {
    const auto deadline = clock.now() + datarefPatience;
    while (!link->hasEnded()) {
        std::size_t missing = 0;
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            wanted[i].look(link->values());
            if (!wanted[i].value) ++missing;
            if (i % looksAtOnce == looksAtOnce - 1) {
                co_await letOthersRun();
            }
        }
        if (missing == 0 || clock.now() >= deadline || link->hasEnded()) co_return;
        if (wanted.size() < looksAtOnce) {
            co_await WebApiLink::moreValues(link, deadline);
        } else {
            co_await clock.sleepFor(datarefLookInterval);
        }
    }
}

} // namespace

Task<std::optional<std::int64_t>> findId(std::shared_ptr<WebApiLink> link, Catalogue& catalogue,
                                         std::string name) {
    auto id = catalogue.idOf(name);
    if (id) co_return id;
    co_await link->refresh(catalogue);
    co_return catalogue.idOf(name);
}

std::optional<std::vector<double>> presentValues(WebApiLink& link, const std::vector<std::string>& names) {
    if (names.size() > namesAtOnce) return std::nullopt;
    std::vector<double> values;
    values.reserve(names.size());
    for (const auto& name : names) {
        const auto found = findWanted(link, name);
        if (!found || !found->value) return std::nullopt;
        values.push_back(*found->value);
    }
    return values;
}

XPlaneBackendError unknownName(const WebApiLink& link, Case which, const std::string& name) {
    if (!link.isAtMainMenu()) return {which, name};
    SimulatorStage stage;
    stage.kind = SimulatorStage::Kind::mainMenu;
    return {Case::timeout, name + ": the simulator is at its main menu: " + stageAdvice(stage).text()};
}

Task<std::vector<double>> readDatarefs(std::shared_ptr<WebApiLink> link, Clock& clock,
                                       std::shared_ptr<const std::vector<std::string>> names) {
    std::vector<Wanted> wanted;
    wanted.reserve(names->size());
    std::vector<std::int64_t> missing;
    bool isOneUnknown = false;
    for (const auto& name : *names) {
        auto next = findWanted(*link, name);
        if (!next) {
            co_await link->refresh(link->datarefs());
            next = findWanted(*link, name);
        }
        isOneUnknown = !next;
        if (isOneUnknown) break;
        if (!next->value) missing.push_back(next->id);
        wanted.push_back(*next);
        if (wanted.size() % namesAtOnce == 0) {
            co_await letOthersRun();
        }
    }
    if (!missing.empty()) {
        co_await link->subscribe(std::move(missing));
        co_await waitForAll(link, clock, wanted);
    }
    std::vector<double> values;
    values.reserve(wanted.size());
    for (const auto& each : wanted) {
        if (!each.value && link->hasEnded()) {
            throw LinkEnded(NetworkError::Case::connectionClosed, link->webSocketUrl());
        }
        if (!each.value) throw XPlaneBackendError(Case::timeout, datarefOf((*names)[values.size()]));
        values.push_back(*each.value);
        if (values.size() % looksAtOnce == 0) {
            co_await letOthersRun();
        }
    }
    if (isOneUnknown) throw unknownName(*link, Case::unknownDataref, datarefOf((*names)[wanted.size()]));
    co_return values;
}

} // namespace tarnly

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

Task<> letOthersRun() {
    auto executor = co_await boost::asio::this_coro::executor;
    co_await boost::asio::post(executor, boost::asio::use_awaitable);
}

/// One name of a request.
struct Wanted {
    std::string dataref;
    std::optional<std::int64_t> index;
    std::int64_t id = 0;
    std::optional<double> value;

    void look(const ValueCache& values) {
        if (!value) value = index ? values.element(id, *index) : values.scalar(id);
    }
};

Wanted wantedBy(const std::string& name) {
    auto indexed = parseIndexedName(name);
    if (!indexed) return {name, std::nullopt, 0, std::nullopt};
    return {std::move(indexed->base), indexed->index, 0, std::nullopt};
}

/// Looks until all have their values, or that has taken too long.
Task<> waitForAll(WebApiLink& link, Clock& clock, std::vector<Wanted>& wanted) {
    std::vector<Wanted*> missing;
    for (auto& each : wanted) {
        if (!each.value) missing.push_back(&each);
    }
    for (int looks = 1; !missing.empty(); ++looks) {
        std::erase_if(missing, [&](Wanted* each) {
            each->look(link.values());
            return each->value.has_value();
        });
        if (missing.empty() || looks == datarefLooks || link.hasEnded()) co_return;
        co_await clock.sleepFor(datarefLookInterval);
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
        auto next = wantedBy(name);
        const auto id = link.datarefs().idOf(next.dataref);
        if (!id) return std::nullopt;
        next.id = *id;
        next.look(link.values());
        if (!next.value) return std::nullopt;
        values.push_back(*next.value);
    }
    return values;
}

XPlaneBackendError unknownName(const WebApiLink& link, Case which, const std::string& name) {
    if (!link.isAtMainMenu()) return {which, name};
    SimulatorStage stage;
    stage.kind = SimulatorStage::Kind::mainMenu;
    return {Case::timeout, name + ": the simulator is at its main menu: " + stageAdvice(stage)};
}

Task<std::vector<double>> readDatarefs(std::shared_ptr<WebApiLink> link, Clock& clock,
                                       std::shared_ptr<const std::vector<std::string>> names) {
    std::vector<Wanted> wanted;
    wanted.reserve(names->size());
    std::vector<std::int64_t> missing;
    std::optional<std::string> missed;
    for (const auto& name : *names) {
        auto next = wantedBy(name);
        const auto id = co_await findId(link, link->datarefs(), next.dataref);
        if (!id) {
            missed = next.dataref;
            break;
        }
        next.id = *id;
        next.look(link->values());
        if (!next.value) missing.push_back(*id);
        wanted.push_back(std::move(next));
        if (wanted.size() % namesAtOnce == 0) {
            co_await letOthersRun();
        }
    }
    if (!missing.empty()) {
        co_await link->subscribe(std::move(missing));
        co_await waitForAll(*link, clock, wanted);
    }
    std::vector<double> values;
    values.reserve(wanted.size());
    for (const auto& each : wanted) {
        if (!each.value && link->hasEnded()) {
            throw LinkEnded(NetworkError::Case::connectionClosed, link->webSocketUrl());
        }
        if (!each.value) throw XPlaneBackendError(Case::timeout, each.dataref);
        values.push_back(*each.value);
    }
    if (missed) throw unknownName(*link, Case::unknownDataref, *missed);
    co_return values;
}

} // namespace tarnly

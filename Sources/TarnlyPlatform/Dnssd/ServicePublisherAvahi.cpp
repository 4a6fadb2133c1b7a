#include "TarnlyPlatform/Dnssd/ServicePublisher.hpp"

#include <avahi-client/client.h>
#include <avahi-client/publish.h>
#include <avahi-common/error.h>
#include <avahi-common/simple-watch.h>
#include <avahi-common/strlst.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <future>
#include <new>
#include <optional>
#include <system_error>

#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/StartThread.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds withdrawalPatience{500};
constexpr std::chrono::milliseconds retryInterval{2000};

using SimplePoll = std::unique_ptr<AvahiSimplePoll, decltype(&avahi_simple_poll_free)>;
using Client = std::unique_ptr<AvahiClient, decltype(&avahi_client_free)>;
using StringList = std::unique_ptr<AvahiStringList, decltype(&avahi_string_list_free)>;

/// Wakes a thread that polls, once and for good. Safe from any thread.
class StopEvent {
  public:
    StopEvent() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    StopEvent(const StopEvent&) = delete;
    StopEvent& operator=(const StopEvent&) = delete;
    ~StopEvent() { ::close(descriptor_); }

    void raise() { ::eventfd_write(descriptor_, 1); }
    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

SimplePoll newPoll() {
    SimplePoll poll(avahi_simple_poll_new(), avahi_simple_poll_free);
    if (!poll) throw std::system_error(errno, std::generic_category(), "avahi_simple_poll_new");
    return poll;
}

/// The entries, the last one first: the daemon turns the list that it is handed around.
StringList txtRecord(const std::vector<std::pair<std::string, std::string>>& entries) {
    AvahiStringList* list = nullptr;
    for (const auto& [key, value] : entries) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(value.data());
        list = avahi_string_list_add_pair_arbitrary(list, key.c_str(), bytes, value.size());
    }
    return {list, avahi_string_list_free};
}

/// Why the service does not stand, and what helps.
Phrase unreachable(int error) {
    return Phrase::of("the DNS-SD daemon (Avahi) cannot be reached: %1; install or start avahi-daemon",
                      avahi_strerror(error));
}

Phrase refused(int error) {
    return Phrase::of(
        "the DNS-SD daemon (Avahi) refuses the service: %1; look into its log, or restart avahi-daemon",
        avahi_strerror(error));
}

} // namespace

/// The talk with the daemon: everything but `stop`, `hasEnded`, `state` and `onChange` belongs to the one
/// thread that runs it. Where the daemon refuses something or is gone, it begins again with a new client
/// after a while.
class ServicePublisher::Worker {
  public:
    explicit Worker(PublishedService service)
        : service_(std::move(service)), name_(cutServiceName(wellFormedUtf8(service_.name))) {}

    void run() {
        const auto* api = avahi_simple_poll_get(poll_.get());
        auto* watch = api->watch_new(api, stop_.descriptor(), AVAHI_WATCH_IN, onStop, this);
        if (watch == nullptr) throw std::bad_alloc();
        reconnect();
        while (!stopped_ && avahi_simple_poll_iterate(poll_.get(), millisecondsToRetry()) == 0) {
            if (retryAt_ && SteadyClock::now() >= *retryAt_) reconnect();
        }
        disconnect();
        api->watch_free(watch);
        ended_.set_value();
    }

    void stop() { stop_.raise(); }

    bool hasEnded(std::chrono::milliseconds patience) {
        return ended_.get_future().wait_for(patience) == std::future_status::ready;
    }

    PublicationState state() const { return state_.copy(); }

    /// When it returns, what was to be called before is called no more.
    void onChange(std::function<void()> tell) {
        tell_.with([&](auto& told) { told = std::move(tell); });
    }

  private:
    using Kind = PublicationState::Kind;

    static void onStop(AvahiWatch*, int, AvahiWatchEvent, void* self) {
        static_cast<Worker*>(self)->stopped_ = true;
    }

    static void onClientState(AvahiClient* client, AvahiClientState state, void* self) {
        static_cast<Worker*>(self)->clientStateChanged(client, state);
    }

    static void onGroupState(AvahiEntryGroup* group, AvahiEntryGroupState state, void* self) {
        static_cast<Worker*>(self)->groupStateChanged(group, state);
    }

    void reconnect() {
        disconnect();
        // A daemon that is not there is waited for, but a bus that is not there is an error. Calls
        // onClientState before it returns.
        const auto* api = avahi_simple_poll_get(poll_.get());
        int error = AVAHI_OK;
        client_.reset(avahi_client_new(api, AVAHI_CLIENT_NO_FAIL, onClientState, this, &error));
        if (!client_) retryLater(Kind::noDaemon, unreachable(error));
    }

    /// Freeing the client withdraws the service.
    void disconnect() {
        retryAt_.reset();
        // What was in the way still is, for all we know.
        if (state_.copy().kind == Kind::published) setState(Kind::publishing);
        group_ = nullptr;
        client_.reset();
    }

    void retryLater(Kind kind, Phrase reason) {
        setState(kind, std::move(reason));
        retryAt_ = SteadyClock::now() + retryInterval;
    }

    int millisecondsToRetry() const {
        if (!retryAt_) return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*retryAt_ - SteadyClock::now());
        return std::max(0, static_cast<int>(left.count()));
    }

    void clientStateChanged(AvahiClient* client, AvahiClientState state) {
        switch (state) {
            case AVAHI_CLIENT_S_RUNNING:
                publish(client);
                break;
            // The host gets another name, which the service's records refer to.
            case AVAHI_CLIENT_S_REGISTERING:
            case AVAHI_CLIENT_S_COLLISION:
                withdraw();
                break;
            case AVAHI_CLIENT_FAILURE:
                retryLater(Kind::noDaemon, unreachable(avahi_client_errno(client)));
                break;
            case AVAHI_CLIENT_CONNECTING:
                setState(Kind::noDaemon, unreachable(AVAHI_ERR_NO_DAEMON));
                break;
        }
    }

    void groupStateChanged(AvahiEntryGroup* group, AvahiEntryGroupState state) {
        switch (state) {
            case AVAHI_ENTRY_GROUP_ESTABLISHED:
                setState(Kind::published, Phrase::verbatim(name_));
                break;
            case AVAHI_ENTRY_GROUP_COLLISION:
                name_ = nextServiceName(name_);
                publish(avahi_entry_group_get_client(group));
                break;
            case AVAHI_ENTRY_GROUP_FAILURE:
                retryLater(Kind::refused, refused(avahi_client_errno(avahi_entry_group_get_client(group))));
                break;
            case AVAHI_ENTRY_GROUP_UNCOMMITED:
            case AVAHI_ENTRY_GROUP_REGISTERING:
                setState(Kind::publishing);
                break;
        }
    }

    void withdraw() {
        setState(Kind::publishing);
        if (group_ != nullptr) avahi_entry_group_reset(group_);
    }

    void publish(AvahiClient* client) {
        withdraw();
        if (group_ == nullptr) group_ = avahi_entry_group_new(client, onGroupState, this);
        if (group_ == nullptr) return retryLater(Kind::refused, refused(avahi_client_errno(client)));
        int result = addService();
        for (; result == AVAHI_ERR_COLLISION; result = addService())
            name_ = nextServiceName(name_);
        if (result == AVAHI_OK) result = avahi_entry_group_commit(group_);
        if (result != AVAHI_OK) retryLater(Kind::refused, refused(result));
    }

    int addService() {
        const auto txt = txtRecord(service_.txt);
        return avahi_entry_group_add_service_strlst(
            group_, AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, static_cast<AvahiPublishFlags>(0), name_.c_str(),
            service_.type.c_str(), nullptr, nullptr, service_.port, txt.get());
    }

    void setState(Kind kind, Phrase text = {}) {
        PublicationState next{kind, std::move(text)};
        if (next == state_.copy()) return;
        state_.with([&](PublicationState& state) { state = std::move(next); });
        tell_.with([](const auto& tell) {
            if (tell) tell();
        });
    }

    // Constant after construction
    const PublishedService service_;

    // With synchronization of their own
    StopEvent stop_;
    std::promise<void> ended_;
    Guarded<PublicationState> state_;
    Guarded<std::function<void()>> tell_;

    // The thread's own
    std::string name_;
    SimplePoll poll_ = newPoll();
    Client client_{nullptr, avahi_client_free}; // depends-on: poll_
    AvahiEntryGroup* group_ = nullptr;          // the client's
    std::optional<SteadyClock::time_point> retryAt_;
    bool stopped_ = false;
};

ServicePublisher::ServicePublisher(PublishedService service)
    : worker_(std::make_shared<Worker>(std::move(service))),
      thread_(startThread([worker = worker_] { worker->run(); })) {}

ServicePublisher::~ServicePublisher() {
    worker_->onChange(nullptr);
    worker_->stop();
    if (worker_->hasEnded(withdrawalPatience)) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

PublicationState ServicePublisher::state() const { return worker_->state(); }

void ServicePublisher::onChange(std::function<void()> tell) { worker_->onChange(std::move(tell)); }

std::string ServicePublisher::publishedName() const {
    const auto present = state();
    return present.kind == PublicationState::Kind::published ? present.text.text() : std::string();
}

} // namespace tarnly

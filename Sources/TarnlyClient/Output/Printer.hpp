#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyClient/Companion/CompanionMessages.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"
#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyPlatform/Dnssd/ServiceBrowser.hpp"

namespace tarnly::client {

/// Prints results: for people, or for programs as one JSON object a line. Each line is flushed.
class Printer {
  public:
    Printer(std::ostream& stream, bool json) : stream_(stream), json_(json) {}

    void line(std::string_view text);

    /// "name=value" on a line each, the form that `set` takes. Here and below in the order of `names`; a name
    /// without a value is left out.
    void values(const std::vector<std::string>& names, const Values& values);

    /// The same values on one line.
    void push(const std::vector<std::string>& names, const Values& values);

    void ok();

    void simulator(const std::string& sim, const std::string& version);

    void companion(const FoundService& service);

    void flight(const FlightListing& flight);

    /// What a check of the script `file` has found.
    void finding(const std::string& file, const ScriptFinding& finding);

    /// A sample or a fired trigger; for programs in the form of the recording's log.
    void recorded(const LogLine& line);

  private:
    std::ostream& stream_;
    bool json_;
};

} // namespace tarnly::client

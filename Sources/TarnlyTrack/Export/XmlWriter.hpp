#pragma once

#include <memory>
#include <string>

#include "TarnlyTrack/Output/TextSink.hpp"

namespace tarnly::track {

/// Writes an XML 1.0 document in UTF-8, element by element, to a sink that outlives it. For one thread.
///
/// A document in memory would take several times the text that it becomes, hundreds of megabytes for a day's
/// flight. What XML cannot hold, as most control characters, becomes U+FFFD. Each call throws what the sink
/// has thrown, and `TrackError` where there is no memory.
class XmlWriter {
  public:
    explicit XmlWriter(TextSink& sink);
    XmlWriter(const XmlWriter&) = delete;
    XmlWriter& operator=(const XmlWriter&) = delete;
    ~XmlWriter();

    void begin(const char* element);
    void end();
    /// Of the element that has just begun.
    void attribute(const char* name, const std::string& value);
    void text(const std::string& text);
    /// An element that has nothing but text.
    void element(const char* name, const std::string& text);

    /// Ends all that is open.
    void finish();

  private:
    struct State;
    void check(int result) const;

    std::unique_ptr<State> state_;
};

} // namespace tarnly::track

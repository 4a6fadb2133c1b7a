#pragma once

#include <boost/json/value.hpp>
#include <span>
#include <string_view>

namespace tarnly {

/// What is wanted of a JSON value: the rest of its text is checked, and builds nothing.
///
/// What has the wrong kind stands there with that kind, and empty: `[]` or `{}` for a container where a
/// scalar or the other container is wanted. So whoever decodes the value finds the same faults as in the
/// whole.
struct JsonShape {
    struct Member {
        std::string_view key;
        const JsonShape* shape;
    };
    enum class Kind {
        whole,  // everything
        scalar, // anything but a container
        object, // of the members that `members` names
        list    // an array, of whose elements `element` is wanted
    };

    Kind kind = Kind::whole;
    std::span<const Member> members;
    const JsonShape* element = nullptr;
};

/// Takes the elements of a list one by one, so that they need not be there all at once.
class JsonElements {
  public:
    virtual ~JsonElements() = default;

    /// A list begins. What has come belongs to an earlier one of the same key, which does not count.
    virtual void restart() = 0;

    /// The next element.
    virtual void add(const boost::json::value& element) = 0;
};

} // namespace tarnly

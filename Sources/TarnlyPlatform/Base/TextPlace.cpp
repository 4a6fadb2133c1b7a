#include "TarnlyPlatform/Base/TextPlace.hpp"

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {

TextPlace TextPlaces::at(std::size_t offset) {
    for (; walked_ < offset && walked_ < text_.size(); ++walked_) {
        if (text_[walked_] == '\n') {
            place_ = {place_.line + 1, 1};
        } else if (walked_ + 1 >= text_.size() || !isContinuation(text_[walked_ + 1])) {
            ++place_.column; // the character ends here
        }
    }
    return place_;
}

} // namespace tarnly

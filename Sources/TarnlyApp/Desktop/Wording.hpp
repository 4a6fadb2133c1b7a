#pragma once

#include <QString>

#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// What the companion says, in the language of the windows, with its numbers. Needs a `QCoreApplication`.
QString inWords(const Phrase& phrase);

} // namespace tarnly

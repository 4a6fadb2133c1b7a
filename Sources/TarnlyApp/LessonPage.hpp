#pragma once

#include <filesystem>

#include "TarnlyPlatform/Net/WebPages.hpp"

namespace tarnly {

/// The page that the companion's port shows to a browser: a client of the companion, for phones and tablets
/// without an application. Its list of failures is the file `failures.json` of the data folder, where there
/// is one of at most 256 KiB. Reads that file.
WebPages lessonPages(const std::filesystem::path& dataFolder);

/// The files of the page, as web/page/build has made them.
WebPages builtLessonPages();

} // namespace tarnly

#include "TarnlyApp/OwnNavDatabase.hpp"

#include <new>
#include <system_error>

#include "TarnlyCore/NavData/NavAbout.hpp"
#include "TarnlyCore/NavSource/NavBuild.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyXPlane/SimulatorFolder.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;

void refresh(NavDatabaseFile& own, const fs::path& folder, const fs::path& file,
             const std::function<bool()>& isWanted, const std::function<void()>& onMaking) {
    const auto sources = findNavSources(folder);
    own.warnings = sources.warnings;
    if (readNavAbout(file.string()) == sources.about()) return;
    onMaking();
    createPrivateFolders(file.parent_path());
    own.remarks = buildNavDatabase(sources, file, {}, isWanted).remarks;
}

Phrase failureText(const fs::path& folder, const Phrase& problem) {
    return Phrase::of(
        "No navigation database could be made of the data in %1, so scripts find the fixes of an older one "
        "at best: %2 Mend that and start Tarnly anew, or name a database in the settings.",
        printable(folder.string()), problem);
}

bool isThere(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error);
}

} // namespace

NavDatabaseFile refreshOwnNavDatabase(const fs::path& note, const fs::path& file,
                                      const std::function<bool()>& isWanted,
                                      const std::function<void()>& onMaking) {
    NavDatabaseFile own;
    if (const auto folder = findSimulatorFolder(note, hasNavData)) {
        try {
            refresh(own, *folder, file, isWanted, onMaking);
        } catch (const NavSourceError& error) {
            if (error.which() == NavSourceError::Case::cancelled) throw;
            own.warnings.push_back(failureText(*folder, error.told()));
        } catch (const NavTargetError& error) {
            own.warnings.push_back(failureText(*folder, error.told()));
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& error) {
            own.warnings.push_back(failureText(*folder, Phrase::verbatim(printable(error.what()) + ".")));
        }
    }
    if (!isThere(file)) return own;
    own.path = file;
    own.cycle = lookAtNavDatabase(file).cycle;
    return own;
}

NavDatabaseFile lookAtNavDatabase(const fs::path& file) {
    NavDatabaseFile found{file};
    if (const auto about = readNavAbout(file.string())) found.cycle = about->cycle;
    return found;
}

} // namespace tarnly

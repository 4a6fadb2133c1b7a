#include "TarnlyCore/NavSource/NavBuild.hpp"

#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

#include "TarnlyCore/NavSource/NavOrder.hpp"
#include "TarnlyCore/NavSource/NavText.hpp"
#include "TarnlyCore/NavSource/NavWriter.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;

/// Entries, ten times those of the world: a file with more is none of navigation data.
constexpr std::size_t most = 4'000'000;

constexpr std::size_t pieceSize = 64 * 1024;
constexpr std::size_t entriesBetweenLooks = 2000;

/// Reading takes about a third of the time, writing the rest.
constexpr int percentRead = 35;

/// Removes a file unless it has been given its name.
class Unfinished {
  public:
    explicit Unfinished(const fs::path& target) : made_(fileBeside(target)), target_(target) {}
    ~Unfinished() {
        if (!isDone_) removeFile(made_.path);
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    std::string path() const { return made_.path.string(); }

    void finish() {
        constexpr auto everybody =
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read | fs::perms::others_read;
        if (!made_.file.flush())
            throw std::system_error(errno, std::generic_category(), printable(target_.string()));
        fs::permissions(made_.path, everybody);
        fs::rename(made_.path, target_);
        isDone_ = true;
        flushFolder(target_.parent_path());
    }

  private:
    static NewFile fileBeside(const fs::path& target) {
        try {
            return NewFile::beside(target);
        } catch (const std::system_error& error) {
            throw NavTargetError(error.code(), target);
        }
    }

    const NewFile made_;
    const fs::path target_;
    bool isDone_ = false;
};

class Build {
  public:
    Build(const NavSources& sources, const NavBuildProgress& progress, const std::function<bool()>& isWanted)
        : sources_(sources), progress_(progress), isWanted_(isWanted) {
        for (const auto& file : sources.files)
            bytes_ += static_cast<std::uint64_t>(file.stamp.size);
    }

    NavBuildReport run(const fs::path& target) {
        for (auto file = sources_.files.rbegin(); file != sources_.files.rend(); ++file)
            read(*file);
        const auto entries = order_.take();
        Unfinished made(target);
        write(entries, made.path());
        made.finish();
        return std::move(report_);
    }

  private:
    void read(const NavSource& source) {
        const bool isUsers = source.layer == NavSource::Layer::users;
        std::ifstream stream(source.path, std::ios::binary);
        NavText text(source.kind, [&](NavEntry entry) { order_.add(std::move(entry), isUsers); });
        std::string piece(pieceSize, '\0');
        while (stream && !text.isOver()) {
            goOn();
            stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
            const auto count = static_cast<std::size_t>(stream.gcount());
            text.feed(std::string_view(piece).substr(0, count));
            read_ += count;
            if (order_.size() > most)
                throw unusable(source, Phrase::of("has more entries than there are in the world"));
            tell(static_cast<int>(percentRead * read_ / (bytes_ + 1)));
        }
        if (stream.bad() || !stream.is_open())
            throw unusable(source, Phrase::of("cannot be read to its end"));
        text.finish();
        const bool isOver = source.layer != NavSource::Layer::base;
        if (text.entries() == 0 && text.unreadable() > 0 && !isOver)
            throw unusable(source, Phrase::of("has no row that can be read"));
        if (isOver) order_.overrideLater();
        noteUnreadable(source, text);
    }

    NavSourceError unusable(const NavSource& source, const Phrase& problem) const {
        return {NavSourceError::Case::unusable, Phrase::of("%1 %2. Have the navigation data installed anew.",
                                                           printable(source.path.string()), problem)};
    }

    void noteUnreadable(const NavSource& source, const NavText& text) {
        if (text.unreadable() == 0) return;
        report_.remarks.push_back(printable(source.path.string()) + ": " + std::to_string(text.unreadable()) +
                                  (text.unreadable() == 1 ? " row" : " rows") +
                                  " could not be read and left out, the first in line " +
                                  std::to_string(text.firstUnreadableLine()) + ".");
    }

    void write(const std::vector<NavOrder::Ranked>& entries, const std::string& path) {
        NavWriter writer(path);
        std::size_t count = 0;
        for (const auto& ranked : entries) {
            if (count % entriesBetweenLooks == 0) {
                goOn();
                tell(percentRead + static_cast<int>((100 - percentRead) * count / entries.size()));
            }
            ++count;
            writer.add(ranked.entry);
            ++countOf(ranked.entry.kind);
        }
        writer.finish(sources_.about());
        tell(100);
    }

    std::size_t& countOf(NavKind kind) {
        if (kind == NavKind::fix) return report_.fixes;
        return kind == NavKind::airport ? report_.airports : report_.navaids;
    }

    void goOn() const {
        if (!isWanted_()) throw NavSourceError(NavSourceError::Case::cancelled);
    }

    void tell(int percent) {
        if (percent == told_) return;
        told_ = percent;
        if (progress_) progress_(percent);
    }

    const NavSources& sources_;
    const NavBuildProgress& progress_;
    const std::function<bool()>& isWanted_;
    NavOrder order_;
    NavBuildReport report_;
    std::uint64_t bytes_ = 0;
    std::uint64_t read_ = 0;
    int told_ = -1;
};

} // namespace

NavTargetError::NavTargetError(std::error_code why, const fs::path& target)
    : std::system_error(why, printable(target.string()) + " cannot be written"),
      told_(Phrase::of("%1 cannot be written: %2.", printable(target.string()), why.message())) {}

NavBuildReport buildNavDatabase(const NavSources& sources, const fs::path& target,
                                const NavBuildProgress& progress, const std::function<bool()>& isWanted) {
    return Build(sources, progress, isWanted).run(target);
}

} // namespace tarnly

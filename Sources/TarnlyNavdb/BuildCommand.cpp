#include <CLI/App.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "TarnlyCore/NavSource/NavBuild.hpp"
#include "TarnlyCore/NavSource/NavSources.hpp"
#include "TarnlyNavdb/CommandLine.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyXPlane/SimulatorFolder.hpp"

namespace tarnly::navdb {
namespace {

namespace fs = std::filesystem;

struct BuildOptions {
    std::optional<fs::path> simulatorFolder;
    fs::path output;
};

fs::path wantedFolder(const BuildOptions& options) {
    if (options.simulatorFolder) return *options.simulatorFolder;
    const auto note = simulatorInstallerNote();
    if (auto folder = findSimulatorFolder(note, hasNavData)) return *folder;
    throw UsageError(
        "no simulator is found by " + note.string() +
        ", the note of its installer; give the simulator's folder: tarnly-navdb build FOLDER -o FILE");
}

/// Shows how far it is, on one line of a terminal.
class ProgressLine {
  public:
    explicit ProgressLine(const Streams& streams) : streams_(streams) {}
    ~ProgressLine() {
        if (isShown_) streams_.err << "\r\x1b[K" << std::flush;
    }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(int percent) {
        if (!streams_.isErrATerminal) return;
        isShown_ = true;
        streams_.err << "\rReading and writing: " << percent << " %" << std::flush;
    }

  private:
    const Streams& streams_;
    bool isShown_ = false;
};

NavBuildReport build(const NavSources& sources, const fs::path& output, const Streams& streams) {
    ProgressLine line(streams);
    return buildNavDatabase(
        sources, output, [&](int percent) { line.show(percent); }, [] { return true; });
}

std::string issueOf(const NavSources& sources) {
    std::string text = sources.cycle.empty() ? "of a cycle that nobody tells" : "cycle " + sources.cycle;
    if (!sources.build.empty()) text += ", build " + sources.build;
    return text;
}

void run(const Context& context, const BuildOptions& options) {
    const auto& streams = context.streams;
    const auto sources = findNavSources(wantedFolder(options));
    for (const auto& warning : sources.warnings)
        streams.remark("warning: " + warning.text());
    const auto report = build(sources, options.output, streams);
    for (const auto& remark : report.remarks)
        streams.remark("warning: " + remark);
    streams.out << printable(options.output.string()) << ": " << report.fixes << " fixes, " << report.navaids
                << " navaids, " << report.airports << " airports, " << issueOf(sources) << ", from "
                << printable(sources.folder.string()) << std::endl;
}

} // namespace

void addBuildCommand(CLI::App& app, Context& context) {
    auto* command = app.add_subcommand("build", "Make a database of the simulator's navigation data");
    const auto options = std::make_shared<BuildOptions>();
    command->add_option("FOLDER", options->simulatorFolder,
                        "The simulator's folder, where its installer notes it when not given");
    command->add_option("-o,--output", options->output, "The database to write, in place of what is there")
        ->type_name("FILE")
        ->required();
    command->callback([&context, options] {
        if (options->output.empty()) throw UsageError("--output: a file's name is wanted");
        run(context, *options);
    });
}

} // namespace tarnly::navdb

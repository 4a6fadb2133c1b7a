#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

#include "Support/SimulatorFiles.hpp"
#include "TarnlyCore/NavData/SqliteFile.hpp"
#include "TarnlyCore/NavSource/NavBuild.hpp"

/// What the navigation data of the world cost. What must hold: 330,000 entries become a database within three
/// seconds, which is no more than eight times what it takes to put the bare rows into a table.
namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr int fixes = 255'000;
constexpr int navaids = 44'000;
constexpr int airports = 31'000;

/// Five letters that mean nothing; names come again in other regions, as in the world.
std::string identOf(int number) {
    std::string ident;
    for (unsigned rest = static_cast<unsigned>(number) % 180'000 * 2'654'435U % 11'881'376U; ident.size() < 5;
         rest /= 26)
        ident += static_cast<char>('A' + rest % 26);
    return ident;
}

template <typename... Arguments>
std::string row(const char* format, Arguments... arguments) {
    char text[200];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

double latitudeOf(int number) { return number % 17'000 / 100.0 - 85; }
double longitudeOf(int number) { return number % 35'900 / 100.0 - 179.5; }

void makeWorld(const test::SimulatorFiles& files) {
    auto text = test::navHeader("1200");
    for (int i = 0; i < fixes; ++i) {
        const auto ident = identOf(i);
        text += row("%14.9f %14.9f  %s %s %c%c 2105431 %s\n", latitudeOf(i), longitudeOf(i), ident.c_str(),
                    i % 3 == 0 ? "ENRT" : "ZZTA", 'A' + i % 26, 'A' + i / 26 % 26, ident.c_str());
    }
    files.put("Resources/default data/earth_fix.dat", text + "99\n");
    text = test::navHeader("1200");
    for (int i = 0; i < navaids; ++i) {
        text += row("%2d %14.9f %14.9f  610  11430  130  2.500 %s ENRT %c%c %s VOR/DME\n", i % 2 + 2,
                    latitudeOf(i), longitudeOf(i), identOf(i).substr(0, 3).c_str(), 'A' + i % 26,
                    'A' + i / 26 % 26, identOf(i).c_str());
    }
    files.put("Resources/default data/earth_nav.dat", text + "99\n");
    text = test::navHeader("1210");
    for (int i = 0; i < airports; ++i)
        text += row("%s %c%c %13.9f %14.9f 190 C 7900 I 5000 -1\n", identOf(i).substr(0, 4).c_str(),
                    'A' + i % 26, 'A' + i / 26 % 26, latitudeOf(i), longitudeOf(i));
    files.put("Resources/default data/earth_aptmeta.dat", text + "99\n");
}

/// The rows as they are, without looking into them.
double secondsOfBareRows(const NavSources& sources, const std::filesystem::path& file) {
    const auto start = SteadyClock::now();
    std::ofstream(file, std::ios::trunc).flush();
    SqliteFile database(file.string(), SqliteFile::Mode::fill);
    database.execute("CREATE TABLE lines (text TEXT, lat REAL, lon REAL); BEGIN");
    SqliteStatement insert(database, "INSERT INTO lines VALUES (?1, ?2, ?3)");
    for (const auto& source : sources.files) {
        std::ifstream stream(source.path);
        for (std::string line; std::getline(stream, line);) {
            insert.bind(1, line);
            insert.bind(2, 1.5);
            insert.bind(3, 2.5);
            insert.step();
            insert.reset();
        }
    }
    database.execute("COMMIT");
    return std::chrono::duration<double>(SteadyClock::now() - start).count();
}

void navigationDataOfTheWorld(benchmark::State& state) {
    const test::SimulatorFiles files;
    makeWorld(files);
    const auto sources = findNavSources(files.folder.path());
    double ours = 0;
    double bare = 0;
    std::size_t entries = 0;
    for (auto _ : state) {
        const auto start = SteadyClock::now();
        const auto report =
            buildNavDatabase(sources, files.folder.path() / "nav.db", {}, [] { return true; });
        ours += std::chrono::duration<double>(SteadyClock::now() - start).count();
        entries = report.fixes + report.navaids + report.airports;
        state.PauseTiming();
        bare += secondsOfBareRows(sources, files.folder.path() / "bare.db");
        state.ResumeTiming();
    }
    state.counters["entries"] = static_cast<double>(entries);
    state.counters["ratio_to_bare_rows"] = ours / bare;
}

BENCHMARK(navigationDataOfTheWorld)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace tarnly

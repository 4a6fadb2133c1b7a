#include "Report.hpp"

#include <ctime>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <system_error>

namespace tarnly::load {

double quantile(std::vector<double>& values, double share) {
    if (values.empty()) return 0;
    const auto last = static_cast<double>(values.size() - 1);
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(last * share);
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

double processorSeconds(pid_t process) {
    if (process == 0) return 0;
    clockid_t clock{};
    timespec time{};
    if (const int error = clock_getcpuclockid(process, &clock); error != 0)
        throw std::system_error(error, std::generic_category(), "clock_getcpuclockid");
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double residentKibibytes(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:")) return std::stod(line.substr(6));
    return 0;
}

void print(const std::vector<std::pair<std::string_view, double>>& figures) {
    std::string text = "{";
    for (const auto& [name, value] : figures) {
        char number[40];
        std::snprintf(number, sizeof number, "%.9g", value);
        if (text.size() > 1) text += ", ";
        text.append("\"").append(name).append("\": ").append(number);
    }
    std::puts((text + "}").c_str());
}

} // namespace tarnly::load

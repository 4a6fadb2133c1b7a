#pragma once

#include <sys/types.h>

#include <string_view>
#include <utility>
#include <vector>

namespace tarnly::load {

/// The value that a share (0 to 1) of `values` does not exceed; 0 when there is none. Sorts them partly.
double quantile(std::vector<double>& values, double share);

/// Seconds of processor time that a process has taken, its threads together; 0 for process 0.
double processorSeconds(pid_t process);

/// Resident memory of a process in KiB; 0 for process 0.
double residentKibibytes(pid_t process);

/// Prints the figures as one JSON object in one line.
void print(const std::vector<std::pair<std::string_view, double>>& figures);

} // namespace tarnly::load

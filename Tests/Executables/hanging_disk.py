"""A disk that hangs for as long as a test wants it to."""

import contextlib
import os
import subprocess

import pytest
from harness import is_instrumented, wait_until

# While the file that DISK_HANGS names is there, no write to a log comes back (or, as its content says, no flush). Who
# hangs leaves word beside it.
SOURCE = """
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

static bool hangs(const char* call) {
    char what[16] = {};
    const int order = open(getenv("DISK_HANGS"), O_RDONLY);
    if (order < 0) return false;
    const ssize_t length = read(order, what, sizeof what - 1);
    close(order);
    return length > 0 && std::strcmp(what, call) == 0;
}

static void wait(int file, const char* call) {
    char link[64];
    char path[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t length = readlink(link, path, sizeof path);
    if (length < 6 || std::memcmp(path + length - 6, ".jsonl", 6) != 0 || !hangs(call)) return;
    close(open((std::string(getenv("DISK_HANGS")) + ".noticed").c_str(), O_CREAT | O_WRONLY, 0600));
    while (hangs(call)) usleep(20000);
}

extern "C" ssize_t write(int file, const void* bytes, size_t size) {
    wait(file, "write");
    static const auto next = reinterpret_cast<ssize_t (*)(int, const void*, size_t)>(dlsym(RTLD_NEXT, "write"));
    return next(file, bytes, size);
}

extern "C" int fdatasync(int file) {
    wait(file, "flush");
    static const auto next = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fdatasync"));
    return next(file);
}
"""


class HangingDisk:
    """`environment` is for the program that is to live with it."""

    def __init__(self, folder):
        if is_instrumented():
            pytest.skip("a sanitizer has to be loaded first")
        source, library = folder / "hang.cpp", folder / "hang.so"
        source.write_text(SOURCE)
        subprocess.run(["c++", "-D_GNU_SOURCE", "-shared", "-fPIC", "-o", library, source, "-ldl"], check=True)
        self._order, self._noticed = folder / "order", folder / "order.noticed"
        self.environment = {"LD_PRELOAD": str(library), "DISK_HANGS": str(self._order)}

    def hang(self, call):
        """From now on no `write`, or no `flush`, comes back; waits until the first one hangs."""
        written = self._order.with_suffix(".new")
        written.write_text(call)
        os.replace(written, self._order)
        wait_until(self._noticed.exists, f"a {call} that hangs")

    def come_back(self):
        with contextlib.suppress(FileNotFoundError):
            self._noticed.unlink()
        self._order.unlink()

"""A start on a system that starts too few threads: a clear failure, and neither a hang nor an abort."""

import re
import subprocess
import time

import pytest
from harness import PATIENCE

FAILING = """
#include <dlfcn.h>
#include <pthread.h>
#include <atomic>
#include <cerrno>
#include <cstdlib>

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* given) {
    static std::atomic<int> asked{0};
    if (++asked >= std::atoi(std::getenv("FAILING_FROM"))) return EAGAIN;
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto next = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, body, given);
}
"""


@pytest.fixture(scope="module")
def failing_threads(tmp_path_factory):
    folder = tmp_path_factory.mktemp("threads")
    source, library = folder / "failing.cpp", folder / "failing.so"
    source.write_text(FAILING)
    subprocess.run(["c++", "-D_GNU_SOURCE", "-shared", "-fPIC", "-o", library, source, "-ldl"], check=True)
    return library


def test_a_start_that_lacks_any_thread_fails_clearly(programs, failing_threads):
    failures = 0
    for first in range(1, 40):
        program = programs.start("tarnlyd", "--data-dir", programs.new_folder(), "--sim-port", 1, "--no-advertise",
                                 LD_PRELOAD=failing_threads, FAILING_FROM=str(first))
        if listens(program):
            break
        program.expected_status = 1
        assert re.fullmatch(r"Failed to start: the system starts no more threads \(.*\); end some programs, or raise the "
                            r"limit of processes \(ulimit -u\)\n", program.errors())
        failures += 1
    assert failures >= 3, "the pools and the recorder have threads"


def listens(program):
    """Whether it serves; false when it has ended, and with the right status."""
    deadline = time.monotonic() + PATIENCE
    while program.process.poll() is None and time.monotonic() < deadline:
        if any(line.startswith("Listening") for line in program.output()):
            return True
        time.sleep(0.01)
    assert program.wait() == 1
    return False

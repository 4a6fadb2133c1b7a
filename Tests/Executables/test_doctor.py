"""tarnly-client doctor: what keeps a lesson from working, and what to do."""

import json
import os
import re
import subprocess
import sys
import time
from pathlib import Path

import pytest
from harness import is_instrumented, reserved_port
from two_hosts import NotPermitted, TwoHosts

STEPS = ["companion", "warnings", "published", "reachable", "pairing", "simulator", "values", "situations",
         "navigation database", "disk", "settings"]
# In proportion to it the doctor waits for what usually takes no time.
PATIENCE = ("--timeout", 60)


def folder_of(companion):
    arguments = companion.program.process.args
    return Path(arguments[arguments.index("--data-dir") + 1])


class Findings:
    def __init__(self, ended):
        self.status = ended.status
        self.errors = ended.errors
        self.all = [json.loads(line) for line in ended.output.splitlines()]

    def __getitem__(self, step):
        return [finding for finding in self.all if finding["step"] == step][0]

    def steps(self):
        """Each once: there may be several addresses. What tells of help is none."""
        found = dict.fromkeys(finding["step"] for finding in self.all)
        found.pop("troubleshooting", None)
        return list(found)

    def amiss(self):
        return {finding["step"] for finding in self.all if finding.get("ok") is False}


def examine(programs, folder, *arguments, **options):
    return Findings(programs.run("tarnly-client", "--json", *PATIENCE, "doctor", "--data-dir", folder, *arguments,
                                 **options))


@pytest.fixture
def simulator(programs):
    return programs.simulator("--start", "cruise")[1]


def test_with_a_flight_and_everything_set_up_nothing_of_ours_is_amiss(programs, simulator):
    situations = programs.new_folder()
    (situations / "Pattern.sit").write_text("")
    companion = programs.companion("--situations", situations, sim_port=simulator)
    found = examine(programs, folder_of(companion))
    assert found.steps() == STEPS
    assert found.amiss() <= {"reachable"}  # a computer without a network has no address
    assert "1 saved flights" in found["situations"]["text"]
    assert "version 12" in found["simulator"]["text"]
    assert found["values"]["ok"] and found["settings"]["ok"] and found["disk"]["ok"]
    assert "ok" not in found["published"]  # --no-advertise is no fault


def test_people_get_a_line_with_a_mark_and_the_cure_below(programs):
    companion = programs.companion()
    ended = programs.run("tarnly-client", *PATIENCE, "doctor", "--data-dir", folder_of(companion))
    assert ended.status == 1
    lines = ended.output.splitlines()
    assert lines[0] == f"ok  companion: {companion.status_line}"
    place = [number for number, line in enumerate(lines) if line.startswith("!!  simulator: ")][0]
    assert lines[place + 1].startswith("      Start X-Plane")
    assert "docs/troubleshooting.md" in lines[-1]
    assert re.fullmatch(r"tarnly-client: \d+ steps? needs? your attention", ended.error_lines[0])


def test_without_a_companion_the_rest_is_looked_at(programs, simulator):
    found = examine(programs, programs.new_folder(), "--sim-port", simulator)
    assert found.status == 1 and found.amiss() == {"companion"}
    assert "docs/troubleshooting.md" in found["troubleshooting"]["text"]
    assert "start tarnly or tarnlyd" in found["companion"]["cure"]
    assert found["simulator"]["ok"] and found["disk"]["ok"] and found["settings"]["ok"]


@pytest.mark.parametrize("option, words, cure", [
    ("--main-menu", "main menu", "Load a flight."),
    ("--traffic-disabled", "Refuses connections", "Allow incoming traffic"),
    ("--too-old", "Too old", "12.1.4 or later"),
])
def test_the_simulator_is_asked_directly(programs, option, words, cure):
    _, port = programs.simulator(option)
    found = examine(programs, programs.new_folder(), "--sim-port", port)["simulator"]
    assert not found["ok"] and words in found["text"] and cure in found["cure"]


def test_a_simulator_that_does_not_run(programs):
    with reserved_port() as port:
        found = examine(programs, programs.new_folder(), "--sim-port", port)["simulator"]
    assert "Not running" in found["text"] and "Start X-Plane" in found["cure"]


def test_the_password_is_taken_from_the_settings(programs, simulator):
    settings = {"password": "secret", "startAtLogin": False}
    companion = programs.companion(sim_port=simulator, settings=settings)
    folder = folder_of(companion)
    found = examine(programs, folder)
    assert found["pairing"]["text"] == "A password is asked for." and found["values"]["ok"]
    (folder / "settings.json").write_text(json.dumps(settings | {"password": "another"}))
    assert "restart it" in examine(programs, folder)["values"]["cure"]
    (folder / "settings.json").unlink()
    found = examine(programs, folder)
    assert "ok" not in found["values"] and "--password-file" in found["values"]["cure"]


def test_settings_and_files_that_cannot_be_used(programs):
    folder = programs.new_folder()
    (folder / "settings.json").write_text("{")
    found = examine(programs, folder)
    assert found.amiss() >= {"companion", "settings"}
    assert "no password" in found["settings"]["cure"]
    no_folder = programs.new_folder() / "file"
    no_folder.write_text("")
    assert not examine(programs, no_folder)["disk"]["ok"]


def test_another_computers_companion_is_judged_from_here_only(programs):
    companion = programs.companion()
    found = Findings(programs.run("tarnly-client", "--json", *PATIENCE, "--host", "127.0.0.1", "--port",
                                  companion.port, "doctor"))
    assert found.amiss() == {"values"}  # its simulator is not there
    assert found["reachable"]["ok"]
    for step in ("companion", "published", "simulator", "disk", "settings"):
        assert "ok" not in found[step], step


def test_the_doctor_ends_in_time_whoever_is_silent(programs):
    companion = programs.companion()
    os.kill(companion.program.pid, 19)
    started = time.monotonic()
    ended = programs.run("tarnly-client", "--timeout", 1, "doctor", "--data-dir", folder_of(companion))
    assert ended.status == 1 and "does not answer" in ended.output
    assert time.monotonic() - started < 40  # 1.5 s are meant
    os.kill(companion.program.pid, 18)


# What hangs, as on a mount whose server has gone, or as where no name server answers: whatever leads to a file of the
# folder DOCTOR_HANGS, and the look for the address of any name.
HANGING = """
#include <dlfcn.h>
#include <netdb.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

static void hangAt(const char* path) {
    const char* folder = getenv("DOCTOR_HANGS");
    while (folder != nullptr && path != nullptr && std::strncmp(path, folder, std::strlen(folder)) == 0) sleep(1000);
}

template <typename Call> static Call* next(const char* name) { return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name)); }

extern "C" int connect(int file, const sockaddr* address, socklen_t size) {
    if (address->sa_family == AF_UNIX) hangAt(reinterpret_cast<const sockaddr_un*>(address)->sun_path);
    return next<int(int, const sockaddr*, socklen_t)>("connect")(file, address, size);
}

extern "C" int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const int mode = va_arg(more, int);
    va_end(more);
    hangAt(path);
    return next<int(const char*, int, ...)>("open")(path, flags, mode);
}

extern "C" int lstat(const char* path, struct stat* found) {
    hangAt(path);
    return next<int(const char*, struct stat*)>("lstat")(path, found);
}

extern "C" int stat(const char* path, struct stat* found) {
    hangAt(path);
    return next<int(const char*, struct stat*)>("stat")(path, found);
}

extern "C" int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo**) {
    for (;;) sleep(1000);
}
"""


@pytest.fixture
def hanging(programs):
    """The environment of a program for which these things hang."""
    if is_instrumented():
        pytest.skip("a sanitizer has to be loaded first")
    folder = programs.new_folder()
    source, library = folder / "hang.cpp", folder / "hang.so"
    source.write_text(HANGING)
    subprocess.run(["c++", "-D_GNU_SOURCE", "-shared", "-fPIC", "-o", library, source, "-ldl"], check=True)
    return {"LD_PRELOAD": str(library)}


def test_the_doctor_ends_in_time_where_the_data_folder_hangs(programs, simulator, hanging):
    companion = programs.companion(sim_port=simulator, settings={"password": "secret", "startAtLogin": False})
    folder = folder_of(companion)
    hanging["DOCTOR_HANGS"] = str(folder)
    ended = programs.start("tarnly-client", "--json", "--timeout", 5, "doctor", "--data-dir", folder, "--sim-port",
                           simulator, **hanging)
    status = ended.wait()
    ended.expected_status = status
    found = {finding["step"]: finding for finding in map(json.loads, ended.output())}
    assert status == 1 and "does not answer" in found["companion"]["text"]
    assert found["simulator"]["ok"]
    for step in ("disk", "settings"):
        assert "does not answer" in found[step]["text"] and "mount" in found[step]["cure"], step


def test_who_asks_for_the_status_waits_no_longer_than_was_said(programs, hanging):
    folder = programs.new_folder()
    hanging["DOCTOR_HANGS"] = str(folder)
    for program in (["tarnly-client", "--timeout", 1, "status"], ["tarnlyd", "--status"]):
        ended = programs.run(*program, "--data-dir", folder, **hanging)
        assert ended.status == 1 and "does not answer" in ended.errors, program


def test_the_doctor_ends_in_time_where_names_are_not_looked_up(programs, hanging):
    ended = programs.run("tarnly-client", "--json", "--timeout", 5, "--host", "companion.example", "--port", 28086,
                         "doctor", "--sim-host", "simulator.example", **hanging)
    found = Findings(ended)
    assert found.amiss() == {"reachable", "simulator"}
    assert "nothing came back in time" in found["reachable"]["text"]


@pytest.fixture
def hosts():
    try:
        with TwoHosts() as hosts:
            yield hosts
    except NotPermitted as reason:
        pytest.skip(f"no network namespaces here: {reason}")


class Reach:
    """A companion on one of two computers, on which somebody waits for a device."""

    def __init__(self, programs, hosts, *arguments, settings=None):
        self._hosts = hosts
        self.companion = programs.companion(prefix=hosts.near.prefix, settings=settings)
        self.folder = folder_of(self.companion)
        self.program = programs.start("tarnly-client", *PATIENCE, "doctor", "--reach", "--data-dir", self.folder,
                                      *arguments, prefix=hosts.near.prefix)
        self.program.expected_status = None

    def far(self, *arguments):
        """What a device says of its attempt."""
        command = [*self._hosts.far.prefix, sys.executable, "-B", Path(__file__).parent / "far_browser.py",
                   self._hosts.ADDRESSES[0], self.companion.port, *arguments]
        done = subprocess.run(list(map(str, command)), capture_output=True, text=True, timeout=120, check=True)
        return done.stdout.strip()

    def end(self):
        """The last lines, and the exit status."""
        status = self.program.wait()
        self.program.expected_status = status
        return status, self.program.output()


def test_a_device_that_opens_the_page_is_fine(programs, hosts):
    reach = Reach(programs, hosts)
    reach.program.wait_for_line("^Waiting")
    assert reach.far() == "200"
    status, lines = reach.end()
    assert status == 0
    assert lines[1] == f"  http://10.77.0.1:{reach.companion.port}/"
    assert sum("█" in line for line in lines) > 10  # the QR code
    assert lines[-1] == "ok  reach: 10.77.0.2 has reached this computer, and was shown the page."


def test_a_device_with_a_wrong_password_has_arrived(programs, hosts):
    reach = Reach(programs, hosts, settings={"password": "secret", "startAtLogin": False})
    reach.program.wait_for_line("^Waiting")
    assert reach.far("wrong") == "False"
    status, lines = reach.end()
    assert status == 1
    assert lines[-3:-1] == ["!!  reach: 10.77.0.2 has reached this computer, and its password was refused.",
                          "      Enter the password that stands in the companion's settings; upper and lower case "
                          "count."]


def test_where_nothing_arrives_there_are_two_causes(programs, hosts):
    reach = Reach(programs, hosts, "--wait", "0.5")
    status, lines = reach.end()
    assert status == 1
    assert lines[-3].startswith("!!  reach: Nobody has reached this computer")
    assert "firewall" in lines[-2] and "Wi-Fi" in lines[-2] and str(reach.companion.port) in lines[-2]
    assert "docs/troubleshooting.md" in lines[-1]


def test_who_was_there_before_does_not_count(programs, hosts):
    reach = Reach(programs, hosts)
    reach.program.wait_for_line("^Waiting")
    assert reach.far("any") == "True"
    assert reach.end()[0] == 0
    again = programs.start("tarnly-client", *PATIENCE, "doctor", "--reach", "--wait", "0.5", "--data-dir",
                           reach.folder)
    again.expected_status = 1
    assert again.wait() == 1


def test_all_is_well_on_a_computer_with_a_network(programs, hosts):
    _, port = programs.simulator(prefix=hosts.near.prefix)
    companion = programs.companion(sim_port=port, prefix=hosts.near.prefix)
    found = examine(programs, folder_of(companion), prefix=hosts.near.prefix)
    assert found.status == 0 and found.amiss() == set() and found.errors == ""
    assert not any(finding["step"] == "troubleshooting" for finding in found.all)
    assert found["reachable"]["text"].startswith(f"10.77.0.1:{companion.port} answers.")


def test_reach_is_for_this_computer_and_a_time_for_reach(programs):
    for arguments in (["--host", "127.0.0.1", "--port", "1", "doctor", "--reach"], ["doctor", "--wait", "1"]):
        ended = programs.run("tarnly-client", *arguments)
        assert ended.status == 2 and len(ended.error_lines) == 1, arguments

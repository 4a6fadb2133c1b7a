"""walk.py --root DIR --person NAME --suite SUITE [--group DIR] [--table FILE]

The first minutes with the package that is installed in a folder, case by case; its end is a table. What sets that
folder up, and starts this in namespaces of its own, is scripts/first-minutes. Without a group of processes for it, or
where it does not come up, there is no service manager.
"""

import argparse
import contextlib
import json
import pathlib
import shutil
import sys
import time

import words
from computers import RIG_ADDRESS, BareRig, Computer, Failure, ManagedRig, join_by_a_cable, wait_for

USUAL_PORT, CHOSEN_PORT = 28086, 28090
PASSWORD = "pattern altitude"
LATITUDE = "sim/flightmodel/position/latitude"
PERSON, GUEST = 1000, 65534
# Of the stand-in for the simulator, and how the companion calls that.
STATES = {
    "no simulator": (None, "not_running"),
    "traffic disabled": (["--traffic-disabled"], "refusing"),
    "too old": (["--too-old"], "too_old"),
    "main menu": (["--main-menu"], "main_menu"),
    "flight": ([], "flight_loaded"),
}


class Walk:
    def __init__(self, rig, tablet, home):
        self._rig, self._tablet, self._home = rig, tablet, home
        self._data = home / ".local/share/Tarnly"
        self._empty = home.parent.parent / "srv"
        self._simulator = None
        self.rows = []

    def all(self):
        for password in (None, PASSWORD):
            with self._companion(password=password):
                for state in STATES:
                    with self._state(state):
                        self._try(state, password)
        with self._companion(password=PASSWORD), self._state("flight"):
            self._try("flight, no password given", PASSWORD, given=None)
            self._try("flight, wrong password given", PASSWORD, given="pattern attitude")
        self._ports()
        with self._no_dnssd(), self._companion(), self._state("flight"):
            self._try("no DNS-SD daemon")
        with self._read_only_home(), self._companion(), self._state("flight", is_told=False):
            self._try("read-only home")
        with self._state("flight", is_told=False):
            self._try("companion not started")

    def _ports(self):
        with self._taken(USUAL_PORT), self._companion(), self._state("flight"):
            self._try("usual port taken")
        # It is started again and again: what it says at each start is the same.
        with self._taken(CHOSEN_PORT), self._companion(settings={"port": CHOSEN_PORT}, comes_up=False), \
                self._state("flight", is_told=False):
            wait_for("words about the port", lambda: str(CHOSEN_PORT) in self._rig.journal())
            self._try("chosen port taken", port=CHOSEN_PORT)

    @contextlib.contextmanager
    def _companion(self, password=None, settings=None, comes_up=True):
        """As at its very first start, but for the settings."""
        shutil.rmtree(self._data, ignore_errors=True)
        settings = dict(settings or {}, **({"password": password} if password else {}))
        if settings:
            ended = self._rig.run("install", "-d", "-m", "700", f"/home/{self._home.name}/.local/share/Tarnly")
            assert ended.returncode == 0, ended
            file = self._data / "settings.json"
            file.write_text(json.dumps(dict(settings, startAtLogin=False)))
            shutil.chown(file, PERSON, PERSON)
            file.chmod(0o600)
        self._rig.start_companion()
        try:
            if comes_up:
                wait_for("the companion listens", lambda: "Listening on port" in self._rig.journal())
                time.sleep(1)
            yield
        finally:
            self._rig.stop_companion()

    @contextlib.contextmanager
    def _state(self, name, is_told=True):
        options, stage = STATES[name]
        if options is not None:
            self._simulator = self._rig.start(["tarnly-sim", *options])
        try:
            # What the status says then is judged, also where it is not that.
            with contextlib.suppress(Failure):
                wait_for(f"the stage {stage}", lambda: is_told and self._stage() == stage, 5)
            yield
        finally:
            if options is not None:
                self._simulator.terminate()
                self._simulator.wait()

    def _stage(self):
        return (self._rig.status() or {}).get("stage", {}).get("name")

    @contextlib.contextmanager
    def _taken(self, port):
        """By another program, which answers in its own way."""
        holder = self._rig.start_of_ours([sys.executable, "-m", "http.server", "--directory", str(self._empty),
                                          str(port)])
        try:
            wait_for("another program", lambda: not self._is_free(port))
            yield
        finally:
            holder.terminate()
            holder.wait()

    def _is_free(self, port):
        return self._rig.run("sh", "-c", f"! grep -qi ':{port:04X} ' /proc/self/net/tcp").returncode == 0

    @contextlib.contextmanager
    def _no_dnssd(self):
        self._rig.stop_dnssd()
        try:
            yield
        finally:
            self._rig.start_dnssd()

    @contextlib.contextmanager
    def _read_only_home(self):
        shutil.rmtree(self._data, ignore_errors=True)
        home = f"/home/{self._home.name}"
        assert self._rig.run("mount", "--bind", home, home, user=None).returncode == 0
        assert self._rig.run("mount", "-o", "remount,bind,ro", home, user=None).returncode == 0
        try:
            yield
        finally:
            self._rig.run("umount", home, user=None)

    def _try(self, case, password=None, given="the same", port=USUAL_PORT):
        given = password if given == "the same" else given
        texts = {"status": self._words("status"), "doctor": self._words("doctor"), "journal": self._rig.journal()}
        ways = {"discovery": [], "typed address": ["--host", RIG_ADDRESS, "--port", str(port)]}
        for way, options in ways.items():
            paired, attempt = self._attempt(options, given)
            self.rows.append(words.row_of(case, password is not None, way, paired, dict(texts, attempt=attempt)))
            print("ok   " if not self.rows[-1].wrong else "WRONG", case, way, flush=True)

    def _words(self, command):
        ended = self._rig.run("tarnly-client", command)
        return ended.stdout + ended.stderr

    def _attempt(self, options, password):
        """Whether the tablet pairs, and the words that it shows: why not, or what it gets then."""
        options = ["--timeout", "4", *options]
        if password is not None:
            file = "/tmp/password"
            written = self._tablet.run("sh", "-c", f'printf "%s\\n" "$0" >{file}', password)
            assert written.returncode == 0, written
            options += ["--password-file", file]
        paired = self._tablet.run("tarnly-client", *options, "info")
        if paired.returncode != 0:
            return False, paired.stdout + paired.stderr
        value = self._tablet.run("tarnly-client", *options, "get", LATITUDE)
        return True, value.stdout + value.stderr


@contextlib.contextmanager
def rig_of(options, log):
    """One with a service manager, where that comes up here."""
    home = (PERSON, f"/home/{options.person}")
    why = "no group of processes can be made for it"
    if options.group:
        managed = ManagedRig(options.root, "rig42", home, log, options.group)
        try:
            managed.__enter__()
        except Failure as failure:
            why = str(failure)
        else:
            print("The companion runs as a service of the person's own service manager.")
            with contextlib.ExitStack() as stack:
                stack.push(managed)
                yield managed
            return
    print(f"No service manager runs here ({why}): the unit's ExecStart is started without one.")
    with BareRig(options.root, "rig42", home, log) as bare:
        yield bare


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=pathlib.Path, required=True)
    parser.add_argument("--person", required=True)
    parser.add_argument("--suite", required=True)
    parser.add_argument("--group")
    parser.add_argument("--table", type=pathlib.Path)
    options = parser.parse_args()
    begun = time.monotonic()
    with open(options.root.parent / "computers.log", "w") as log, rig_of(options, log) as rig, \
            Computer(options.root, "tablet", (GUEST, "/tmp"), log) as tablet:
        join_by_a_cable(rig, tablet)
        walk = Walk(rig, tablet, options.root / "home" / options.person)
        walk.all()
    table = f"\n### {options.suite}\n\n{words.table(walk.rows)}"
    print(table)
    if options.table:
        with open(options.table, "a") as file:
            file.write(table)
    wrong = [(row, complaint) for row in walk.rows for complaint in row.wrong]
    for row, complaint in wrong:
        print(f"WRONG: {row.case}, {row.way}: {complaint}")
    print(f"{len(walk.rows)} cases, {len(wrong)} complaints, in {time.monotonic() - begun:.0f} s")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

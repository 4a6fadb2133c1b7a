"""Two computers on one cable, each in namespaces of its own: the simulator's, where the companion runs, and a tablet.

Both have their programs from the folder that the package was installed in. What they start ends with them, and they end
with who uses them.
"""

import json
import os
import pathlib
import re
import shlex
import subprocess
import time

HERE = pathlib.Path(__file__).resolve().parent
RIG_ADDRESS, TABLET_ADDRESS = "10.77.0.1", "10.77.0.2"
PATIENCE_SECONDS = 30


class Failure(Exception):
    """What has to work for anything to be judged does not."""


def wait_for(what, condition, seconds=PATIENCE_SECONDS):
    deadline = time.monotonic() + seconds
    while not (result := condition()):
        if time.monotonic() > deadline:
            raise Failure(f"{what}: not within {seconds} s")
        time.sleep(0.1)
    return result


class Computer:
    """A context manager. Commands run there as the person, or as root."""

    KIND = "bare"

    def __init__(self, root, name, user, log):
        self.root, self._name, self._user, self._log = pathlib.Path(root), name, user, log
        self._first = None
        self._started = []

    def __enter__(self):
        unshare = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--net", "--uts", "--ipc", "--cgroup"]
        self._first = subprocess.Popen(
            [*unshare, "--", str(HERE / "computer"), str(self.root), self._name, self.KIND],
            stdin=subprocess.DEVNULL, stdout=self._log, stderr=self._log, preexec_fn=self._join)
        try:
            self.pid = wait_for(f"{self._name} comes up", self._first_process)
            wait_for(f"{self._name} comes up", self._is_up)
            self.begin()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *exception):
        for process in self._started:
            process.kill()
            process.wait()
        self._first.kill()
        self._first.wait()

    def begin(self):
        """Starts the bus and the DNS-SD daemon."""
        self._root_runs(["mkdir", "-p", "/run/dbus", "/run/avahi-daemon"])
        self.start(["dbus-daemon", "--system", "--nofork", "--nopidfile"], user=None)
        socket = "/run/dbus/system_bus_socket"
        wait_for("the bus", lambda: self._asks(["test", "-S", socket]))
        self.start_dnssd()

    def start_dnssd(self):
        self._dnssd = self.start(["avahi-daemon", "--no-rlimits"], user=None)
        wait_for("the DNS-SD daemon", lambda: self._asks(["test", "-S", "/run/avahi-daemon/socket"]))

    def stop_dnssd(self):
        self._dnssd.terminate()
        self._dnssd.wait()

    def network(self, command):
        subprocess.run(["nsenter", f"--target={self.pid}", "--net", "ip", *shlex.split(command)], check=True)

    def enter(self, command, user="person", *more):
        """`command` so that it runs there, and in `more` of its namespaces."""
        inside = ["nsenter", f"--target={self.pid}", "--mount", "--net", "--uts", "--ipc", *more, "--"]
        if user is None:
            return [*inside, "env", "-i", "PATH=/usr/sbin:/usr/bin", "LC_ALL=C.UTF-8", *command]
        number, home = self._user
        return [*inside, "setpriv", f"--reuid={number}", f"--regid={number}", "--clear-groups", "env", "-i",
                "PATH=/usr/bin", "LC_ALL=C.UTF-8", f"HOME={home}", f"XDG_RUNTIME_DIR=/run/user/{number}", *command]

    def run(self, *command, user="person"):
        # The service manager talks only with processes that it can see.
        return subprocess.run(self.enter(command, user, "--pid"), stdin=subprocess.DEVNULL, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60, check=False)

    def start(self, command, user="person", log=None):
        """The process is the program itself, so that it can be ended."""
        return self._start(self.enter(command, user), log)

    def start_of_ours(self, command):
        """A program of this machine, in that network."""
        return self._start(["nsenter", f"--target={self.pid}", "--net", "--", *command])

    def _start(self, command, log=None):
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log or self._log, stderr=log or self._log)
        self._started.append(process)
        return process

    def _join(self):
        """Runs before the computer's first process, where it has a group of processes to join."""

    def _first_process(self):
        if self._first.poll() is not None:
            raise Failure(f"{self._name} does not come up: {self._said()}")
        children = pathlib.Path(f"/proc/{self._first.pid}/task/{self._first.pid}/children").read_text().split()
        return int(children[0]) if children else None

    def _is_up(self):
        """Its first process has become what it is for."""
        self._first_process()
        return pathlib.Path(f"/proc/{self.pid}/comm").read_text().strip() in ("sleep", "systemd")

    def _said(self):
        self._log.flush()
        return pathlib.Path(self._log.name).read_text(errors="replace")[-2000:]

    def _asks(self, command):
        return self.run(*command, user=None).returncode == 0

    def _root_runs(self, command):
        ended = self.run(*command, user=None)
        if ended.returncode != 0:
            raise Failure(f"{shlex.join(command)}: {ended.stderr.strip()}")
        return ended.stdout


class Rig(Computer):
    """The simulator's computer: what there is of it with a service manager, and without."""

    UNIT = "usr/lib/systemd/user/tarnlyd.service"

    def status(self):
        ended = self.run("tarnly-client", "--json", "status")
        return json.loads(ended.stdout) if ended.returncode == 0 else None


class ManagedRig(Rig):
    """systemd runs there, and one of the person's own."""

    KIND = "manager"

    def __init__(self, root, name, user, log, group):
        super().__init__(root, name, user, log)
        self._group = pathlib.Path(group)

    def _join(self):
        (self._group / "cgroup.procs").write_text(str(os.getpid()))

    def begin(self):
        wait_for("the service manager", lambda: self._asks(["systemctl", "is-active", "--quiet", "multi-user.target"]))
        number, _ = self._user
        self._root_runs(["systemctl", "start", f"user@{number}.service"])
        self._since = None

    def start_companion(self):
        self._since = time.time()
        self._manager("start", "tarnlyd")

    def stop_companion(self):
        self._manager("stop", "tarnlyd")

    def journal(self):
        """What the companion has said since its start."""
        return self._root_runs(["journalctl", "--no-pager", "--output=cat", "_SYSTEMD_USER_UNIT=tarnlyd.service",
                                f"--since=@{self._since:.6f}"])

    def start_dnssd(self):
        self._root_runs(["systemctl", "unmask", "--runtime", "avahi-daemon.service", "avahi-daemon.socket"])
        self._root_runs(["systemctl", "start", "avahi-daemon"])

    def stop_dnssd(self):
        """Also for who would have it started by asking the bus for it."""
        self._root_runs(["systemctl", "mask", "--runtime", "--now", "avahi-daemon.service", "avahi-daemon.socket"])

    def _manager(self, *command):
        ended = self.run("systemctl", "--user", *command)
        if ended.returncode != 0:
            raise Failure(f"systemctl --user {shlex.join(command)}: {ended.stderr.strip()}")


class BareRig(Rig):
    """Nothing manages services there: the companion is started as its unit says."""

    def begin(self):
        super().begin()
        number, _ = self._user
        self._root_runs(["install", "-d", "-m", "700", "-o", str(number), f"/run/user/{number}"])
        self._companion, self._journal = None, pathlib.Path(self._log.name + ".journal")

    def unit_command(self):
        """The words after ExecStart=, with the options, of which there are none, as its Environment= says."""
        unit = (self.root / self.UNIT).read_text()
        command = re.search(r"^ExecStart=(.*)$", unit, re.MULTILINE).group(1)
        options = re.search(r"^Environment=TARNLYD_OPTIONS=(.*)$", unit, re.MULTILINE).group(1)
        return shlex.split(command.replace("$TARNLYD_OPTIONS", options))

    def start_companion(self):
        with open(self._journal, "w") as journal:
            self._companion = self.start(self.unit_command(), log=journal)

    def stop_companion(self):
        if self._companion:
            self._companion.terminate()
            self._companion.wait(timeout=PATIENCE_SECONDS)

    def journal(self):
        return self._journal.read_text(errors="replace")


def join_by_a_cable(rig, tablet):
    rig.network(f"link add cable type veth peer name cable netns {tablet.pid}")
    for computer, address in ((rig, RIG_ADDRESS), (tablet, TABLET_ADDRESS)):
        computer.network(f"address add {address}/24 dev cable")
        computer.network("link set cable up")

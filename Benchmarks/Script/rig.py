"""The programs of a benchmark: the server on one processor, the load and the simulator on another."""

import contextlib
import json
import os
import re
import resource
import subprocess
import time
import urllib.request
from pathlib import Path

from harness import Programs, executable

PROCESSORS = sorted(os.sched_getaffinity(0))
SERVER, LOAD = PROCESSORS[0], PROCESSORS[-1]


def raise_descriptor_limit():
    """For the programs, which inherit it: 4,096 clients are more than the usual 1,024 descriptors."""
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))


def pin(pid, processor):
    """Keeps all threads of a process on a processor; those that they start stay there as well."""
    for thread in os.listdir(f"/proc/{pid}/task"):
        with contextlib.suppress(ProcessLookupError):  # one that has ended meanwhile
            os.sched_setaffinity(int(thread), {processor})


def resident_kib(pid):
    return int(re.search(r"VmRSS:\s+(\d+)", Path(f"/proc/{pid}/status").read_text()).group(1))


def wake_ups(pid):
    """How often the threads of a process have gone to sleep by themselves."""
    return sum(int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", (thread / "status").read_text(), re.M).group(1))
               for thread in Path(f"/proc/{pid}/task").iterdir())


def busy_seconds():
    """Processor time that all programs of this machine have taken."""
    fields = [int(field) for field in Path("/proc/stat").read_text().splitlines()[0].split()[1:9]]
    user, nice, system, _idle, _wait, irq, soft_irq, _steal = fields
    return (user + nice + system + irq + soft_irq) / os.sysconf("SC_CLK_TCK")


class Server:
    """Something that `tarnly-load` can measure."""

    def __init__(self, pid, port, is_raw=False):
        self.pid = pid
        self.port = port
        self.options = ["--raw"] if is_raw else []


class Rig:
    """Starts what is measured; `end` ends all of it."""

    def __init__(self, folder):
        self.folder = Path(folder)
        self.programs = Programs(self.folder)
        self._raw = None

    def end(self):
        self.programs.end_all()

    def simulator(self, datarefs=0):
        """Its port."""
        filling = ["--datarefs", datarefs] if datarefs else []
        program, port = self.programs.simulator("--start", "cruise", *filling)
        pin(program.pid, LOAD)
        return port

    def names(self, sim_port):
        """A file of the simulator's numeric datarefs."""
        with urllib.request.urlopen(f"http://127.0.0.1:{sim_port}/api/v2/datarefs") as answer:
            entries = json.load(answer)["data"]
        numeric = [entry["name"] for entry in entries
                   if entry["value_type"] in ("int", "float", "double") and "/odd/" not in entry["name"]]
        file = self.folder / f"names-{sim_port}"
        file.write_text("\n".join(numeric))
        return file

    def companion(self, sim_port=None):
        companion = self.programs.companion(sim_port=sim_port)
        pin(companion.program.pid, SERVER)
        return Server(companion.program.pid, companion.port)

    def raw_echo(self):
        if self._raw is None:
            self._raw = self._echo("tarnly-load", "echo", is_raw=True)
        return self._raw

    def libwebsockets(self):
        """None where it was not built."""
        return self._echo("tarnly-lws-echo") if os.path.exists(executable("tarnly-lws-echo")) else None

    def _echo(self, name, *arguments, is_raw=False):
        program = self.programs.start(name, *arguments)
        program.expected_status = -15
        port = int(program.wait_for_line(r"port (\d+)").group(1))
        pin(program.pid, SERVER)
        return Server(program.pid, port, is_raw)


def load(mode, server, **options):
    """Runs the load generator; what it measured."""
    command = [executable("tarnly-load"), "--cpu", str(LOAD), mode, "--port", str(server.port),
               "--server", str(server.pid)]
    for name, value in options.items():
        command += [f"--{name.replace('_', '-')}"] + ([] if value is True else [str(value)])
    if mode == "round-trips":
        command += server.options
    ended = subprocess.run(command, capture_output=True, text=True, timeout=600)
    if ended.returncode != 0:
        raise RuntimeError(f"{' '.join(command)}: {ended.stderr}")
    return json.loads(ended.stdout)


def settle(seconds=1.0):
    """For what a program does after its start."""
    time.sleep(seconds)

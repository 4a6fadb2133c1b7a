"""One lesson with a companion of which one call fails or is late, and what is to be said of it afterwards."""

import json
import os
import re
import signal
import subprocess
import threading
import time
from dataclasses import dataclass, field

from client import Client, Closed, is_push
from websockets.exceptions import WebSocketException
from harness import STATUS_LINE, Program, executable, wait_until
from lesson import trigger

PASSWORD = "three greens"
LATITUDE = "sim/flightmodel/position/latitude"
GEAR = "sim/cockpit2/controls/gear_handle_down"
SCRIPT = [trigger("first", "after_start", seconds=0), trigger("second", "after_trigger", after_trigger_id="first",
                                                              seconds=0.5),
          trigger("fix", "reaches_fix", fix="RIDGE", within_nm=1), trigger("third", "after_start", seconds=1)]
FIRING = {"first", "second", "third"}

# Seconds within which whatever is asked is done, on a busy machine as well.
LIMIT = 30.0
# Two pushes, or two samples, are this far apart at most while a fault lasts no time.
LATE = 2.4
# A fault of the link to the simulator costs the samples until the next link stands.
LINK_BACK = 8.0


# How a connection ends, or an answer that is none, looks from here.
CUT = (Closed, OSError, AssertionError, WebSocketException)


class Wrong(Exception):
    """What must not happen, in words."""


@dataclass
class Outcome:
    """What came of one case."""

    wrong: list = field(default_factory=list)
    # What the person or the client was told: lines, error replies, warnings of the status.
    told: list = field(default_factory=list)
    # How often a client had to come back.
    cut: int = 0
    gap: float = 0.0
    reached: bool = False
    stack: str = ""

    @property
    def words(self):
        if self.wrong:
            return "; ".join(self.wrong)
        if not self.reached:
            return "not reached"
        return "told" if self.told else "came back" if self.cut else "unnoticed"


class Learner:
    """A client that does what a person would have it do: it comes back when it is cut off, and asks again."""

    def __init__(self, port, outcome, is_alive):
        self._port = port
        self._outcome = outcome
        self._is_alive = is_alive
        self._client = None

    def _connected(self):
        if self._client is None:
            self._client = Client(self._port)
            data = self._client.data("pair", {"password": PASSWORD})
            if data["accepted"] is not True:
                raise Wrong(f"the right password was refused: {data}")
        return self._client

    def ask(self, type_, params=None, patience=LIMIT):
        deadline = time.monotonic() + patience
        while True:
            try:
                client = self._connected()
                reply = client.request(type_, {} if params is None else params)
                if reply["type"] == type_:
                    return reply["data"]
                self._outcome.told.append(f"{type_}: {reply['data']['message']}")
            except TimeoutError:
                raise Wrong(f"no answer to {type_}") from None
            except CUT:
                self._outcome.cut += 1
                self.close()
            if not self._is_alive():
                raise Wrong(f"the end in {type_}")
            if time.monotonic() > deadline:
                raise Wrong(f"{type_} fails again and again: {self._outcome.told[-1:]}")
            time.sleep(0.2)

    def refuse_me(self, warnings):
        """A wrong password first, as people do."""
        try:
            client = Client(self._port)
            is_accepted = client.data("pair", {"password": "four greens"})["accepted"]
            client.close()
        except CUT:
            self._outcome.cut += 1
            return
        # Without its settings the companion asks for no password, and says so.
        if is_accepted and not any("no password" in text for text in warnings()):
            raise Wrong("a wrong password was accepted, and nobody says why")

    def close(self):
        if self._client is not None:
            self._client.close()
            self._client = None


class Watcher:
    """A second client, which only looks on: how far its pushes are apart."""

    def __init__(self, port, outcome, is_alive):
        self.gap = 0.0
        self._learner = Learner(port, outcome, is_alive)
        self._is_over = False
        self._outcome = outcome
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def _run(self):
        last = None
        while not self._is_over:
            try:
                if last is None:
                    self._learner.ask("dataref_subscribe_values", {"datarefs": [{"name": LATITUDE}]})
                    last = time.monotonic()
                message = self._learner._connected().receive(1)
                if is_push(message) and message["data"]:
                    now = time.monotonic()
                    self.gap = max(self.gap, now - last)
                    last = now
            except TimeoutError:
                self.gap = max(self.gap, time.monotonic() - last)
            except Wrong as error:
                if not self._is_over:
                    self._outcome.wrong.append(f"the client that looks on: {error}")
                return
            except CUT:
                if not self._is_over:
                    self._outcome.cut += 1
                self._learner.close()
                last = None

    def end(self):
        self._is_over = True
        self._thread.join(LIMIT)
        self._learner.close()


class Lesson:
    """A lesson in a folder of its own. `plan` is what libtarnly_faults.so is told to do, None to count."""

    def __init__(self, folder, environment, sim_port, nav_db, situations, plan=None, arguments=()):
        self._folder = folder
        self._sim_port = sim_port
        self._log = folder / "calls"
        self._data = folder / "data"
        self._status_file = folder / "status.json"
        self._plan = plan
        self.outcome = Outcome()
        (folder / "data").mkdir()
        settings = {"password": PASSWORD, "startAtLogin": False}
        (folder / "data" / "settings.json").write_text(json.dumps(settings))
        environment = dict(environment, LD_PRELOAD=executable("libtarnly_faults.so"), TARNLY_FAULTS_LOG=str(self._log))
        if plan:
            environment["TARNLY_FAULT"] = plan
        self._environment = environment
        self._program = Program("tarnlyd", [
            executable("tarnlyd"), "--sim-port", str(sim_port), "--port", "0", "--data-dir", str(self._data),
            "--nav-db", str(nav_db), "--situations", str(situations), "--status-file", str(self._status_file),
            *arguments], folder, environment)

    def run(self):
        outcome = self.outcome
        try:
            self._live()
        except Wrong as error:
            outcome.wrong.append(str(error))
        except AssertionError as error:
            outcome.wrong.append(str(error)[:300])
        finally:
            self._end()
        lines = self._log.read_text(errors="replace").splitlines() if self._log.exists() else []
        faults = [line for line in lines if line.startswith("fault ")]
        outcome.reached = bool(faults)
        outcome.stack = faults[0] if faults else ""
        return outcome

    def places(self):
        """After a counting run: the lines about the places that called."""
        return [line.split(" ", 4) for line in self._log.read_text(errors="replace").splitlines()
                if line.startswith("place ")]

    def _port(self):
        """Where it listens; None where it could not start, and said so."""
        program = self._program
        deadline = time.monotonic() + LIMIT
        while not (lines := [m for m in map(STATUS_LINE.match, program.output()) if m]):
            if program.process.poll() is not None:
                status = program.wait()
                if status != 1 or not re.search(r"^(Failed to start|Tarnly): \S+", program.errors(), re.MULTILINE):
                    raise Wrong(f"ended with {status} at its start, stderr {program.errors()[-200:]!r}")
                self.outcome.told.append(program.errors().strip())
                return None
            if time.monotonic() > deadline:
                # A line that cannot be printed is no reason not to work; the status file has the port.
                return self._port_of_status()
            time.sleep(0.02)
        return int(lines[0].group(1))

    def _port_of_status(self):
        try:
            return json.loads(self._status_file.read_text())["port"]
        except (OSError, ValueError, KeyError):
            raise Wrong("neither a line nor an end at its start") from None

    def _live(self):
        port = self._port()
        if port is None:
            return
        def is_alive():
            return self._program.process.poll() is None

        learner = Learner(port, self.outcome, is_alive)
        watcher = Watcher(port, self.outcome, is_alive)
        try:
            self._learn(learner)
        finally:
            watcher.end()
            learner.close()
        self.outcome.gap = max(self.outcome.gap, watcher.gap)

    def _learn(self, learner):
        learner.refuse_me(self._warnings)
        flights = learner.ask("list_flights")["flights"]
        if [flight["name"] for flight in flights] != ["Long final"] and not self._warnings():
            raise Wrong(f"flights were lost without a word: {flights}")
        unknown = learner.ask("load_script", {"triggers": SCRIPT})["unresolved_fixes"]
        if unknown and not self._warnings():
            raise Wrong(f"fixes that are there are unknown, and nobody says why: {unknown}")
        learner.ask("dataref_subscribe_values", {"datarefs": [{"name": LATITUDE}, {"name": GEAR}]})
        learner.ask("dataref_set_values", {"datarefs": [{"name": GEAR, "value": 1}]})
        learner.ask("run_command", {"name": "sim/flight_controls/landing_gear_up"})
        learner.ask("recording_start")
        deadline = time.monotonic() + LIMIT

        def is_flown():
            data = learner.ask("catch_up")
            return len(data["samples"]) >= 4 and {fired["trigger_id"] for fired in data["fired"]} >= FIRING

        while not is_flown():
            if time.monotonic() > deadline:
                raise Wrong(f"the recording does not go on: {str(learner.ask('catch_up'))[-300:]}")
            time.sleep(0.2)
        during = self._warnings()
        learner.ask("recording_stop")
        self._compare(learner.ask("catch_up"), during + self._warnings())

    def _compare(self, memory, warnings):
        times = [sample["elapsed_s"] for sample in memory["samples"]]
        self.outcome.gap = max([self.outcome.gap, *(later - earlier for earlier, later in zip(times, times[1:]))])
        text = "".join(log.read_text() for log in sorted((self._data / "Recordings").glob("*.jsonl")))
        samples, fired, spoilt = [], [], 0
        for line in text.splitlines():
            try:
                record = json.loads(line)
                (samples if record["kind"] == "sample" else fired).append(record[record["kind"]])
            except ValueError:
                spoilt += 1
        lost = len(memory["samples"]) + len(memory["fired"]) - len(samples) - len(fired)
        if samples != memory["samples"] or fired != memory["fired"]:
            told = "told" if warnings or "Tarnly:" in self._program.errors() else "NOT TOLD"
            raise Wrong(f"the log lacks {lost} of {len(times) + len(memory['fired'])} lines ({told})")
        if spoilt:
            self.outcome.told.append(f"{spoilt} spoilt lines beside the whole ones")

    def _warnings(self):
        """What the status has to say, asked by another process; the lines of standard error where it cannot be asked."""
        plain = {key: value for key, value in self._environment.items() if key not in ("LD_PRELOAD", "TARNLY_FAULT")}
        lines = [line for line in self._program.errors().splitlines() if line.startswith("Tarnly: ")]
        for _ in range(3):  # who asks has been told of a fault, and asks again
            asked = subprocess.run([executable("tarnlyd"), "--status", "--data-dir", str(self._data)], env=plain,
                                   capture_output=True, text=True, timeout=LIMIT, check=False)
            if asked.returncode == 0:
                break
            self.outcome.told.append(asked.stderr.strip())
        else:
            if not lines:
                raise Wrong(f"--status has no answer, and nobody says why: {asked.stderr.strip()}")
            return lines
        status = json.loads(asked.stdout)
        found = lines + status.get("warnings", [])
        if status.get("recording", {}).get("problem"):
            found.append(status["recording"]["problem"])
        self.outcome.told += [line for line in found if line not in self.outcome.told]
        return found

    def _end(self):
        program = self._program
        begun = time.monotonic()
        if program.process.poll() is None:
            program.process.send_signal(signal.SIGTERM)
        expected = (0, 1) if program.process.poll() == 1 and self.outcome.told else (0,)
        try:
            status = program.wait(LIMIT)
            if status not in expected:
                died = signal.Signals(-status).name if status < 0 else status
                self.outcome.wrong.append(f"ended with {died}, stderr {program.errors()[-200:]!r}")
            elif time.monotonic() - begun > 12:
                self.outcome.wrong.append(f"its end took {time.monotonic() - begun:.0f} s")
        except AssertionError:
            self.outcome.wrong.append(f"HANG: no end within {LIMIT:.0f} s of SIGTERM")
            program.process.kill()
            program.process.wait()
        self.outcome.told += [line for line in program.errors().splitlines()
                              if line.startswith("Tarnly: ") and line not in self.outcome.told]
        program.process.stdout.close()
        program._errors.close()

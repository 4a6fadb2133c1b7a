"""The figures that a release is judged by, each with its aim."""

import json
import math
import os
import socket
import statistics
import subprocess
import time
from dataclasses import asdict, dataclass, field

from harness import executable, reserved_port
from raw_websocket import RawWebSocket
from rig import LOAD, SERVER, load, resident_kib, settle, wake_ups

# To look for the simulator: its name is resolved by a thread, its port is tried, a timer is set.
WAKE_UPS_A_LOOK = 8
LATITUDE = "sim/flightmodel/position/latitude"


@dataclass
class Figure:
    key: str
    title: str
    value: float
    unit: str = ""
    aim: float | None = None
    higher_is_better: bool = False
    # Whether another machine, or a busier one, gives about the same: ratios within a run, memory, counts.
    is_comparable: bool = False
    rounds: list = field(default_factory=list)

    def reached(self):
        if self.aim is None:
            return None
        return self.value >= self.aim if self.higher_is_better else self.value <= self.aim

    def as_json(self):
        return asdict(self) | {"reached": self.reached()}


def median_of(key, title, rounds, **more):
    return Figure(key, title, statistics.median(rounds), rounds=rounds, **more)


def round_trips(rig, plan):
    """The companion beside the raw echo and, where it is there, a library of another make; round after round."""
    companion = rig.companion(rig.simulator())
    servers = {"raw": rig.raw_echo(), "tarnlyd": companion, "libwebsockets": rig.libwebsockets()}
    servers = {name: server for name, server in servers.items() if server}
    settle()
    for connections, aim in ((1, 0.92), (16, 0.82), (256, 0.82)):
        if connections > plan.most_connections:
            continue
        runs = {name: [] for name in servers}
        for _ in range(plan.rounds):
            for name, server in servers.items():
                runs[name].append(load("round-trips", server, connections=connections, seconds=plan.seconds,
                                       warm_up=plan.seconds / 4))
        yield from compared(runs, connections, aim)


def compared(runs, connections, aim):
    def ratios(name, what):
        return [run[what] / raw[what] for run, raw in zip(runs[name], runs["raw"])]

    at = f"at {connections} connection{'s' if connections > 1 else ''}"
    for name in runs:
        ours = name == "tarnlyd"
        yield median_of(f"rate_{name}_{connections}", f"Replies a second {at}, {name}",
                        [run["rate"] for run in runs[name]], unit="/s", higher_is_better=True)
        yield median_of(f"p99_{name}_{connections}", f"Round trip {at}, p99, {name}",
                        [run["p99_us"] for run in runs[name]], unit="µs")
        if name != "raw":
            yield median_of(f"rate_ratio_{name}_{connections}", f"Rate {at}: {name} / raw echo", ratios(name, "rate"),
                            aim=aim if ours else None, higher_is_better=True, is_comparable=True)
            yield median_of(f"cpu_ratio_{name}_{connections}", f"Processor time a reply {at}: {name} / raw echo",
                            ratios(name, "server_cpu_s_per_100k"), aim=1.35 if ours else None, is_comparable=True)


def memory(rig, plan):
    companion = rig.companion()
    settle()
    yield Figure("rss_idle", "Memory, idle", resident_kib(companion.pid) / 1024, "MiB", 8, is_comparable=True)
    connections = min(1000, plan.most_connections)
    run = load("round-trips", companion, connections=connections, seconds=0.5, warm_up=0)
    yield Figure("rss_connection", "Memory of a paired connection",
                 (run["rss_paired_kib"] - run["rss_empty_kib"]) / connections, "KiB", 8, is_comparable=True)
    yield Figure("rss_connection_busy", "Memory of a connection that has asked a lot",
                 (run["rss_end_kib"] - run["rss_empty_kib"]) / connections, "KiB", is_comparable=True)


def idle(rig, plan):
    """Without clients, recording and simulator, for which it looks every 30 seconds."""
    companion = rig.companion()
    settle(3)
    before = wake_ups(companion.pid)
    time.sleep(plan.idle_seconds)
    looks = math.ceil(plan.idle_seconds / 30)
    yield Figure(f"idle_wake_ups_{plan.idle_seconds:g}", f"Wake-ups while idle, in {plan.idle_seconds:g} s",
                 wake_ups(companion.pid) - before, aim=WAKE_UPS_A_LOOK * looks, is_comparable=True)


def lesson(rig, plan):
    """What three clients of a lesson cost while their flight is recorded."""
    sim_port = rig.simulator()
    companion = rig.companion(sim_port)
    settle()
    run = load("pushes", companion, clients=3, names=rig.names(sim_port), name_count=20, record=True,
               seconds=plan.push_seconds * 2)
    yield Figure("lesson_busy", "3 clients with 20 subscriptions, recording", run["server_busy"] * 100,
                 "% of a processor", 0.2)


def crowd(rig, plan):
    sim_port = rig.simulator()
    clients = min(1000, plan.most_connections)
    runs = []
    for _ in range(plan.rounds):
        companion = rig.companion(sim_port)
        settle()
        runs.append(load("pushes", companion, clients=clients, names=rig.names(sim_port), name_count=13,
                         seconds=plan.push_seconds))
    who = f"{clients:,} clients with 13 subscriptions"
    yield median_of("crowd_tick", f"{who}: processor time a tick", [run["cpu_ms_per_tick"] for run in runs],
                    unit="ms", aim=15)
    yield median_of("crowd_spread", f"{who}: first to last push of a tick", [run["spread_p50_ms"] for run in runs],
                    unit="ms", aim=40)
    yield median_of("crowd_spread_max", f"{who}: the same, the longest", [run["spread_max_ms"] for run in runs],
                    unit="ms")


def catalogues(rig, plan):
    """From the companion's start to the first value of a subscription, over a fresh link."""
    for entries, aim in ((8_000, 30), (120_000, 300)):
        if entries > plan.most_entries:
            continue
        sim_port = rig.simulator(datarefs=entries)
        rig.names(sim_port)  # so that the simulator has made its catalogue once
        times = [first_value(rig, sim_port) for _ in range(plan.rounds)]
        yield median_of(f"catalogue_{entries}", f"First value, catalogue of {entries:,} entries", times, unit="ms",
                        aim=aim)


def first_value(rig, sim_port):
    request = json.dumps({"type": "dataref_subscribe_values", "params": {"datarefs": [{"name": LATITUDE}]}})
    with started(rig, sim_port) as (begin, port, _):
        client = RawWebSocket(port)
        client.send_text('{"type":"pair"}')
        client.receive_text()
        while True:
            client.send_text(request)
            if json.loads(client.receive_text())["type"] != "error":
                break
        taken = (time.monotonic() - begin) * 1e3
        client.close()
        return taken


class started:
    """A companion on a port that is known beforehand; when it was started, and when it took a connection."""

    def __init__(self, rig, sim_port):
        self.rig = rig
        self.sim_port = sim_port

    def __enter__(self):
        with reserved_port() as port:
            command = [executable("tarnlyd"), "--port", str(port), "--sim-port", str(self.sim_port), "--no-advertise",
                       "--data-dir", str(self.rig.programs.new_folder())]
            processors = os.sched_getaffinity(0)
            os.sched_setaffinity(0, {SERVER})  # to be inherited
            quiet = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]
            begin = time.monotonic()
            self.pid = os.posix_spawn(command[0], command, self.rig.programs.environment(), file_actions=quiet)
            os.sched_setaffinity(0, {LOAD})
            while True:
                try:
                    socket.create_connection(("127.0.0.1", port), 1).close()
                    break
                except OSError:
                    if time.monotonic() - begin > 30:
                        raise
            taken = time.monotonic() - begin
            os.sched_setaffinity(0, processors)
        return begin, port, taken

    def __exit__(self, *_):
        os.kill(self.pid, 15)
        os.waitpid(self.pid, 0)


def start(rig, plan):
    times = []
    with reserved_port() as nobody:
        for _ in range(plan.starts):
            with started(rig, nobody) as (_, _, taken):
                times.append(taken * 1e3)
    yield median_of("start", "From exec to a connection", times, unit="ms", aim=5)


NEIGHBOURS = {
    "none": "alone",
    "large": "beside messages of 24 MB",
    "names": "beside 10,000 subscriptions",
    "pings": "beside 100,000 pings at a time",
    "silent": "beside one that does not read",
}


def neighbours(rig, plan):
    sim_port = rig.simulator(datarefs=16_000)
    names = rig.names(sim_port)
    for neighbour, words in NEIGHBOURS.items():
        companion = rig.companion(sim_port)
        settle()
        run = load("beside", companion, neighbour=neighbour, names=names, name_count=plan.many_names,
                   seconds=plan.beside_seconds)
        yield Figure(f"trip_{neighbour}", f"Round trip {words}, p99.9", run["p999_ms"], "ms", 20)
        late = run["push_pause_max_ms"] - run["push_pause_p50_ms"]
        yield Figure(f"late_{neighbour}", f"Heartbeat late {words}", late, "ms", 20)


def benchmarks(plan):
    """What Google Benchmark says, by name."""
    command = [executable("tarnly_core_benchmarks"), "--benchmark_format=json",
               f"--benchmark_filter={plan.benchmarks}", f"--benchmark_min_time={plan.benchmark_seconds:g}"]
    ended = subprocess.run(command, capture_output=True, text=True, check=True)
    return {entry["name"].removesuffix("/real_time"): entry for entry in json.loads(ended.stdout)["benchmarks"]}


def track_benchmarks(plan):
    """The same of what a day's recording costs `tarnly-track`; none where the plan has none."""
    if not plan.track_benchmarks:
        return {}
    command = [executable("tarnly_track_benchmarks"), "--benchmark_format=json",
               f"--benchmark_filter={plan.track_benchmarks}", f"--benchmark_min_time={plan.benchmark_seconds:g}"]
    ended = subprocess.run(command, capture_output=True, text=True, check=True)
    return {entry["name"]: entry for entry in json.loads(ended.stdout)["benchmarks"]}


def days(found):
    """What is done with a day's recording, beside parsing its lines as JSON."""
    parsed = found.get("dayIsParsedAsJson")
    for name, key, words in (("dayIsRead", "read", "read"), ("dayIsSummed", "list", "summed up, once it is read"),
                             ("dayIsExported", "export", "exported as GPX, once it is read"),
                             ("dayIsPlotted", "plot", "drawn on a page, once it is read")):
        if parsed and name in found:
            yield Figure(f"day_{key}", f"A day's recording {words}, beside parsing its JSON",
                         found[name]["cpu_time"] / parsed["cpu_time"], is_comparable=True)


def catching_up(found):
    """The figures that Google Benchmark has found."""
    name = "recordingComesOverASocket/samples:72000"
    if name in found:
        yield Figure("catch_up", "Ten hours of recording at the client", found[name]["real_time"], "ms", 120)
    beside = "othersAskBesideACatchUp/samples:72000/catching_up:{}/iterations:1500"
    for catching_up, words in ((0, "alone"), (1, "beside catch-ups of ten hours")):
        if entry := found.get(beside.format(catching_up)):
            yield Figure(f"trip_catch_up_{catching_up}", f"Round trip {words}, p99", entry["p99_us"] / 1e3, "ms",
                         20 if catching_up else None)

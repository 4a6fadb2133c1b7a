"""What something costs as it grows."""

from dataclasses import asdict, dataclass, field

from rig import load, resident_kib, settle


@dataclass
class Curve:
    key: str
    title: str
    x_label: str
    y_label: str
    # Name of a line: its points.
    series: dict = field(default_factory=dict)

    def add(self, line, x, y):
        self.series.setdefault(line, []).append([x, y])

    def as_json(self):
        return asdict(self)


def by_clients(rig, plan):
    rate = Curve("clients_rate", "Replies a second", "connections", "replies a second")
    trip = Curve("clients_trip", "Round trip", "connections", "ms")
    memory = Curve("clients_memory", "Memory of the companion", "paired connections", "MiB")
    sim_port = rig.simulator()
    for connections in plan.connections(1, 4, 16, 64, 256, 1024, 4096):
        companion = rig.companion(sim_port)
        settle()
        for name, server in (("raw echo", rig.raw_echo()), ("tarnlyd", companion)):
            run = load("round-trips", server, connections=connections, seconds=plan.seconds, warm_up=0.3)
            rate.add(name, connections, run["rate"])
            trip.add(f"{name}, p50", connections, run["p50_us"] / 1e3)
            trip.add(f"{name}, p99", connections, run["p99_us"] / 1e3)
            if name == "tarnlyd":
                memory.add("paired", connections, run["rss_paired_kib"] / 1024)
                memory.add("after its requests", connections, run["rss_end_kib"] / 1024)
    return [rate, trip, memory]


def by_listeners(rig, plan):
    curve = Curve("listeners", "Pushes of 13 subscriptions each", "clients", "ms")
    sim_port = rig.simulator()
    names = rig.names(sim_port)
    for clients in plan.connections(1, 10, 100, 1000, 4000):
        companion = rig.companion(sim_port)
        settle()
        run = load("pushes", companion, clients=clients, names=names, name_count=13, seconds=plan.push_seconds)
        curve.add("processor time a tick", clients, run["cpu_ms_per_tick"])
        curve.add("first to last push of a tick", clients, run["spread_p50_ms"])
    return [curve]


def by_subscriptions(rig, plan):
    time = Curve("subscriptions", "Subscriptions of one client", "subscriptions", "ms")
    memory = Curve("subscriptions_memory", "Memory of the companion", "subscriptions", "MiB")
    sim_port = rig.simulator(datarefs=16_000)
    names = rig.names(sim_port)
    for count in plan.names(1, 10, 100, 1000, 10_000):
        companion = rig.companion(sim_port)
        settle()
        run = load("pushes", companion, names=names, name_count=count, seconds=plan.push_seconds)
        time.add("processor time a tick", count, run["cpu_ms_per_tick"])
        time.add("until the first values", count, run["first_reply_ms"])
        memory.add("resident", count, run["rss_end_kib"] / 1024)
    return [time, memory]


def by_message(rig, plan):
    curve = Curve("messages", "A request by its length, round trip p50", "bytes", "ms")
    memory = Curve("messages_memory", "Memory of the companion after such requests", "bytes", "MiB")
    for size in plan.sizes(100, 1_000, 10_000, 100_000, 1_000_000, 10_000_000, 24_000_000):
        companion = rig.companion()
        settle(0.5)
        run = load("round-trips", companion, message_bytes=size, seconds=plan.seconds, warm_up=0.2)
        curve.add("tarnlyd", size, run["p50_us"] / 1e3)
        settle(0.2)
        memory.add("resident", size, resident_kib(companion.pid) / 1024)
    return [curve, memory]


# Benchmarks whose names end in what grows: (key, title, x, lines).
GROWING = [
    ("triggers", "A sample's way through the triggers that wait", "triggers",
     {"of all kinds": "allKindsWait", "for fixes": "fixesWait"}),
    ("recording", "Catching up with a whole recording", "samples, two a second",
     {"at the client": "recordingComesOverASocket"}),
]


def from_benchmarks(found):
    """The curves that Google Benchmark has measured."""
    in_ms = {"ns": 1e-6, "us": 1e-3, "ms": 1, "s": 1e3}
    curves = []
    memory = Curve("recording_memory", "Memory of a recording", "samples, two a second", "MiB")
    for key, title, x_label, lines in GROWING:
        curve = Curve(key, title, x_label, "ms")
        for line, name in lines.items():
            for entry_name, entry in found.items():
                stem, _, argument = entry_name.partition("/")
                if stem != name:
                    continue
                size = int(argument.split(":")[-1])
                curve.add(line, size, entry["real_time"] * in_ms[entry["time_unit"]])
                if "recording_kib" in entry:
                    memory.add("resident", size, entry["recording_kib"] / 1024)
        curves.append(curve)
    return [curve for curve in curves + [memory] if curve.series]


def bend(points):
    """From where on a unit costs half as much again as it did at its cheapest: there a line has left its straight. None
    where it never does. Does not see what has become cheaper."""
    cheapest = None
    for x, y in sorted(points):
        cost = y / x
        if cheapest is not None and cost > 1.5 * cheapest:
            return x
        if cost > 0:  # a line may begin too low to be seen
            cheapest = cost if cheapest is None else min(cheapest, cost)
    return None

"""How much a run measures."""

from dataclasses import dataclass


@dataclass
class Plan:
    rounds: int = 3
    seconds: float = 2
    push_seconds: float = 6
    beside_seconds: float = 10
    idle_seconds: float = 60
    starts: int = 20
    most_connections: int = 4096
    most_entries: int = 120_000
    most_bytes: int = 24_000_000
    many_names: int = 10_000
    benchmarks: str = "."
    track_benchmarks: str = "."
    benchmark_seconds: float = 0.5
    has_curves: bool = True

    def connections(self, *counts):
        return [count for count in counts if count <= self.most_connections]

    def names(self, *counts):
        return [count for count in counts if count <= self.many_names]

    def sizes(self, *sizes):
        return [size for size in sizes if size <= self.most_bytes]


FULL = Plan()
QUICK = Plan(rounds=1, seconds=0.5, push_seconds=2.5, beside_seconds=1.5, idle_seconds=10, starts=5, most_entries=8_000,
             benchmarks="OverASocket/samples:72000/|othersAsk", track_benchmarks="dayIs(Exported|P|Read|Summed)",
             benchmark_seconds=0.05, has_curves=False)
# Whether all of it works: nothing that it measures means anything.
SMOKE = Plan(rounds=1, seconds=0.2, push_seconds=2, beside_seconds=0.2, idle_seconds=0.2, starts=1, most_connections=1,
             most_entries=0, most_bytes=1_000, many_names=10, benchmarks="OverASocket/samples:120/",
             track_benchmarks="", benchmark_seconds=0.01)

"""Lessons: scripts whose triggers fire on a flight, and clients that follow it, come what may."""

import threading
import time

import pytest
from harness import reserved_port, wait_until
from lesson import (ALTITUDE, FEET_PER_METRE, GEAR_HANDLE, HEIGHT, LATITUDE, LONGITUDE, SAMPLE, Recorder,
                    add_sample_datarefs, assert_whole, cut_off, ids, load, move_through, sample_at, start,
                    start_lesson, stop, times_of, trigger)
from nav_database import write_nav_database

# A minute of arc on a meridian is a nautical mile.
NAUTICAL_MILE = 1 / 60


@pytest.fixture
def flight(fake):
    """A simulator whose aircraft is where the test puts it."""
    add_sample_datarefs(fake)
    return fake


@pytest.fixture
def companion(companion, flight):
    return companion


# Samples


def test_a_sample_has_what_the_simulator_has(companion):
    recorder = start(companion.client())
    recorder.wait_for_samples(2)
    first, second = recorder.samples[:2]
    assert 0 <= first.pop("elapsed_s") < second.pop("elapsed_s")
    assert first == second == SAMPLE


def test_what_the_simulator_does_not_have_is_left_out(programs, fake):
    fake.add(LATITUDE, 47.5)
    fake.add(HEIGHT)
    recorder = start(programs.companion(sim_port=fake.port).client())
    recorder.wait_for_samples(1)
    assert {key: value for key, value in recorder.samples[0].items() if key != "elapsed_s"} == {
        "alt_ft": 0, "lat": 47.5}


def test_samples_come_about_every_half_second(companion):
    recorder = start(companion.client())
    recorder.wait_for_samples(8)
    times = [sample["elapsed_s"] for sample in recorder.samples]
    gaps = [later - earlier for earlier, later in zip(times, times[1:])]
    assert min(gaps) > 0.4, "the wait follows the tick"
    assert sorted(gaps)[len(gaps) // 2] < 1.5


def test_nothing_is_recorded_before_a_start_and_after_a_stop(companion):
    client = companion.client()
    load(client, trigger("now", "after_start", seconds=0))
    nothing = {"samples": [], "fired": []}
    assert client.data("catch_up") == nothing
    stop(client)
    assert client.data("catch_up") == nothing
    recorder = start(client)
    recorder.wait_for_samples(2)
    stop(client)
    everything = client.data("catch_up")
    assert_whole(recorder, everything)
    assert client.is_quiet(1.2), "nobody has subscribed to anything"
    assert client.data("catch_up") == everything
    assert client.data("catch_up", {"since_elapsed_s": everything["samples"][-1]["elapsed_s"]}) == nothing


def test_since_is_strict_and_counts_only_as_a_number(companion):
    client = companion.client()
    recorder = start_lesson(client, trigger("now", "after_start", seconds=0))
    recorder.wait_for_samples(2)
    stop(client)
    everything = client.data("catch_up")
    first = everything["samples"][0]["elapsed_s"]
    assert everything["fired"] == [{"trigger_id": "now", "elapsed_s": first, "action_kind": "speak"}]
    assert client.data("catch_up", {"since_elapsed_s": first}) == {
        "samples": everything["samples"][1:], "fired": []}
    assert client.data("catch_up", {"since_elapsed_s": first - 1e-9}) == everything
    assert client.data("catch_up", {"since_elapsed_s": -1}) == everything
    assert client.data("catch_up", {"since_elapsed_s": 1e300}) == {"samples": [], "fired": []}
    for params in (None, {}, {"since_elapsed_s": None}, {"since_elapsed_s": "0.1"}, {"since_elapsed_s": True},
                   {"since_elapsed_s": [9]}, [], 7, "x"):
        assert client.data("catch_up", params) == everything


# Conditions


def nav_client(programs, flight, **tables):
    database = write_nav_database(programs.new_folder() / "nav.db", **tables)
    return programs.companion("--nav-db", database, sim_port=flight.port).client()


def test_a_fix_is_reached_within_its_radius_and_not_before(programs, flight):
    client = nav_client(programs, flight, fixes=[("KLOTEN", 48, 8)], navaids=[("TRA", 49, 8)])
    flight.set(LONGITUDE, 8)
    flight.set(LATITUDE, 47)
    recorder = start_lesson(client, trigger("fix", "reaches_fix", fix="kloten", within_nm=2),
                            trigger("navaid", "reaches_fix", fix="Tra", within_nm=2),
                            trigger("no radius", "reaches_fix", fix="KLOTEN"),
                            trigger("text radius", "reaches_fix", fix="KLOTEN", within_nm="2"),
                            trigger("no fix", "reaches_fix", within_nm=20_000))
    just_outside, inside = 48 - 2.02 * NAUTICAL_MILE, 48 + 1.9 * NAUTICAL_MILE
    move_through(recorder, flight, LATITUDE, "lat", (just_outside, just_outside))
    recorder.wait_for_samples(1)
    assert recorder.fired == []
    move_through(recorder, flight, LATITUDE, "lat", (inside, inside))
    assert recorder.wait_for_fired("fix") == ["fix"]
    assert sample_at(recorder, times_of(recorder)["fix"])["lat"] == inside
    flight.set(LATITUDE, 49)
    assert recorder.wait_for_fired("navaid") == ["fix", "navaid"]


def test_an_en_route_fix_wins_over_a_navaid_of_its_name(programs, flight):
    client = nav_client(programs, flight, fixes=[("BOTH", 10, 20)], navaids=[("BOTH", 30, 40)])
    flight.set(LATITUDE, 30)
    flight.set(LONGITUDE, 40)
    recorder = start_lesson(client, trigger("both", "reaches_fix", fix="both", within_nm=1))
    recorder.wait_for_samples(2)
    assert recorder.fired == []
    flight.set(LATITUDE, 10)
    flight.set(LONGITUDE, 20)
    recorder.wait_for_fired("both")
    fired_on = sample_at(recorder, times_of(recorder)["both"])
    assert (fired_on["lat"], fired_on["lon"]) == (10, 20)


def test_fixes_that_are_not_found_are_listed_once_in_order(programs, flight):
    client = nav_client(programs, flight, fixes=[("KNOWN", 48, 8), ("STRASSE", 48, 8), ("lower", 48, 8)])
    fixes = ["zulu", "Known", "lower", "ZULU", "straße", " known", "alpha", "Lower", ""]
    script = [trigger(str(number), "reaches_fix", fix=fix, within_nm=1) for number, fix in enumerate(fixes)]
    script.append(trigger("other kind", "after_start", fix="never", seconds=1))
    assert load(client, *script) == ["ZULU", "LOWER", " KNOWN", "ALPHA", ""]


def test_without_a_database_no_fix_is_known(companion):
    script = [trigger("a", "reaches_fix", fix="kloten", within_nm=1), trigger("b", "after_start", seconds=0)]
    client = companion.client()
    assert load(client, *script) == ["KLOTEN"]
    assert start(client).wait_for_fired("b") == ["b"]


CROSSINGS = [("crosses_altitude", ALTITUDE, "alt_ft", 1), ("crosses_agl", HEIGHT, "agl_ft", FEET_PER_METRE)]


@pytest.mark.parametrize("kind, dataref, key, factor", CROSSINGS, ids=["altitude", "agl"])
def test_crossings_are_strict_on_the_far_side(companion, flight, kind, dataref, key, factor):
    levels = {raw: raw * factor for raw in (990, 1000, 1010)}
    flight.set(dataref, 1000)
    recorder = start_lesson(
        companion.client(),
        trigger("up", kind, feet=levels[1000], climbing=True),
        trigger("down", kind, feet=levels[1000], climbing=False),
        trigger("no direction", kind, feet=levels[1000]),
        trigger("number for a direction", kind, feet=levels[1000], climbing=1),
        trigger("text for feet", kind, feet=str(levels[1000]), climbing=True))

    def go(raw):
        move_through(recorder, flight, dataref, key, (raw, levels[raw]))
        recorder.wait_for_samples(1)

    go(1010)
    go(990)  # from above through the level: down
    assert recorder.wait_for_fired("down") == ["down"]
    go(1000)  # from below onto the level: up
    assert recorder.wait_for_fired("up") == ["down", "up"]
    assert sample_at(recorder, times_of(recorder)["up"])[key] == levels[1000]
    go(990)
    go(1010)
    assert recorder.fired_ids() == ["down", "up"], "each fires once"


def test_starting_at_the_level_is_no_crossing(companion, flight):
    flight.set(ALTITUDE, 1000)
    recorder = start_lesson(companion.client(), trigger("up", "crosses_altitude", feet=1000, climbing=True),
                            trigger("down", "crosses_altitude", feet=1000, climbing=False))
    move_through(recorder, flight, ALTITUDE, "alt_ft", (1010, 1010), (1000, 1000))
    assert recorder.wait_for_fired("down") == ["down"]
    assert sample_at(recorder, times_of(recorder)["down"])["alt_ft"] == 1000


def test_a_gear_period_ends_with_the_handle_up_and_begins_anew(companion, flight):
    flight.set(GEAR_HANDLE, 0)
    recorder = start_lesson(companion.client(), trigger("at once", "after_gear_down", seconds=0),
                            trigger("after a while", "after_gear_down", seconds=2))
    recorder.wait_for_samples(2)
    assert recorder.fired == []
    for position in (1, 0, 1):
        move_through(recorder, flight, GEAR_HANDLE, "gear_down", (position, position == 1))
    recorder.wait_for_fired("at once", "after a while")
    fired_at = times_of(recorder)
    downs = [sample["elapsed_s"] for before, sample in zip(recorder.samples, recorder.samples[1:])
             if sample["gear_down"] and not before["gear_down"]]
    assert len(downs) == 2 and fired_at["at once"] == downs[0]
    due = [s["elapsed_s"] for s in recorder.samples if s["gear_down"] and s["elapsed_s"] >= downs[1]]
    assert fired_at["after a while"] == next(elapsed for elapsed in due if elapsed - downs[1] >= 2)


def test_time_since_the_start_counts_from_the_first_sample(companion):
    recorder = start_lesson(companion.client(), trigger("later", "after_start", seconds=1.2),
                            trigger("now", "after_start", seconds=0), trigger("never", "after_start"),
                            trigger("past", "after_start", seconds=-5))
    assert recorder.wait_for_fired("now", "later") == ["now", "past", "later"]
    times = [sample["elapsed_s"] for sample in recorder.samples]
    assert times_of(recorder) == {"now": times[0], "past": times[0],
                                  "later": next(elapsed for elapsed in times if elapsed >= 1.2)}


@pytest.mark.parametrize("turned", [False, True], ids=["in order", "in reverse"])
def test_a_chain_without_delays_fires_on_one_sample_in_any_order(companion, turned):
    chain = [trigger("0", "after_start", seconds=0)]
    chain += [trigger(str(n), "after_trigger", after_trigger_id=str(n - 1), seconds=0) for n in range(1, 20)]
    script = chain[::-1] if turned else chain
    recorder = start_lesson(companion.client(), *script,
                            trigger("orphan", "after_trigger", after_trigger_id="nobody", seconds=0),
                            trigger("own", "after_trigger", after_trigger_id="own", seconds=0))
    assert recorder.wait_for_fired("19") == [str(n) for n in range(20)]
    assert set(times_of(recorder).values()) == {recorder.samples[0]["elapsed_s"]}


def test_walks_repeat_in_the_order_of_the_script(companion):
    def after(other):
        return {"after_trigger_id": other, "seconds": 0}

    recorder = start_lesson(companion.client(),
                            trigger("d", "after_trigger", **after("c")),
                            trigger("b", "after_trigger", **after("a")),
                            trigger("a", "after_start", seconds=0),
                            trigger("c", "after_trigger", **after("b")),
                            trigger("e", "after_trigger", **after("a")))
    # The first walk finds a and e, the second b and c, the third d.
    assert recorder.wait_for_fired("d") == ["a", "e", "b", "c", "d"]


def test_a_delay_counts_from_the_other_triggers_firing(companion):
    recorder = start_lesson(
        companion.client(), trigger("second", "after_trigger", after_trigger_id="first", seconds=1),
        trigger("first", "after_start", seconds=0.6))
    assert recorder.wait_for_fired("second") == ["first", "second"]
    fired_at = times_of(recorder)
    due = [s["elapsed_s"] for s in recorder.samples if s["elapsed_s"] - fired_at["first"] >= 1]
    assert fired_at["second"] == due[0]


def test_of_two_triggers_with_one_id_the_first_to_fire_fires(companion):
    recorder = start_lesson(companion.client(), trigger("twin", "after_start", "late", seconds=1),
                            trigger("twin", "after_start", "early", seconds=0),
                            trigger("end", "after_start", seconds=1.6))
    recorder.wait_for_fired("end")
    assert [event["action_kind"] for event in recorder.fired] == ["early", "speak"]


# Scripts


def test_action_kinds_come_back_as_they_were_sent(companion):
    kinds = ["speak", "", "überhöht ✈/", 'say "no"\n', "x" * 1024]
    action = {"text": "a/b", "number": 1.5, "flag": True, "nothing": None}
    recorder = start_lesson(companion.client(), *(
        trigger(f"/{number}", "after_start", kind, action, seconds=0) for number, kind in enumerate(kinds)))
    recorder.wait_for_fired("/4")
    elapsed = recorder.samples[0]["elapsed_s"]
    assert recorder.fired == [{"trigger_id": f"/{number}", "elapsed_s": elapsed, "action_kind": kind}
                              for number, kind in enumerate(kinds)]


@pytest.mark.parametrize("kind", ["after_landing", "reachesFix", "After_Start", " after_start", "", 'a"b'])
def test_an_unknown_kind_leaves_the_old_script(companion, kind):
    client = companion.client()
    load(client, trigger("old", "after_start", seconds=0))
    script = {"triggers": [trigger("new", "after_start", seconds=0), trigger("bad", kind)]}
    shown = kind.replace('"', r'\"')
    assert client.error("load_script", script) == f'unknownConditionKind("{shown}")'
    assert start(client).wait_for_fired("old") == ["old"]


LACKING = [{"id": 1}, {"condition_kind": None}, {"condition": []}, {"condition": {"seconds": [1]}},
           {"condition": {"deep": {}}}, {"action_kind": 7}, {"action": None}, {"action": {"list": []}}]


@pytest.mark.parametrize("wrong", LACKING, ids=repr)
def test_a_script_that_does_not_fit_leaves_the_old_script(companion, wrong):
    client = companion.client()
    load(client, trigger("old", "after_start", seconds=0))
    for broken in (trigger("new", "after_start", seconds=0) | wrong,
                   {k: v for k, v in trigger("new", "after_start").items() if k not in wrong}):
        assert client.error("load_script", {"triggers": [broken]}) == \
            'missingParams("load_script requires triggers")'
    assert start(client).wait_for_fired("old") == ["old"]


def test_an_empty_script_replaces_the_old_one(companion):
    client = companion.client()
    load(client, trigger("old", "after_start", seconds=0))
    assert load(client) == []
    recorder = start(client)
    recorder.wait_for_samples(2)
    assert recorder.fired == []


def test_a_script_loaded_again_fires_again_and_one_that_stays_does_not(companion):
    client = companion.client()
    script = [trigger("once", "after_start", seconds=0)]
    start_lesson(client, *script).wait_for_fired("once")
    again = start(client)
    again.wait_for_samples(2)
    assert again.fired == [], "a new recording does not arm the script again"
    load(client, *script)
    again.wait_for_fired("once")
    assert times_of(again)["once"] > again.samples[1]["elapsed_s"]


# Clients that come and go


def test_a_client_that_was_cut_off_catches_up_without_gap_or_duplicate(companion, flight):
    client = companion.client()
    flight.set(GEAR_HANDLE, 0)
    recorder = start_lesson(
        client,
        trigger("chained", "after_trigger", after_trigger_id="climbed", seconds=0),
        trigger("begun", "after_start", seconds=0),
        trigger("climbed", "crosses_altitude", feet=2000, climbing=True),
        trigger("gear", "after_gear_down", seconds=0.4))
    recorder.wait_for_fired("begun")
    cut_off(client)
    flight.set(ALTITUDE, 2500)
    watcher = Recorder(companion.client())
    watcher.wait_for_fired("climbed", "chained")
    recorder.client = companion.client()
    recorder.catch_up()
    flight.set(GEAR_HANDLE, 1)
    assert recorder.wait_for_fired("gear") == ["begun", "climbed", "chained", "gear"]
    fired_at = [event["elapsed_s"] for event in recorder.fired]
    assert fired_at[0] < fired_at[1] == fired_at[2] < fired_at[3]
    stop(recorder.client)
    recorder.catch_up()
    everything = recorder.client.data("catch_up")
    assert_whole(recorder, everything)
    assert (recorder.samples, recorder.fired) == (everything["samples"], everything["fired"])


def test_a_client_cut_off_many_times_ends_up_with_everything(companion):
    recorder = start_lesson(companion.client(), *(
        trigger(f"{tenths}", "after_start", seconds=tenths / 10) for tenths in range(0, 60, 2)))
    for _ in range(12):
        cut_off(recorder.client)
        recorder.client = companion.client()
        recorder.catch_up()
        recorder.wait_for_samples(1)
    stop(recorder.client)
    recorder.catch_up()
    everything = recorder.client.data("catch_up")
    assert (recorder.samples, recorder.fired) == (everything["samples"], everything["fired"])
    assert_whole(recorder, everything)


def test_two_clients_share_the_recording_and_the_script(companion):
    first, second = companion.client(), companion.client()
    load(first, trigger("lost", "after_start", seconds=0))
    load(second, trigger("kept", "after_start", seconds=0))
    recorders = [start(first), Recorder(second)]
    for recorder in recorders:
        assert recorder.wait_for_fired("kept") == ["kept"]
        recorder.wait_for_samples(2)
    stop(second)
    for recorder in recorders:
        recorder.catch_up()
        assert recorder.samples == recorders[0].samples and recorder.fired == recorders[0].fired
    assert_whole(recorders[0], first.data("catch_up"))


def test_clients_that_ask_all_the_time_get_everything(companion):
    """What fires on a sample comes together with it or later, also when one asks in that very moment."""
    count = 2000
    watcher = companion.client()
    load(watcher, *(trigger(f"{number}", "after_start", seconds=0.4 + number % 5 * 0.5)
                    for number in range(count)))
    start(watcher)
    recorders = [Recorder(companion.client()) for _ in range(7)]
    stopping = threading.Event()

    def follow(recorder):
        while not stopping.is_set():
            recorder.catch_up()

    threads = [threading.Thread(target=follow, args=(recorder,)) for recorder in recorders]
    for thread in threads:
        thread.start()
    try:
        wait_until(lambda: len(watcher.data("catch_up")["fired"]) == count, f"{count} triggers")
        stop(watcher)
    finally:
        stopping.set()
        for thread in threads:
            thread.join()
    everything = watcher.data("catch_up")
    for recorder in recorders:
        recorder.catch_up()
        assert recorder.samples == everything["samples"]
        assert ids(recorder.fired) == ids(everything["fired"])


# Recordings


def test_a_recording_started_again_at_once_begins_anew(companion):
    client = companion.client()
    recorder = start(client)
    recorder.wait_for_samples(2)
    old = recorder.samples[-1]["elapsed_s"]
    for _ in range(3):
        client.data("recording_start")
    again = Recorder(client)
    again.wait_for_samples(2)
    assert again.samples[0]["elapsed_s"] < old
    assert [sample for sample in again.samples if sample in recorder.samples] == []
    assert_whole(again, client.data("catch_up"))


def test_without_a_simulator_a_recording_runs_and_is_empty(programs):
    client = programs.companion().client()
    load(client, trigger("now", "after_start", seconds=0))
    start(client)
    assert client.is_quiet(1.5)
    assert client.data("catch_up") == {"samples": [], "fired": []}
    stop(client)
    assert client.data("catch_up") == {"samples": [], "fired": []}


def test_a_simulator_that_comes_later_is_recorded_from_then_on(programs):
    with reserved_port() as port:
        recorder = start(programs.companion(sim_port=port).client())
        assert recorder.client.is_quiet(1.2)
        recorder.catch_up()
        assert recorder.samples == []
        programs.simulator(port=port)
        recorder.wait_for_samples(2)
    # The clock begins with the first heartbeat, half a second after the start at most.
    assert recorder.samples[0]["elapsed_s"] > 0.6, "the clock began with the recording"


def test_a_subscription_that_waits_does_not_slow_the_heartbeat(companion, flight):
    """Each of its pushes waits a second for the value that never comes, and each tick would wait with it."""
    flight.add("sim/silent")
    waiting, healthy = companion.client(), companion.client()
    healthy.subscribe("sim/cockpit2/controls/flap_ratio")
    assert waiting.subscribe_error("sim/silent") == 'timeout("sim/silent")'
    recorder = start(companion.client())
    recorder.wait_for_samples(1)
    begun = time.monotonic()
    recorder.wait_for_samples(10)
    taken = time.monotonic() - begun
    times = [sample["elapsed_s"] for sample in recorder.samples]
    gaps = sorted(later - earlier for earlier, later in zip(times, times[1:]))
    assert gaps[len(gaps) // 2] < 1.2, f"samples {gaps} apart, in {taken} s"
    healthy.data("sim_info")
    assert len(healthy.pushes) >= len(recorder.samples) // 2
    assert waiting.is_quiet(0.1)

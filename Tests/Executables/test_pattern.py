"""tarnly-track grades a traffic pattern that the stand-in for the simulator has flown."""

import json
from pathlib import Path

import pytest
from lesson import load, start, stop

DOCS = Path(__file__).resolve().parents[2] / "docs"


def hastened(tolerances, factor):
    """The same for a simulator that is faster than the recording's clock."""
    for tolerance in tolerances:
        for key in tolerance:
            if key.endswith("_s"):
                tolerance[key] /= factor
            elif key == "descent_fpm":
                tolerance[key] *= factor
    return tolerances


def test_a_traffic_pattern_is_graded_by_the_example(programs):
    factor = 8
    _, port = programs.simulator("--start", "downwind", "--speed", factor)
    client = programs.companion(sim_port=port).client()
    load(client, *json.loads((DOCS / "lesson.json").read_text())["triggers"])
    recorder = start(client)
    recorder.wait_for_fired("final-500")
    recorder.wait_for_sample("agl_ft", 0)  # the touchdown
    stop(client)
    (file,) = programs.folder.glob("*/Recordings/session-*.jsonl")
    example = json.loads((DOCS / "tolerances-pattern.json").read_text())["tolerances"]
    tolerances = programs.new_folder() / "tolerances.json"
    tolerances.write_text(json.dumps(hastened(example, factor)))

    graded = programs.run("tarnly-track", "grade", "--json", file, tolerances)
    assert (graded.status, graded.errors) == (3, "")
    grades = {grade["id"]: grade for grade in json.loads(graded.output)["grades"]}
    # The flight begins beyond the ridge, on downwind.
    never = '"overhead-ridge" did not fire'
    assert {id_: grade["verdict"] if grade["words"] != never else never for id_, grade in grades.items()} == {
        "route-altitude": never, "circuit-altitude": "met", "no-steep-turns": "met", "stable-approach": "met",
        "gear-in-time": "met", "no-detours": never}
    fired = {each["trigger_id"]: each["elapsed_s"] for each in recorder.fired}
    assert grades["stable-approach"]["from_s"] == fired["final-500"]
    assert grades["gear-in-time"]["judged_s"] == pytest.approx(fired["final-500"] - fired["gear-check"])
    steepest = max(recorder.samples, key=lambda sample: abs(sample["bank_deg"]))
    assert grades["no-steep-turns"]["worst_s"] == steepest["elapsed_s"]
    assert programs.run("tarnly-track", "grade", file, tolerances).output.endswith("\n4 of 6 met, 2 not judged\n")

    # By the instructor's own figures the hurried flight does not do.
    plain = json.loads(programs.run("tarnly-track", "grade", "--json", file, DOCS / "tolerances-pattern.json").output)
    (stable,) = [grade for grade in plain["grades"] if grade["id"] == "stable-approach"]
    assert stable["verdict"] == "not_met" and stable["words"].startswith("descent ")

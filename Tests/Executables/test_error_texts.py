"""The texts that refusals carry, character for character."""

import pytest

PATH = "load_flight requires a path"
NAMES = "dataref_subscribe_values requires a datarefs array"
ENTRIES = "dataref_set_values requires a datarefs array"
COMMAND = "run_command requires a name"
PLACE = "move_to_preserving_agl requires lat/lon"
ATTITUDE = "apply_attitude requires pitch/bank/ias/throttle"

LACKING = [
    ("load_flight", PATH, [{}, {"path": None}, {"path": 7}, {"Path": "x"}]),
    ("dataref_subscribe_values", NAMES, [
        {}, {"datarefs": None}, {"datarefs": "sim/x"}, {"datarefs": {}}, {"datarefs": ["sim/x"]},
        {"datarefs": [{}]}, {"datarefs": [{"name": 7}]}, {"datarefs": [{"name": "sim/x"}, None]}]),
    ("dataref_set_values", ENTRIES, [
        {}, {"datarefs": [{"name": "sim/x"}]}, {"datarefs": [{"value": 1}]},
        {"datarefs": [{"name": "sim/x", "value": "1"}]}, {"datarefs": [{"name": "sim/x", "value": True}]},
        {"datarefs": [{"name": "sim/x", "value": None}]}, {"datarefs": [{"name": "sim/x", "value": [1]}]},
        {"datarefs": [{"name": "sim/x", "value": 1, "index": 1.5}]},
        {"datarefs": [{"name": "sim/x", "value": 1, "index": "1"}]},
        {"datarefs": [{"name": "sim/x", "value": 1, "index": 2**63}]}]),
    ("run_command", COMMAND, [{}, {"name": None}, {"name": ["x"]}]),
    ("move_to_preserving_agl", PLACE, [
        {}, {"lat": 1}, {"lon": 1}, {"lat": "1", "lon": 1}, {"lat": 1, "lon": None},
        {"lat": True, "lon": 1}]),
    ("apply_attitude", ATTITUDE, [
        {}, {"pitch_deg": 1, "bank_deg": 1, "ias_kts": 1}, {"bank_deg": 1, "ias_kts": 1, "throttle": 1},
        {"pitch_deg": 1, "bank_deg": 1, "ias_kts": "fast", "throttle": 1},
        {"pitch": 1, "bank": 1, "ias": 1, "throttle": 1}]),
]
CASES = [(type_, text, params) for type_, text, many in LACKING for params in [None, 5, "x", [], True, *many]]


@pytest.fixture(scope="module")
def client(shared_programs):
    return shared_programs.companion().client()


@pytest.mark.parametrize("type_, text, params", CASES, ids=repr)
def test_params_that_do_not_fit_are_missing(client, type_, text, params):
    assert client.error(type_, params) == f'missingParams("{text}")'


@pytest.mark.parametrize("type_, text, _", LACKING, ids=[type_ for type_, _, _ in LACKING])
def test_no_params_at_all_are_missing(client, type_, text, _):
    assert client.error(type_) == f'missingParams("{text}")'


@pytest.mark.parametrize("type_", [
    "", "nope", "Pair", "SIM_INFO", "sim_info ", "unsubscribe", "error", 'he said "no"\\', "über/✈",
    "\n\r\t\0\x01\x1f\x7f"])
def test_an_unknown_type_is_named_as_received(client, type_):
    assert client.error(type_) == f"unknown message type: {type_}"


ESCAPED = [('a"b', r'a\"b'), ("a\\b", r"a\\b"), ("\n\r\t\0", r"\n\r\t\0"),
           ("\x01\x1f\x7f", r"\u{1}\u{1F}\u{7F}"), ("\b\f", r"\u{8}\u{C}"), ("/", "/"),
           ("über✈😀", "über✈😀"), ("", ""), ("'", "'"), ("\\n", r"\\n")]


@pytest.mark.parametrize("text, shown", ESCAPED, ids=repr)
def test_a_name_in_an_error_is_shown_escaped(companion, fake, text, shown):
    fake.add("sim/known", 1)
    client = companion.client()
    assert client.subscribe_error(f"sim/x{text}") == f'unknownDataref("sim/x{shown}")'
    assert client.error("run_command", {"name": text}) == f'unknownCommand("{shown}")'
    assert client.error("dataref_set_values", {"datarefs": [{"name": text, "value": 1}]}) == \
        f'unknownDataref("{shown}")'


def test_flights_without_a_folder_and_a_flight_that_is_not_there_are_refused_by_name(client):
    assert client.error("list_flights") == "situationsDirectoryNotConfigured"
    path = "/no/such/Pattern 1.sit"
    assert client.error("load_flight", {"path": path}) == f'flightNotFound("{path}")'


def test_an_empty_list_of_names_needs_no_value(companion):
    client = companion.client()
    assert client.subscribe() == {}
    assert client.set() == {"ok": True}

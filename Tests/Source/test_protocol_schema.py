"""docs/protocol.schema.json fits the examples of docs/protocol.md: what a client may send, and what it gets."""

import json
import re
import sys
from pathlib import Path

import jsonschema
import pytest

TREE = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(TREE / "Tests" / "Executables"))

from wire_examples import DOCUMENT, NUMBER_KEY, THE_END, pattern_of, read_examples  # noqa: E402

SCHEMA = json.loads((TREE / "docs" / "protocol.schema.json").read_text())
# Whose parameters cannot be read: the answers that say so.
REFUSED = re.compile(r"missingParams\(|^unknown message type")


def complete(value):
    """An example's message with something in the place of each placeholder."""
    if isinstance(value, dict):
        return 12.5 if set(value) == {NUMBER_KEY} else {key: complete(element) for key, element in value.items()}
    if isinstance(value, list):
        return [complete(element) for element in value if element != {NUMBER_KEY: "more"}]
    return value


def is_valid(definition, message):
    schema = {"$ref": f"#/$defs/{definition}", "$defs": SCHEMA["$defs"]}
    return jsonschema.Draft202012Validator(schema).is_valid(message)


def messages():
    """Of each example that is JSON: its line, whether a client sent it, the message, and what it was answered with."""
    for example in read_examples(DOCUMENT.read_text()):
        talk = []
        for message in example.messages:
            try:
                talk.append((message, complete(pattern_of(message.text))) if message.text != THE_END else None)
            except json.JSONDecodeError:
                talk.append(None)
        for place, entry in enumerate(talk):
            if entry:
                answers = [other[1] for other in talk[place + 1:] if other and not other[0].is_sent]
                yield pytest.param(*entry, answers, id=f"line-{entry[0].line}")


def is_refused(message, answers):
    """Whether a request is answered by saying that it is none."""
    for answer in answers:
        text = answer["data"].get("message", "") if answer["type"] == "error" else ""
        if text == "malformed message":
            return True
        if answer.get("req_id") == message.get("req_id"):
            return bool(REFUSED.search(text))
    return False


def test_the_schema_is_one():
    jsonschema.Draft202012Validator.check_schema(SCHEMA)


def test_there_is_an_example_of_each_message():
    types = {request["properties"]["type"]["const"] for request in SCHEMA["$defs"]["Request"]["oneOf"]}
    header = (TREE / "Sources" / "TarnlyCore" / "Protocol" / "Messages.hpp").read_text()
    declared = re.search(r"namespace MessageType \{(.*?)\n\}", header, re.DOTALL).group(1)
    assert types == set(re.findall(r'= "(\w+)";', declared))
    shown = {entry.values[1].get("type") for entry in messages() if entry.values[0].is_sent}
    assert types <= shown


@pytest.mark.parametrize("message, content, answers", list(messages()))
def test_an_example_is_what_the_schema_says(message, content, answers):
    if not message.is_sent:
        assert is_valid("Reply", content)
    else:
        assert is_valid("Request", content) != is_refused(content, answers)


@pytest.mark.parametrize("definition, message", [
    ("Request", {"type": "load_flight"}),
    ("Request", {"type": "load_flight", "params": {"path": 1}}),
    ("Request", {"type": "apply_attitude", "params": {"pitch_deg": 1, "bank_deg": 1, "ias_kts": 1}}),
    ("Request", {"type": "no_such"}),
    ("Request", {"type": "pair", "req_id": "1"}),
    ("Reply", {"type": "pair", "data": {}}),
    ("Reply", {"type": "catch_up", "req_id": 1, "data": {"samples": [{"elapsed_s": 0}], "fired": []}}),
    ("Reply", {"type": "sim_info", "req_id": 1}),
])
def test_what_is_no_message_is_refused(definition, message):
    assert not is_valid(definition, message)

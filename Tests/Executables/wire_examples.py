"""The examples of docs/protocol.md, as conversations that can be replayed."""

import json
import re
from dataclasses import dataclass
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
DOCUMENT = REPOSITORY / "docs" / "protocol.md"

SENT, RECEIVED = "→ ", "← "
THE_END = "end of the connection"

PLACEHOLDER = re.compile(r"<([a-z_]+)>")
# The one key of an object that stands for a number's placeholder; no message has such a key.
NUMBER_KEY = "<number>"


@dataclass
class Message:
    line: int
    is_sent: bool
    text: str


@dataclass
class Example:
    line: int
    tags: frozenset
    messages: list

    def __str__(self):
        return f"line-{self.line}"


def read_examples(text):
    """The ```wire blocks of a Markdown text."""
    examples, current = [], None
    for number, line in enumerate(text.splitlines(), 1):
        if current is None:
            if line == "```wire" or line.startswith("```wire "):
                current = Example(number, frozenset(line.split()[1:]), [])
        elif line == "```":
            examples.append(current)
            current = None
        elif line.startswith((SENT, RECEIVED)):
            current.messages.append(Message(number, line.startswith(SENT), line[len(SENT):]))
        else:
            assert line.startswith("    ") and current.messages, f"line {number} belongs to no message"
            current.messages[-1].text += "\n" + line
    assert current is None, f"the example in line {current.line} has no end"
    return examples


def filled_in(text, known):
    """A request with the values that its placeholders have taken on."""
    text = re.sub(r'"<([a-z_]+)>"', lambda match: json.dumps(known[match.group(1)]), text)
    return PLACEHOLDER.sub(lambda match: json.dumps(known[match.group(1)]), text)


def pattern_of(text):
    """What a printed reply says, its unquoted placeholders as objects of their own."""
    outside_quotes = r'("(?:[^"\\]|\\.)*")|<([a-z_]+)>'
    return json.loads(re.sub(outside_quotes,
                             lambda m: m.group(1) or json.dumps({NUMBER_KEY: m.group(2)}), text))


def matches(printed, real, known):
    """Whether a reply is the printed one. `known` takes up what the placeholders stand for."""
    if isinstance(printed, dict):
        if set(printed) == {NUMBER_KEY}:
            return is_number(real) and known.setdefault(printed[NUMBER_KEY], real) == real
        return (isinstance(real, dict) and set(printed) == set(real)
                and all(matches(printed[key], real[key], known) for key in printed))
    if isinstance(printed, list):
        return isinstance(real, list) and list_matches(printed, real, known)
    if isinstance(printed, str):
        return isinstance(real, str) and text_matches(printed, real, known)
    if is_number(printed):
        return is_number(real) and printed == real
    return type(printed) is type(real) and printed == real


def list_matches(printed, real, known):
    if printed and printed[-1] == {NUMBER_KEY: "more"}:
        printed = printed[:-1]
        real = real[:len(printed)]
    return len(printed) == len(real) and all(matches(p, r, known) for p, r in zip(printed, real))


def text_matches(printed, real, known):
    names = PLACEHOLDER.findall(printed)
    expression = PLACEHOLDER.sub("(.+)", re.escape(printed))
    found = re.fullmatch(expression, real, re.DOTALL)
    return found is not None and all(known.setdefault(n, t) == t for n, t in zip(names, found.groups()))


def is_number(value):
    return isinstance(value, (int, float)) and not isinstance(value, bool)

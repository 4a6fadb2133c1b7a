"""The port that stays, in a network of the test's own, where nobody else has it."""

import json

import pytest
from harness import Companion
from two_hosts import Host, NotPermitted

USUAL = list(range(28086, 28096))


@pytest.fixture
def host():
    host = Host()
    try:
        host.ip("link set lo up")
        yield host
    except NotPermitted as reason:
        pytest.skip(f"no network namespaces here: {reason}")
    finally:
        host.end()


def start(programs, host, *options):
    folder = programs.new_folder()
    program = programs.start("tarnlyd", "--sim-port", 1, "--no-advertise", "--data-dir", folder, *options,
                             prefix=host.prefix)
    return Companion(program, programs), folder


def test_the_port_is_the_same_at_each_start(programs, host):
    for _ in range(2):
        companion, _ = start(programs, host)
        assert companion.port == USUAL[0]
        companion.program.end()


def test_a_port_that_is_taken_means_the_next_one_and_any_at_last(programs, host):
    started = [start(programs, host)[0] for _ in USUAL]
    assert [companion.port for companion in started] == USUAL
    assert [companion.program.errors() for companion in started] == [""] * len(USUAL)
    last, folder = start(programs, host)
    assert last.port not in [0, *USUAL]
    [line] = last.program.errors().splitlines()
    assert f"28086 to 28095 are all in use, so this start listens on port {last.port}" in line
    status = json.loads(programs.run("tarnlyd", "--status", "--data-dir", folder).output)
    assert status["warnings"] == [line.removeprefix("Tarnly: ")]


def test_any_port_may_be_asked_for(programs, host):
    companion, _ = start(programs, host, "--port", 0)
    assert companion.port not in [0, *USUAL]
    assert companion.program.errors() == ""

"""The stand-in simulator's orders while it runs."""

import json
import subprocess
import urllib.request

from harness import wait_until


def fetch(port, path, body=None):
    with urllib.request.urlopen(f"http://127.0.0.1:{port}{path}", body, timeout=60) as response:
        return json.load(response)


def test_orders_are_taken_line_by_line_and_their_end_ends_nothing(programs):
    program, port = programs.simulator("--control", "stdin", stdin=subprocess.PIPE)
    program.write("main_menu on\n\n# a remark\ndance\n")
    program.wait_for_line("^Done: main_menu on$")
    assert fetch(port, "/api/v2/datarefs/count") == {"data": 0}
    program.write("load\nslow on 1")
    program.wait_for_line("^Done: load$")
    assert fetch(port, "/api/v2/datarefs/count")["data"] > 100
    program.process.stdin.close()
    program.wait_for_line("^Done: slow on 1$")
    assert fetch(port, "/control")["quirks"]["slow"] is True
    assert program.errors().splitlines() == ["That is no order: dance"]


def test_orders_can_come_from_a_file(programs):
    orders = programs.new_folder() / "orders"
    orders.write_text("restart away 1\nnull-entries on\n")
    with open(orders) as file:
        program, port = programs.simulator("--control", "stdin", stdin=file)
    program.wait_for_line("^Done: null-entries on$")

    def answer():
        try:
            return fetch(port, "/control")
        except OSError:
            return None

    assert wait_until(answer, "an answer after the restart")["quirks"]["null-entries"] is True


def test_without_being_asked_to_nothing_is_read(programs):
    program, port = programs.simulator(stdin=subprocess.PIPE)
    program.write("main_menu on\n")
    assert fetch(port, "/api/v2/datarefs/count")["data"] > 100
    assert len(program.output()) == 1 and program.errors() == ""

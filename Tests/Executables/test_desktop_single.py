"""One companion a session: another start opens the panel of the first."""

import signal

import pytest
from desktop import Desktop, Tarnly
from desktop.tarnly import PANEL
from harness import wait_until

MANY = 8


@pytest.fixture(scope="module")
def desktop():
    with Desktop() as started:
        yield started


@pytest.fixture
def tray(desktop):
    desktop.start_tray()
    yield
    desktop.end_tray()


def wait_for_window(tarnly):
    return wait_until(lambda: tarnly.window(PANEL), "the window")


def test_a_second_start_opens_the_panel_of_the_first(desktop, programs, tray):
    tarnly = Tarnly(desktop, programs)
    icon = tarnly.icon()
    tarnly.wait_for_reader()
    assert tarnly.start_again().wait() == 0
    panel = tarnly.view(PANEL)
    assert panel.area.y >= icon.bottom and tarnly.screen.area.contains(panel.area)
    assert tarnly.start_again().wait() == 0
    assert tarnly.window(PANEL)
    tarnly.client(tarnly.port())


def test_a_second_start_raises_the_window_of_the_first(desktop, programs):
    tarnly = Tarnly(desktop, programs)
    wait_for_window(tarnly)
    minimize(tarnly)
    assert tarnly.start_again().wait() == 0
    wait_for_window(tarnly)


def minimize(tarnly):
    tarnly.ask_to_close()  # offers this first
    tarnly.screen.key("Return")
    tarnly.wait_for_no_window(PANEL)


def test_a_second_start_in_the_background_opens_nothing(desktop, programs, tray):
    tarnly = Tarnly(desktop, programs)
    tarnly.icon()
    assert tarnly.start_again("--background").wait() == 0
    tarnly.open_menu()  # by now it would be there
    tarnly.screen.key("Escape")
    assert not tarnly.window(PANEL)


def test_a_second_start_brings_no_icon_and_takes_no_port(desktop, programs, tray):
    tarnly = Tarnly(desktop, programs)
    icon = tarnly.icon()
    second = tarnly.start_again()
    assert second.wait() == 0
    assert second.output() == [] and second.errors() == ""
    assert tarnly.icon() == icon


def test_of_many_starts_at_once_one_stays(desktop, programs):
    first = Tarnly(desktop, programs)
    all_of_them = [first.program] + [first.start_again() for _ in range(MANY - 1)]

    def running():
        return [program for program in all_of_them if program.process.poll() is None]

    wait_until(lambda: len(running()) == 1, "the end of all but one")
    first.program, = running()
    wait_for_window(first)
    first.client(first.port())
    assert [program.wait() for program in all_of_them if program is not first.program] == [0] * (MANY - 1)


def test_after_a_kill_it_starts_anew(desktop, programs):
    killed = Tarnly(desktop, programs)
    wait_for_window(killed)
    killed.program.expected_status = -signal.SIGKILL
    killed.program.end(signal.SIGKILL)
    tarnly = Tarnly(desktop, programs)
    wait_for_window(tarnly)
    tarnly.client(tarnly.port())
    assert tarnly.start_again().wait() == 0


def test_after_an_end_it_starts_anew_at_once(desktop, programs):
    for _ in range(3):
        tarnly = Tarnly(desktop, programs)
        wait_for_window(tarnly)
        tarnly.program.process.send_signal(signal.SIGTERM)
    last = Tarnly(desktop, programs)
    wait_for_window(last)


def test_a_first_one_that_hangs_is_told_and_not_doubled(desktop, programs):
    tarnly = Tarnly(desktop, programs)
    wait_for_window(tarnly)
    tarnly.program.process.send_signal(signal.SIGSTOP)
    try:
        second = tarnly.start_again()
        assert second.wait() == 1
        second.expected_status = 1
        assert second.errors() == "tarnly: it is running already, and does not answer; to end it: pkill -x tarnly\n"
    finally:
        tarnly.program.process.send_signal(signal.SIGCONT)


def test_two_displays_have_one_each(desktop, programs):
    first = Tarnly(desktop, programs)
    wait_for_window(first)
    with Desktop() as other:
        second = Tarnly(other, programs, XDG_RUNTIME_DIR=desktop.environment["XDG_RUNTIME_DIR"])
        wait_for_window(second)
        assert first.window(PANEL)
        assert second.program.end() == 0

"""The window with the addresses of the computer, for clients that do not find it by themselves."""

import socket
import subprocess
import sys
from urllib.parse import urlsplit

import pytest
from desktop import Desktop, Network, Tarnly
from desktop.tarnly import ADDRESSES, BUTTON, LIST_ITEM
from harness import executable, wait_until

IPV4, IPV6 = "192.168.20.5/24", "fd20::5/64"
NO_NETWORK = r"^This computer is not connected to a network\.$"


@pytest.fixture(scope="module")
def desktop():
    with Desktop() as started:
        started.start_tray()
        yield started


@pytest.fixture
def network():
    with Network(IPV4, IPV6) as made:
        yield made


@pytest.fixture
def tarnly(desktop, programs, network):
    return Tarnly(desktop, programs, prefix=network.prefix)


def open_addresses(tarnly):
    tarnly.press(tarnly.open_panel(), "Addresses…")
    return tarnly.view(ADDRESSES)


def listed(view):
    return view.names(LIST_ITEM)


def wait_for_list(view, count):
    return wait_until(lambda: len(listed(view)) == count and listed(view), f"{count} addresses")


def select(tarnly, view, url):
    item = tarnly.element(view, LIST_ITEM, url)
    tarnly.click(item.area)
    wait_until(lambda: item.is_("selected"), f"{item!r} selected")


def decoded(tarnly, folder):
    """What a camera reads on the screen; absent when there is no code."""
    picture = folder / "screen.png"
    tarnly.screen.picture(tarnly.window(ADDRESSES).area).save(picture)
    found = subprocess.run(["zbarimg", "--quiet", "--raw", str(picture)], capture_output=True, text=True)
    return found.stdout.strip() or None


def wait_for_code(tarnly, folder, url):
    wait_until(lambda: decoded(tarnly, folder) == url, f"a code of {url}")


def reaches_the_companion(programs, network, url):
    parts = urlsplit(url)
    ended = programs.run(*network.prefix, executable("tarnly-client"), "--host", parts.hostname, "--port",
                         parts.port, "info")
    return ended.status == 0


def opens_the_lesson_page(network, url):
    read = "import sys, urllib.request as r; print(r.urlopen(sys.argv[1], timeout=20).read().decode())"
    page = subprocess.run([*network.prefix, sys.executable, "-c", read, url], capture_output=True, text=True)
    return 'id="page"' in page.stdout


def test_the_addresses_are_listed_with_the_port_and_lead_to_the_companion(tarnly, programs, network):
    tarnly.open_panel()
    port = tarnly.port()
    tarnly.press(tarnly.view("Tarnly"), "Addresses…")
    view = tarnly.view(ADDRESSES)
    urls = wait_for_list(view, 2)
    assert urls == [f"http://192.168.20.5:{port}/", f"http://[fd20::5]:{port}/"]
    assert all(opens_the_lesson_page(network, url) for url in urls)
    assert all(reaches_the_companion(programs, network, url) for url in urls)
    assert tarnly.window(ADDRESSES).has_frame
    assert tarnly.screen.area.contains(view.area)


def test_without_the_page_they_are_those_of_applications(desktop, programs, network):
    tarnly = Tarnly(desktop, programs, "--no-page", prefix=network.prefix)
    view = open_addresses(tarnly)
    first, second = wait_for_list(view, 2)
    assert first.startswith("ws://192.168.20.5:") and second.startswith("ws://[fd20::5]:")
    assert not first.endswith("/")
    wait_for_code(tarnly, programs.folder, first)


def test_the_code_is_that_of_the_selected_address(tarnly, programs):
    view = open_addresses(tarnly)
    first, second = wait_for_list(view, 2)
    wait_for_code(tarnly, programs.folder, first)
    select(tarnly, view, second)
    wait_for_code(tarnly, programs.folder, second)
    tarnly.screen.key("Up")
    wait_for_code(tarnly, programs.folder, first)


def test_copy_puts_the_selected_address_on_the_clipboard(tarnly):
    view = open_addresses(tarnly)
    first, second = wait_for_list(view, 2)
    tarnly.press(view, "Copy")
    tarnly.element(view, BUTTON, "Copied")
    assert tarnly.screen.clipboard() == first
    tarnly.element(view, BUTTON, "Copy")
    select(tarnly, view, second)
    tarnly.screen.key("ctrl+c")
    tarnly.element(view, BUTTON, "Copied")
    assert tarnly.screen.clipboard() == second


def test_the_keyboard_alone_does(tarnly):
    view = open_addresses(tarnly)
    _, second = wait_for_list(view, 2)
    tarnly.focused_view(ADDRESSES)
    tarnly.tab_to(view, "Addresses")
    tarnly.screen.key("Down")
    tarnly.tab_to(view, "Copy")
    tarnly.screen.key("space")
    tarnly.element(view, BUTTON, "Copied")
    assert tarnly.screen.clipboard() == second
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(ADDRESSES)


def test_an_open_window_follows_the_network(tarnly, programs, network):
    view = open_addresses(tarnly)
    wait_for_list(view, 2)
    network.remove(IPV4, IPV6)
    tarnly.wait_for_text(NO_NETWORK, ADDRESSES)
    assert listed(view) == [] and decoded(tarnly, programs.folder) is None
    network.add("10.9.8.7/8")
    url, = wait_for_list(view, 1)
    assert url.startswith("http://10.9.8.7:")
    wait_for_code(tarnly, programs.folder, url)


def test_the_selection_stays_when_an_address_comes(tarnly, programs, network):
    view = open_addresses(tarnly)
    _, second = wait_for_list(view, 2)
    select(tarnly, view, second)
    network.add("10.9.8.7/8")
    wait_for_list(view, 3)
    wait_for_code(tarnly, programs.folder, second)


def test_without_a_network_it_says_so(desktop, programs):
    with Network() as network:
        tarnly = Tarnly(desktop, programs, prefix=network.prefix)
        view = open_addresses(tarnly)
        tarnly.wait_for_text(NO_NETWORK, ADDRESSES)
        assert listed(view) == [] and not view.showing(BUTTON)


def test_without_a_port_it_says_so(desktop, programs):
    with socket.create_server(("127.0.0.1", 0)) as occupant:
        tarnly = Tarnly(desktop, programs, "--port", occupant.getsockname()[1])
        view = open_addresses(tarnly)
        tarnly.wait_for_text(r"^Tarnly is not listening\.$", ADDRESSES)
        assert listed(view) == []

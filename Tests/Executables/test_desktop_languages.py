"""The windows in other languages, as they are and enlarged, in light and dark, and from right to left.

With a folder in TARNLY_LOOKS the pictures of all of them are put there, for people to look at.
"""

import json
import os
import re
import signal
import socket
import subprocess
import sys
from pathlib import Path

import pytest
from desktop import Desktop, Network, Portal, Tarnly
from desktop.notifier import StatusNotifier
from desktop.tarnly import ADDRESSES, LIST_ITEM, PANEL, REACH, SETTINGS
from harness import wait_until
from two_hosts import NotPermitted, TwoHosts

TESTS = Path(__file__).parents[1]
GERMAN_TEXTS = TESTS.parent / "Sources" / "TarnlyApp" / "Desktop" / "Translations" / "tarnly_de.ts"
QT_TOOLS = Path("/usr/lib/qt6/bin")  # where Debian has them

GERMAN = {"LC_ALL": "de_DE.UTF-8", "LANGUAGE": "de"}
GERMAN_TITLES = {SETTINGS: "Tarnly – Einstellungen", ADDRESSES: "Tarnly – Adressen",
                 REACH: "Tarnly – Test vom Smartphone"}
# What is the same in every language, beside what holds no two letters: names, addresses, paths.
SAME = re.compile(r"Tarnly|rig42|https?://[]a-z0-9.:[]*|ws://\S*|/\S*|[a-z]+-[a-z]+\b(?=$)")
PLAIN_WORD = re.compile(r"[A-Za-z]{2,}")


@pytest.fixture(scope="module")
def languages(tmp_path_factory):
    """A folder with languages that are made of the German translation."""
    folder = tmp_path_factory.mktemp("languages")
    for kind, language in [("foreign", "eo"), ("mirrored", "he")]:
        texts = folder / f"tarnly_{language}.ts"
        subprocess.run([sys.executable, TESTS / "Support" / "pseudo_language.py", kind, language, GERMAN_TEXTS, texts],
                       check=True)
        subprocess.run([QT_TOOLS / "lrelease", "-silent", texts, "-qm", texts.with_suffix(".qm")], check=True)
    return folder


@pytest.fixture(scope="module")
def desktop():
    with Desktop(1280, 960) as started:
        started.scale = 1
        started.start_tray()
        yield started


@pytest.fixture(params=[1, 1.25, 1.5, 2])
def scaled_desktop(request):
    with Desktop(round(1280 * request.param), round(960 * request.param)) as started:
        started.scale = request.param
        started.start_tray(icon_size=round(22 * request.param))
        yield started


@pytest.fixture
def network():
    with Network("192.168.1.20/24", "fd42:6c1e::20/64") as made:
        yield made


@pytest.fixture
def hosts():
    try:
        with TwoHosts() as made:
            yield made
    except NotPermitted as reason:
        pytest.skip(f"no network namespaces here: {reason}")


def status_of(tarnly, programs):
    def told():
        ended = programs.run("tarnly", "--status", "--data-dir", tarnly.data)
        status = json.loads(ended.output) if ended.status == 0 else {}
        return status.get("port") and status
    return wait_until(told, "how it stands")


def titles(language):
    return GERMAN_TITLES if language in ("de", "he") else {}


def open_settings(tarnly, _):
    tarnly.screen.key("ctrl+comma")


def open_addresses(tarnly, _):
    tarnly.screen.key("Return")


def open_reach(tarnly, panel):
    tarnly.tab(panel)
    tarnly.screen.key("Return")


def try_from_a_device(hosts, port, password):
    command = [*hosts.far.prefix, sys.executable, "-B", Path(__file__).parent / "far_browser.py", hosts.ADDRESSES[0],
               str(port), password]
    subprocess.run(command, capture_output=True, timeout=120, check=True)


def close(tarnly, title):
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(title)


def texts_of(view):
    """All that is said of what is in a window."""
    return [view.name, *(element.name for element in view.descendants())]


def plain_words(texts):
    return [word for text in texts for word in PLAIN_WORD.findall(SAME.sub("", text))]


def test_a_german_sees_german(desktop, programs):
    tarnly = Tarnly(desktop, programs, "--name", "rig42", **GERMAN)
    panel = tarnly.open_panel()
    tarnly.wait_for_text(r"^Erreichbar auf Port \d+, nicht bekannt gemacht: kein DNS-SD-Dienst, Kopplung ohne Passwort\.$")
    tarnly.wait_for_text(r"^Simulator: läuft nicht\. Starten Sie X-Plane ab Version 12\.1\.4\.$")
    assert "Tarnly beenden" in texts_of(panel)
    assert status_of(tarnly, programs)["stage"]["words"] == "Simulator: not running", "tools speak English"


def test_a_german_is_told_in_german_why_the_start_failed(desktop, programs):
    with socket.create_server(("", 0)) as taken:
        port = taken.getsockname()[1]
        tarnly = Tarnly(desktop, programs, "--port", port, **GERMAN)
        tarnly.open_panel()
        tarnly.wait_for_text(fr"^Start fehlgeschlagen: Verbindungen können nicht angenommen werden \(Port {port}: .*\)\. "
                             "Beenden Sie")


def test_who_prefers_english_gets_that(desktop, programs):
    tarnly = Tarnly(desktop, programs, LC_ALL="de_DE.UTF-8", LANGUAGE="en_GB:de")
    tarnly.open_panel()
    tarnly.wait_for_text(r"^Simulator: not running\. ")


def test_a_language_that_there_is_not_is_english(desktop, programs):
    tarnly = Tarnly(desktop, programs, LC_ALL="fr_FR.UTF-8", LANGUAGE="fr")
    tarnly.open_panel()
    tarnly.wait_for_text(r"^Simulator: not running\. ")


def test_nothing_is_said_that_is_not_translated(desktop, programs, languages, network):
    tarnly = Tarnly(desktop, programs, "--no-advertise", prefix=network.prefix, LC_ALL="eo.UTF-8", LANGUAGE="eo",
                    TARNLY_TRANSLATIONS=str(languages))
    panel = tarnly.open_panel()
    tarnly.wait_for_text("ｎｏｔ ｒｕｎｎｉｎｇ")
    assert plain_words(texts_of(panel)) == []
    tarnly.screen.key("Escape")
    for open_window, count in [(open_settings, 30), (open_addresses, 5), (open_reach, 5)]:
        tarnly.wait_for_no_panel()
        open_window(tarnly, tarnly.open_panel())
        title = wait_until(lambda: next(iter(tarnly.titles() - {PANEL}), None), f"what {open_window.__name__} opens")
        view = tarnly.focused_view(title)
        texts = texts_of(view)
        assert plain_words(texts) == [] and len(texts) > count
        close(tarnly, title)
    texts = texts_of(tarnly.open_menu())
    assert plain_words(texts) == [] and len(texts) > 4


def test_what_came_of_a_test_is_translated(desktop, programs, languages, hosts):
    home = programs.new_folder()
    (home / "data" / "Tarnly").mkdir(parents=True)
    (home / "data" / "Tarnly" / "settings.json").write_text(json.dumps({"password": "gate", "startAtLogin": False}))
    tarnly = Tarnly(desktop, programs, "--no-advertise", home=home, prefix=hosts.near.prefix,
                    LC_ALL="eo.UTF-8", LANGUAGE="eo", TARNLY_TRANSLATIONS=str(languages))
    open_reach(tarnly, tarnly.open_panel())
    title = wait_until(lambda: next(iter(tarnly.titles() - {PANEL}), None), "the test")
    tarnly.wait_for_text("ｙｅｔ", title)
    port = status_of(tarnly, programs)["port"]
    for password, told in [("wrong", "ｒｅｆｕｓｅｄ"), ("gate", "ｐａｉｒｅｄ")]:
        try_from_a_device(hosts, port, password)
        tarnly.wait_for_text(told, title)
        assert plain_words(texts_of(tarnly.view(title))) == []


def test_a_notification_is_in_the_language(desktop, programs, languages):
    home = programs.new_folder()
    (home / "data" / "Tarnly").mkdir(parents=True)
    (home / "data" / "Tarnly" / "Recordings").write_text("in the way of the folder")
    with StatusNotifier(desktop.bus_address) as notifier:
        tarnly = Tarnly(desktop, programs, home=home, **GERMAN)
        client = tarnly.client(status_of(tarnly, programs)["port"])
        client.data("recording_start")
        notice = wait_until(lambda: notifier.notices and notifier.notices[0], "a notification")
        assert "Die Aufzeichnung wird nicht geschrieben" in str(notice)


def save(tarnly, title, name):
    folder = os.environ.get("TARNLY_LOOKS")
    if folder:
        tarnly.screen.picture(tarnly.window(title).area).save(Path(folder) / f"{name}-{tarnly.scale}.png")


@pytest.mark.parametrize("scheme", ["light", "dark"])
@pytest.mark.parametrize("language", ["en", "de", "he"])
def test_every_window_can_be_used(scaled_desktop, programs, languages, network, language, scheme):
    """In each language, enlarged, and from right to left."""
    spoken = {"LC_ALL": f"{language}.UTF-8", "LANGUAGE": language, "TARNLY_TRANSLATIONS": str(languages)}
    with Portal(scaled_desktop.bus_address, Portal.DARK if scheme == "dark" else Portal.LIGHT):
        _, sim_port = programs.simulator("--start", "cruise")
        tarnly = Tarnly(scaled_desktop, programs, "--name", "rig42", sim_port=sim_port, scale=scaled_desktop.scale,
                        **spoken)
        client = tarnly.client(status_of(tarnly, programs)["port"])
        client.data("recording_start")
        tarnly.open_panel()
        tarnly.wait_for_text(r"Flug geladen|flight loaded")
        tarnly.wait_for_text(r"Messpunkte|samples,")
        assert tarnly.screen.area.contains(tarnly.window(PANEL).area)
        save(tarnly, PANEL, f"panel-{language}-{scheme}")
        client.data("recording_stop")
        assert tarnly.program.end(signal.SIGTERM) == 0

        tarnly = Tarnly(scaled_desktop, programs, "--name", "rig42", prefix=network.prefix,
                        scale=scaled_desktop.scale, **spoken)
        for title, open_window, name in [(SETTINGS, open_settings, "settings"), (ADDRESSES, open_addresses, "addresses"),
                                         (REACH, open_reach, "reach")]:
            title = titles(language).get(title, title)
            tarnly.wait_for_no_panel()
            open_window(tarnly, tarnly.open_panel())
            view = tarnly.focused_view(title)
            if name == "addresses":
                wait_until(lambda: len(view.showing(LIST_ITEM)) == 2, "the addresses")
            if name == "reach":
                tarnly.wait_for_text("Nobody has reached|Noch kein Gerät hat", title)
            assert tarnly.screen.area.contains(tarnly.window(title).area)
            assert not view.showing("scroll bar"), "there is room for all"
            save(tarnly, title, f"{name}-{language}-{scheme}")
            close(tarnly, title)

"""The files for the desktop, the software catalogue, firewalls, systemd and the manual are in order."""

import configparser
import re
import struct
import xml.etree.ElementTree as xml

from package_files import FILES, PROGRAMS, REPOSITORY, run, tool, version

FIRST_PORT, LAST_PORT = 28086, 28095
METAINFO = FILES / "desktop" / "org.example.tarnly.metainfo.xml"
DESKTOP = FILES / "desktop" / "tarnly.desktop"
ICONS = FILES / "icons" / "hicolor"


def test_the_desktop_file_is_valid(folder):
    run(tool("desktop-file-validate"), DESKTOP, home=folder)


def test_the_desktop_file_starts_the_application_with_its_icon():
    parser = configparser.ConfigParser(interpolation=None)
    parser.optionxform = str
    parser.read(DESKTOP)
    entry = parser["Desktop Entry"]
    assert (entry["Type"], entry["Exec"], entry["Icon"]) == ("Application", "tarnly", "tarnly")


def test_the_catalogue_entry_is_valid(folder):
    run(tool("appstreamcli"), "validate", "--strict", "--no-net", METAINFO, home=folder)


def test_the_catalogue_entry_names_the_desktop_file_and_the_programs():
    component = xml.parse(METAINFO).getroot()
    assert component.findtext("launchable") == DESKTOP.name
    assert [binary.text for binary in component.iter("binary")] == PROGRAMS
    assert METAINFO.name == component.findtext("id") + ".metainfo.xml"


def test_the_catalogue_entry_has_the_versions_of_the_changelog():
    headings = re.findall(r"^## ([\d.]+)", (REPOSITORY / "CHANGELOG.md").read_text(), re.MULTILINE)
    releases = xml.parse(METAINFO).getroot().iter("release")
    assert [release.get("version") for release in releases] == headings
    assert headings[0] == version()


def test_the_catalogue_entry_shows_pictures_of_the_documentation():
    component = xml.parse(METAINFO).getroot()
    home = component.findtext("url[@type='homepage']")
    images = [image.text for image in component.iter("image")]
    assert images
    for address in [*images, component.findtext("url[@type='help']")]:
        assert address.startswith(home)
        assert (REPOSITORY / address.removeprefix(home)).is_file(), address


def test_the_icons_have_the_sizes_of_their_folders():
    folders = [path for path in ICONS.iterdir() if path.name != "scalable"]
    assert len(folders) == 10
    for place in folders:
        header = (place / "apps" / "tarnly.png").read_bytes()[:24]
        assert header[:8] == b"\x89PNG\r\n\x1a\n" and header[12:16] == b"IHDR"
        assert "%dx%d" % struct.unpack(">II", header[16:24]) == place.name
    drawing = ICONS / "scalable" / "apps" / "tarnly.svg"
    assert drawing.read_bytes() == (FILES / "icons" / "tarnly.svg").read_bytes()


def test_the_unit_is_valid(folder):
    text = (FILES / "systemd" / "tarnlyd.service.in").read_text()
    (folder / "tarnlyd").write_text("#!/bin/sh\n")
    (folder / "tarnlyd").chmod(0o755)
    unit = folder / "tarnlyd.service"
    unit.write_text(text.replace("@TARNLY_BINDIR@", str(folder)))
    assert run(tool("systemd-analyze"), "--user", "--man=no", "verify", unit, home=folder) == ""


def paths_of_unit(key):
    """All that the unit gives that key, without the "-" by which a path that is missing does no harm."""
    text = (FILES / "systemd" / "tarnlyd.service.in").read_text()
    paths = " ".join(re.findall(rf"^{key}=(.*)$", text, re.MULTILINE)).split()
    assert all(path.startswith("-%h/") for path in paths)
    return {path.removeprefix("-%h/") for path in paths}


def test_the_daemon_cannot_reach_keys_nor_what_starts_by_itself():
    hidden = paths_of_unit("InaccessiblePaths")
    assert {".ssh", ".gnupg", ".config/autostart", ".config/systemd/user", ".local/share/dbus-1"} <= hidden
    unchanged = hidden | paths_of_unit("ReadOnlyPaths")
    assert {".config", ".bashrc", ".bash_profile", ".profile", ".zshrc", ".xsession"} <= unchanged
    assert not any(".local/share/Tarnly".startswith(path) for path in unchanged)


def test_the_daemon_has_limits():
    text = (FILES / "systemd" / "tarnlyd.service.in").read_text()
    assert re.search(r"^MemoryMax=\d+G$", text, re.MULTILINE)
    assert re.search(r"^LimitNOFILE=\d+$", text, re.MULTILINE)


def ports_of_the_programs():
    """As the source has them."""
    text = (REPOSITORY / "Sources" / "TarnlyApp" / "CompanionOptions.hpp").read_text()
    return [int(re.search(rf"std::uint16_t {name} = (\d+);", text).group(1)) for name in ("first", "last")]


def ports_of_ufw():
    profile = configparser.ConfigParser(interpolation=None)
    profile.read(FILES / "firewall" / "ufw")
    assert profile.sections() == ["Tarnly"] and {"title", "description"} < set(profile["Tarnly"])
    return profile["Tarnly"]["ports"].split("|")


def test_programs_and_firewalls_have_the_same_ports():
    service = xml.parse(FILES / "firewall" / "firewalld.xml").getroot()
    assert service.tag == "service" and service.findtext("short") == "Tarnly"
    assert [element.attrib for element in service.iter("port")] == [{"protocol": "tcp", "port": f"{FIRST_PORT}-{LAST_PORT}"}]
    assert [element.attrib for element in service.iter("include")] == [{"service": "mdns"}]
    assert ports_of_ufw() == [f"{FIRST_PORT}:{LAST_PORT}/tcp", "5353/udp"]
    assert ports_of_the_programs() == [FIRST_PORT, LAST_PORT]


def test_the_ports_are_none_that_the_system_hands_out():
    with open("/proc/sys/net/ipv4/ip_local_port_range", encoding="ascii") as file:
        first, last = map(int, file.read().split())
    assert LAST_PORT < first or last < FIRST_PORT


def test_the_manual_pages_are_well_formed(folder):
    pages = [FILES / "man" / f"{program}.1" for program in PROGRAMS]
    # It looks for the pages that these refer to where it runs.
    assert run(tool("mandoc"), "-Tlint", *pages, home=folder, cwd=FILES / "man") == ""
    for page in pages:
        assert f".Dt {page.stem.upper()} 1\n" in page.read_text()


def test_the_changelog_of_the_package_has_the_version_of_the_project():
    changelog = (FILES / "debian" / "changelog.Debian").read_text()
    assert changelog.startswith(f"tarnly ({version()}-1) ")


def test_the_package_says_that_no_licence_has_been_chosen():
    text = (FILES / "debian" / "copyright").read_text()
    assert "No licence has been chosen for Tarnly" in text
    names = [path.name.upper() for path in REPOSITORY.iterdir()]
    assert [name for name in names if name.startswith(("LICEN", "COPYING"))] == []

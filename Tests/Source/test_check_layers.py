"""The check of the layers sees what is wrong in a small tree."""

import subprocess
import tempfile
from pathlib import Path

import pytest

CHECK = Path(__file__).parents[2] / "scripts" / "check-layers"


@pytest.fixture
def folder():
    """A temporary folder; pytest's own stay behind."""
    with tempfile.TemporaryDirectory(prefix="tarnly-test-") as path:
        yield Path(path)


def check(folder, **files):
    """The status and the lines for a tree of these files, in whose names a stroke is written as two low lines."""
    for name, line in files.items():
        stem, kind = name.rsplit("_", 1)
        file = folder / "Sources" / f"{stem.replace('__', '/')}.{kind}"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f"#pragma once\n{line}\n")
    ended = subprocess.run([CHECK, folder], capture_output=True, text=True)
    assert ended.stderr == ""
    return ended.returncode, ended.stdout.splitlines()


def test_arrows_of_the_table_are_allowed(folder):
    assert check(
        folder,
        TarnlyPlatform__Net__Reader_hpp='#include "TarnlyPlatform/Base/Task.hpp"',
        TarnlyCore__Script__Engine_hpp='#include "TarnlyCore/Flight/Sample.hpp"',
        TarnlyCore__Host_hpp='#include "TarnlyCore/Protocol/Server.hpp"',
        TarnlyXPlane__Backend_cpp='#include "TarnlyCore/Flight/SimBackend.hpp"',
        TarnlyApp__Desktop__Panel_hpp="#include <QWidget>",
        TarnlyApp__Desktop__Scheme_cpp='#include "Scheme.moc"',
        TarnlyPlatform__Net__Reader_cpp="#include <boost/beast/http/read.hpp>",
        TarnlyPlatform__Files__FilePosix_cpp="#include <fcntl.h>",
    ) == (0, [])


def test_it_names_the_line_and_what_is_allowed(folder):
    assert check(folder, TarnlyCore__Script__Engine_hpp='#include "TarnlyCore/Recording/Log.hpp"') == (1, [
        "Sources/TarnlyCore/Script/Engine.hpp:2: TarnlyCore/Recording/Log.hpp: "
        "TarnlyCore/Script may include TarnlyPlatform TarnlyCore/Flight"])


@pytest.mark.parametrize("name, include", [
    ("TarnlyPlatform__Net__A_cpp", '"TarnlyCore/Flight/A.hpp"'),
    ("TarnlyPlatform__Net__A_cpp", '"TarnlyPlatform/Files/A.hpp"'),
    ("TarnlyPlatform__Base__A_cpp", "<TarnlyPlatform/Json/A.hpp>"),
    ("TarnlyCore__Protocol__A_cpp", '"TarnlyCore/CompanionHost.hpp"'),
    ("TarnlyCore__Flight__A_hpp", '"TarnlyCore/Protocol/A.hpp"'),
    ("TarnlyXPlane__A_cpp", '"TarnlyCore/Protocol/A.hpp"'),
    ("TarnlyXPlane__Link__A_cpp", '"TarnlyXPlane/A.hpp"'),
    ("TarnlyApp__A_cpp", '"TarnlyApp/Desktop/A.hpp"'),
    ("TarnlySimulator__World__A_cpp", '"TarnlySimulator/Api/A.hpp"'),
    ("TarnlySimulator__A_cpp", '"TarnlyCore/Flight/A.hpp"'),
    ("TarnlyClient__Companion__A_cpp", '"TarnlyClient/Output/A.hpp"'),
    ("TarnlyClient__A_cpp", '"TarnlyCore/Discovery/A.hpp"'),
    ("TarnlyCore__Script__A_cpp", '"Engine.hpp"'),
    ("TarnlyCore__Script__A_cpp", '"../Flight/A.hpp"'),
    ("TarnlyPlatform__Net__A_hpp", "<boost/beast/http.hpp>"),
    ("TarnlyCore__Protocol__A_cpp", "<boost/beast/http.hpp>"),
    ("TarnlyPlatform__Dnssd__A_hpp", "<avahi-client/client.h>"),
    ("TarnlyPlatform__Net__A_cpp", "<avahi-client/client.h>"),
    ("TarnlyApp__Desktop__A_cpp", '"B.moc"'),
    ("TarnlyCore__Script__A_cpp", "<unicode/locid.h>"),
    ("TarnlyCore__Recording__A_cpp", "<sqlite3.h>"),
    ("TarnlyApp__A_cpp", "<QString>"),
    ("TarnlyCore__Recording__A_cpp", "<fcntl.h>"),
    ("TarnlyCore__Recording__A_cpp", "  <unistd.h>"),
    ("TarnlyCore__A_cpp", "<sys/stat.h>"),
    ("TarnlyPlatform__Net__A_cpp", "<netinet/tcp.h>"),
    ("TarnlyPlatform__Files__FilePosix_hpp", "<unistd.h>"),
])
def test_other_includes_are_not(folder, name, include):
    status, lines = check(folder, **{name: f"#  include {include}"})
    assert status == 1 and len(lines) == 1


@pytest.mark.parametrize("name", ["TarnlyCore__Extras__A_hpp", "TarnlyPlatform__A_hpp",
                                  "TarnlyCore__Script__More__A_hpp", "Attic__A_hpp", "A_hpp"])
def test_a_file_outside_the_wings_is_told(folder, name):
    status, lines = check(folder, **{name: ""})
    assert status == 1 and len(lines) == 1


def test_an_empty_tree_is_no_tree(folder):
    assert check(folder)[0] == 1

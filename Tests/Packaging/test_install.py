"""`cmake --install` puts every file into its place, and nothing else anywhere."""

import stat

import pytest
from package_files import BUILD, PROGRAMS, REPOSITORY, run

SIZES = ["16x16", "22x22", "24x24", "32x32", "44x44", "48x48", "64x64", "128x128", "256x256", "512x512"]
DOCS = REPOSITORY / "docs"


def expected_files(prefix, configuration, zsh_functions):
    below_prefix = [
        *(f"bin/{program}" for program in PROGRAMS),
        *(f"share/man/man1/{program}.1" for program in PROGRAMS),
        *(f"share/bash-completion/completions/{program}" for program in PROGRAMS),
        *(f"share/fish/vendor_completions.d/{program}.fish" for program in PROGRAMS),
        *(f"{zsh_functions}/_{program}" for program in PROGRAMS),
        *(f"share/icons/hicolor/{size}/apps/tarnly.png" for size in SIZES),
        "share/icons/hicolor/scalable/apps/tarnly.svg",
        "share/applications/tarnly.desktop",
        "share/metainfo/org.example.tarnly.metainfo.xml",
        "lib/firewalld/services/tarnly.xml",
        "lib/systemd/user/tarnlyd.service",
        *(f"share/doc/tarnly/{path.relative_to(DOCS)}" for path in DOCS.rglob("*") if path.is_file()),
    ]
    return {f"{prefix}/{name}" for name in below_prefix} | {f"{configuration}/ufw/applications.d/tarnly"}


@pytest.mark.parametrize("prefix, configuration, zsh_functions", [
    ("/usr", "/etc", "share/zsh/vendor-completions"),
    ("/usr/local", "/usr/local/etc", "share/zsh/site-functions"),
])
def test_every_file_is_in_its_place(folder, prefix, configuration, zsh_functions):
    run("cmake", "--install", BUILD, "--prefix", prefix, home=folder, DESTDIR=str(folder))
    installed = {path for path in folder.rglob("*") if not path.is_dir()}
    assert {f"/{path.relative_to(folder)}" for path in installed} == expected_files(
        prefix, configuration, zsh_functions)
    for path in installed:
        wanted = 0o755 if path.parent.name == "bin" else 0o644
        assert stat.S_IMODE(path.lstat().st_mode) == wanted, path
    unit = folder.joinpath(prefix.lstrip("/"), "lib/systemd/user/tarnlyd.service").read_text()
    assert f"\nExecStart={prefix}/bin/tarnlyd " in unit

"""What the builds of the pages share. Scripts come from Debian's packages, wherever NODE_PATH finds them."""

import os
import re
import subprocess


def bundled(folder, charset, entry, *options):
    """A bundle of all that the file `entry` of a folder needs; bytes."""
    command = ["esbuild", entry, "--bundle", "--minify", "--target=es2020", f"--charset={charset}", "--log-level=warning",
               "--legal-comments=none", *options]
    environment = {"NODE_PATH": "/usr/share/nodejs"} | os.environ
    return subprocess.run(command, cwd=folder, env=environment, check=True, stdout=subprocess.PIPE).stdout


def literal(content):
    """The inside of a C++ array of signed bytes."""
    bytes_ = ",".join(str(byte - 256 if byte > 127 else byte) for byte in content)
    return "\n".join(re.findall(r".{1,116}(?:,|$)", bytes_))

"""A D-Bus system bus and a DNS-SD daemon of one's own, for tests.

The daemon lives in a network namespace of its own, where only the loopback interface exists: several run at once
without seeing each other, the computer's own daemon or the network. Clients reach it through the bus, a socket in a
temporary folder; the addresses that it tells, 127.0.0.1 and ::1, mean the same outside of the namespace.
"""

import ctypes
import fcntl
import os
import pathlib
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import uuid

_BUS_CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
"""

_DAEMON_CONFIG = """[server]
host-name={host_name}
allow-interfaces=lo
use-ipv4=yes
use-ipv6=yes
enable-dbus=yes
[wide-area]
enable-wide-area=no
[publish]
publish-workstation=no
publish-hinfo=no
publish-addresses={addresses}
"""

_RUNNING = "int32 2"
_PATIENCE_SECONDS = 30


class PrivateDnssd:
    """Bus and daemon in a temporary folder; a context manager that ends both and removes the folder.

    With a `neighbour`, another one whose daemon runs, both daemons are on one network, as if on two computers. Their
    services see each other, but those of the second have no address: two computers cannot both be 127.0.0.1.
    """

    def __init__(self, neighbour=None):
        self._neighbour = neighbour
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="tarnly-dnssd-"))
        self._socket = self._folder / "bus"
        self.address = f"unix:path={self._socket}"
        self.environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self.address)
        self._bus = None
        self._daemon = None
        bus_config = _BUS_CONFIG.format(socket=self._socket)
        (self._folder / "bus.conf").write_text(bus_config)
        host_name = f"test-{uuid.uuid4().hex[:12]}"
        addresses = "no" if neighbour else "yes"
        daemon_config = _DAEMON_CONFIG.format(host_name=host_name, addresses=addresses)
        (self._folder / "daemon.conf").write_text(daemon_config)

    def __enter__(self):
        try:
            self.start_bus()
            self.start_daemon()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *exception):
        self.close()

    def signal_daemon(self, number):
        self._daemon.send_signal(number)

    def start_bus(self):
        self._socket.unlink(missing_ok=True)
        command = ["dbus-daemon", f"--config-file={self._folder / 'bus.conf'}", "--nofork", "--nopidfile"]
        self._bus = self._start(command, "bus.log")
        self._wait(self._bus, "bus.log", self._socket.exists)

    def stop_bus(self):
        self._bus = _end(self._bus)

    def start_daemon(self):
        """Returns when the daemon answers on the bus and has claimed its host name."""
        command = self._enter_namespaces()
        command += [sys.executable, __file__, str(self._folder / "daemon.conf")]
        self._daemon = self._start(command, "daemon.log")
        self._wait(self._daemon, "daemon.log", self._daemon_is_running)

    def stop_daemon(self):
        self._daemon = _end(self._daemon)

    def restart_daemon(self):
        self.stop_daemon()
        self.start_daemon()

    def restart(self):
        """Restarts both: all connections to the bus break."""
        self.stop_daemon()
        self.stop_bus()
        self.start_bus()
        self.start_daemon()

    def close(self):
        self.stop_daemon()
        self.stop_bus()
        shutil.rmtree(self._folder, ignore_errors=True)

    def _start(self, command, log):
        with open(self._folder / log, "ab") as output:
            return subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=output, stderr=output, env=self.environment,
                preexec_fn=_end_with_parent)

    def in_network(self, *command):
        """`command` so that it runs in the network of the daemon."""
        user = [] if os.geteuid() == 0 else ["--user", "--preserve-credentials"]
        return ["nsenter", f"--target={self._daemon.pid}", "--net", *user, *command]

    def _enter_namespaces(self):
        # The same user inside: the bus compares who one claims to be with who one is.
        user = [] if os.geteuid() == 0 else ["--user", "--map-current-user", "--keep-caps"]
        if self._neighbour:
            return self._neighbour.in_network("unshare", "--mount", *user)
        return ["unshare", "--net", "--mount", *user]

    def _daemon_is_running(self):
        query = ["dbus-send", f"--bus={self.address}", "--print-reply", "--reply-timeout=2000",
                 "--dest=org.freedesktop.Avahi", "/", "org.freedesktop.Avahi.Server.GetState"]
        answer = subprocess.run(query, capture_output=True, text=True, check=False)
        return answer.returncode == 0 and _RUNNING in answer.stdout

    def _wait(self, process, log, is_ready):
        deadline = time.monotonic() + _PATIENCE_SECONDS
        while not is_ready():
            if process.poll() is not None or time.monotonic() > deadline:
                text = (self._folder / log).read_text(errors="replace")
                raise RuntimeError(f"{process.args[0]} does not come up:\n{text}")
            time.sleep(0.02)


def _end_with_parent():
    """Nothing stays behind when the parent is killed. Runs between fork and exec."""
    pr_set_pdeathsig = 1
    ctypes.CDLL(None).prctl(pr_set_pdeathsig, signal.SIGTERM)
    # A terminal's interrupt is for the parent, which then ends its children in their order.
    os.setsid()


def _end(process):
    if process is None:
        return
    process.terminate()
    process.send_signal(signal.SIGCONT)
    try:
        process.wait(timeout=10)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def _set_loopback_up():
    siocgifflags, siocsifflags, iff_up, name_and_flags = 0x8913, 0x8914, 0x1, "16sH14x"
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
        answer = fcntl.ioctl(control, siocgifflags, struct.pack(name_and_flags, b"lo", 0))
        _, flags = struct.unpack(name_and_flags, answer)
        if flags & iff_up:
            return
        fcntl.ioctl(control, siocsifflags, struct.pack(name_and_flags, b"lo", flags | iff_up))


def _replace(path, content):
    """Puts a file over another one, as this process sees it."""
    own = pathlib.Path("/run", os.path.basename(path))
    own.write_text(content)
    subprocess.run(["mount", "--bind", str(own), path], check=True)


def _become_daemon(config):
    """Turns this process, which is in namespaces of its own, into the daemon."""
    _set_loopback_up()
    # The daemon insists on a pid file, in a folder that belongs to a user named "avahi": here that is who runs it.
    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", "/run"], check=True)
    os.mkdir("/run/avahi-daemon")
    _replace("/etc/passwd", f"avahi:x:{os.getuid()}:{os.getgid()}::/:/bin/false\n")
    _replace("/etc/group", f"avahi:x:{os.getgid()}:\n")
    os.execvp("avahi-daemon", ["avahi-daemon", "-f", config, "--no-drop-root", "--no-chroot", "--no-rlimits"])


if __name__ == "__main__":
    os.environ["PATH"] += ":/usr/sbin:/sbin"
    _become_daemon(sys.argv[1])

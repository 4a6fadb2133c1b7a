import os
import subprocess

_BEGIN = "echo && exec cat"  # says that it is there, and stays until its input ends


class Network:
    """A network of its own, with no way out; a context manager.

    It has a loopback interface, and one with the given addresses, such as "192.168.20.5/24". That one is an end of
    a pair, because an interface runs while it is connected with another.
    """

    def __init__(self, *addresses):
        self._addresses = addresses

    def __enter__(self):
        # The same user inside: a bus compares who one claims to be with who one is.
        user = [] if os.geteuid() == 0 else ["--user", "--map-current-user", "--keep-caps"]
        self._keeper = subprocess.Popen(["unshare", "--net", *user, "sh", "-c", _BEGIN],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        try:
            assert self._keeper.stdout.readline() == b"\n", "no network namespace can be made here"
            self._set_up()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *exception):
        self._keeper.stdin.close()
        self._keeper.wait()
        self._keeper.stdout.close()

    @property
    def prefix(self):
        """A command that becomes the one after it, in this network."""
        user = [] if os.geteuid() == 0 else ["--user", "--preserve-credentials"]
        return ["/usr/bin/nsenter", f"--target={self._keeper.pid}", "--net", *user]

    def add(self, *addresses):
        for address in addresses:
            self._ip("address", "add", address, "dev", "near", "nodad" if ":" in address else "noprefixroute")

    def remove(self, *addresses):
        for address in addresses:
            self._ip("address", "del", address, "dev", "near")

    def _set_up(self):
        self._ip("link", "set", "lo", "up")
        self._ip("link", "add", "near", "type", "veth", "peer", "name", "far")
        for name in ("near", "far"):
            self._ip("link", "set", name, "up")
        self.add(*self._addresses)

    def _ip(self, *arguments):
        path = os.environ["PATH"] + ":/usr/sbin:/sbin"
        subprocess.run([*self.prefix, "ip", *arguments], check=True, env=dict(os.environ, PATH=path))

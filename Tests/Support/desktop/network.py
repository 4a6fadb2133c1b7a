import os
import subprocess


class Network:
    """A network of its own, with no way out; a context manager.

    It has a loopback interface, and one with the given addresses, such as "192.168.20.5/24". That one is an end of
    a pair, because an interface runs while it is connected with another.
    """

    def __init__(self, *addresses):
        self._addresses = addresses

    def __enter__(self):
        # The same user inside: a bus compares who one claims to be with who one is. Only what this shell starts may
        # change the network then.
        user = [] if os.geteuid() == 0 else ["--user", "--map-current-user", "--keep-caps"]
        path = os.environ["PATH"] + ":/usr/sbin:/sbin"
        self._shell = subprocess.Popen(["unshare", "--net", *user, "sh"], stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, text=True, env=dict(os.environ, PATH=path))
        try:
            self._set_up()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *exception):
        self._shell.stdin.close()
        self._shell.wait()
        self._shell.stdout.close()

    @property
    def prefix(self):
        """A command that becomes the one after it, in this network."""
        user = [] if os.geteuid() == 0 else ["--user", "--preserve-credentials"]
        return ["/usr/bin/nsenter", f"--target={self._shell.pid}", "--net", *user]

    def add(self, *addresses):
        for address in addresses:
            self._ip(f"address add {address} dev near {'nodad' if ':' in address else ''}")

    def remove(self, *addresses):
        for address in addresses:
            self._ip(f"address del {address} dev near")

    def _set_up(self):
        self._ip("link set lo up")
        self._ip("link add near type veth peer name far")
        self._ip("link set near up")
        self._ip("link set far up")
        self.add(*self._addresses)

    def _ip(self, command):
        print(f"ip {command} && echo done || echo failed", file=self._shell.stdin, flush=True)
        assert self._shell.stdout.readline() == "done\n", f"ip {command}"

"""Two computers on one cable: two network namespaces and a pair of interfaces."""

import os
import subprocess


class NotPermitted(Exception):
    """This machine does not allow network namespaces, or not to this user."""


class Host:
    def __init__(self):
        path = os.environ["PATH"] + ":/usr/sbin:/sbin"
        self._shell = subprocess.Popen(["unshare", "--net", "sh"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL, text=True, env=dict(os.environ, PATH=path))

    @property
    def pid(self):
        return self._shell.pid

    @property
    def prefix(self):
        """A command that becomes the one after it, on this computer."""
        return ["/usr/bin/nsenter", f"--target={self.pid}", "--net"]

    def ip(self, command):
        try:
            print(f"ip {command} && echo done || echo failed", file=self._shell.stdin, flush=True)
        except BrokenPipeError:
            raise NotPermitted from None
        if self._shell.stdout.readline() != "done\n":
            raise NotPermitted(f"ip {command}")

    def end(self):
        for pipe in (self._shell.stdin, self._shell.stdout):
            pipe.close()
        self._shell.wait()


class TwoHosts:
    """A context manager; raises `NotPermitted` where that is so."""

    ADDRESSES = ("10.77.0.1", "10.77.0.2")

    def __enter__(self):
        self.near, self.far = Host(), Host()
        try:
            for host in (self.near, self.far):
                host.ip("link set lo up")
            self.near.ip(f"link add cable type veth peer name cable netns {self.far.pid}")
            for host, address in zip((self.near, self.far), self.ADDRESSES, strict=True):
                host.ip(f"address add {address}/24 dev cable")
                host.ip("link set cable up")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *exception):
        self.near.end()
        self.far.end()

    def lose_far(self):
        """The far one is out of reach: what is sent to it arrives nowhere, and nothing says so."""
        self.far.ip("link set cable down")

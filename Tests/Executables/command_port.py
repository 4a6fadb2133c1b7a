"""The simulator's command port, at which the companion's orders to load a flight arrive."""

import socket
import struct

from lesson import loopback_address

COMMAND_PORT = 49000


class CommandPort:
    """On a loopback address of its own."""

    def __init__(self):
        self.host = loopback_address()
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind((self.host, COMMAND_PORT))
        self.socket.settimeout(60)

    def datagram(self):
        return self.socket.recv(65536)

    def hand_on(self, datagram, port):
        """To a stand-in that listens for orders at this port."""
        self.socket.sendto(datagram, ("127.0.0.1", port))

    def is_quiet(self):
        self.socket.setblocking(False)
        try:
            self.socket.recv(65536)
        except BlockingIOError:
            return True
        finally:
            self.socket.settimeout(60)
        return False

    def close(self):
        self.socket.close()


def datagram_for(relative_path):
    path = relative_path.encode()[:150]
    return b"SIMO\0" + struct.pack("<i", 1) + path.ljust(150, b"\0") + b"\0\0"

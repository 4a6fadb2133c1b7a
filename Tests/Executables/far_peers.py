"""far_peers HOST PORT KIND COUNT [ADDRESS...]: connections from another computer, whose fate is told.

KIND is "strangers", who say nothing, or "clients", who pair. They come one after the other, from the addresses in turn.
Prints one object: how many are open after a while, and what came of the last ones. With standard input open they stay.
"""

import json
import socket
import sys
import time

import websocket_frames as frames

UPGRADE = ("GET / HTTP/1.1\r\nHost: {host}:{port}\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n")


def connect(host, port, source, kind):
    """The connection, and the status of the answer to its request; None for a stranger."""
    peer = socket.create_connection((host, port), timeout=60, source_address=(source, 0) if source else None)
    if kind == "strangers":
        return peer, None
    name = f"[{host}]" if ":" in host else host
    peer.sendall(UPGRADE.format(host=name, port=port).encode())
    stream = peer.makefile("rb")
    status = int(stream.readline().split()[1])
    if status == 101:
        while stream.readline().strip():
            pass
        peer.sendall(frames.encode(frames.TEXT, b'{"type":"pair"}'))
        frames.read(stream)
    return peer, status


def is_open(peer):
    peer.settimeout(1e-6)
    try:
        return peer.recv(1) != b""
    except ConnectionResetError:
        return False
    except (TimeoutError, BlockingIOError):
        return True


def main(host, port, kind, count, *sources):
    peers = [connect(host, int(port), sources[n % len(sources)] if sources else None, kind) for n in range(int(count))]
    time.sleep(1)
    told = {"open": sum(is_open(peer) for peer, _ in peers), "first_is_open": is_open(peers[0][0]),
            "last_is_open": is_open(peers[-1][0]), "statuses": [status for _, status in peers]}
    print(json.dumps(told), flush=True)
    sys.stdin.read()


main(*sys.argv[1:])

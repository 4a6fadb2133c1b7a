"""WebSocket frames (RFC 6455), written by hand for what a library would not send."""

import base64
import hashlib
import os
import struct
from dataclasses import dataclass

CONTINUATION, TEXT, BINARY, CLOSE, PING, PONG = 0, 1, 2, 8, 9, 10


@dataclass
class Frame:
    opcode: int
    payload: bytes
    final: bool = True


def accept_key(key):
    digest = hashlib.sha1((key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11").encode()).digest()
    return base64.b64encode(digest).decode()


def encode(opcode, payload, final=True, masked=True):
    length = len(payload)
    mask_bit = 0x80 if masked else 0
    head = bytes([(0x80 if final else 0) | opcode])
    if length < 126:
        head += bytes([mask_bit | length])
    elif length < 65536:
        head += struct.pack("!BH", mask_bit | 126, length)
    else:
        head += struct.pack("!BQ", mask_bit | 127, length)
    if not masked:
        return head + payload
    key = os.urandom(4)
    return head + key + _xor(payload, key)


def _xor(payload, key):
    length = len(payload)
    mask = (key * (length // 4 + 1))[:length]
    mixed = int.from_bytes(payload, "big") ^ int.from_bytes(mask, "big")
    return mixed.to_bytes(length, "big")


def read(stream):
    """The next frame of a binary file object, or None at its end."""
    head = stream.read(2)
    if len(head) < 2:
        return None
    final, opcode = bool(head[0] & 0x80), head[0] & 0x0F
    masked, length = bool(head[1] & 0x80), head[1] & 0x7F
    if length == 126:
        length = struct.unpack("!H", stream.read(2))[0]
    elif length == 127:
        length = struct.unpack("!Q", stream.read(8))[0]
    key = stream.read(4) if masked else b""
    payload = stream.read(length)
    if len(payload) < length:
        return None
    return Frame(opcode, _xor(payload, key) if masked else payload, final)

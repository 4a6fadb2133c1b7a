"""A WebSocket client that sends what it is told to, frame by frame, right or wrong."""

import base64
import os
import select
import socket

import websocket_frames as frames

PATIENCE = 60.0


class RawWebSocket:
    def __init__(self, port, host="127.0.0.1", receive_buffer=None):
        family = socket.AF_INET6 if ":" in host else socket.AF_INET
        self.socket = socket.socket(family)
        if receive_buffer is not None:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.socket.settimeout(PATIENCE)
        self.socket.connect((host, port))
        self._stream = self.socket.makefile("rb")
        self._shake_hands(host, port)

    def _shake_hands(self, host, port):
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall((f"GET / HTTP/1.1\r\nHost: {host}:{port}\r\nUpgrade: websocket\r\n"
                             f"Connection: Upgrade\r\nSec-WebSocket-Key: {key}\r\n"
                             "Sec-WebSocket-Version: 13\r\n\r\n").encode())
        status = self._stream.readline()
        assert b" 101 " in status, status
        headers = {}
        while (line := self._stream.readline().strip()):
            name, _, value = line.decode().partition(":")
            headers[name.lower()] = value.strip()
        assert headers["sec-websocket-accept"] == frames.accept_key(key)

    def send_frame(self, opcode, payload=b"", final=True, masked=True):
        self.socket.sendall(frames.encode(opcode, payload, final, masked))

    def send_text(self, text):
        self.send_frame(frames.TEXT, text.encode() if isinstance(text, str) else text)

    def send_fragments(self, *pieces):
        """One text message in as many frames as there are pieces."""
        for index, piece in enumerate(pieces):
            opcode = frames.TEXT if index == 0 else frames.CONTINUATION
            self.send_frame(opcode, piece, final=index == len(pieces) - 1)

    def receive_frame(self):
        """The next frame, or None when the companion has ended the connection."""
        try:
            return frames.read(self._stream)
        except ConnectionResetError:
            return None

    def receive_text(self):
        """The next text message, its fragments joined; None at the end. Control frames are passed over."""
        pieces = []
        while (frame := self.receive_frame()) is not None:
            if frame.opcode in (frames.TEXT, frames.CONTINUATION):
                pieces.append(frame.payload)
                if frame.final:
                    return b"".join(pieces).decode()
            elif frame.opcode == frames.CLOSE:
                return None
        return None

    def frames_to_the_end(self):
        """All that still comes, until the companion ends the connection."""
        found = []
        while (frame := self.receive_frame()) is not None:
            found.append(frame)
        return found

    def is_quiet(self, seconds):
        """Whether nothing arrives for that long. Only right when nothing has been read ahead."""
        return not select.select([self.socket], [], [], seconds)[0]

    def close(self):
        self._stream.close()
        self.socket.close()

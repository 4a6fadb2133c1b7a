"""A simulator's web API that follows a script: it records all that it receives and misbehaves on demand."""

import contextlib
import json
import socket
import threading
import time
from dataclasses import dataclass

import websocket_frames as frames

PATIENCE = 60.0
DATAREFS = "GET /api/v2/datarefs"
COMMANDS = "GET /api/v2/commands"
FIRST_DATAREF_ID = 40_003_472_000
FIRST_COMMAND_ID = 800


@dataclass
class HttpRequest:
    method: str
    path: str
    headers: dict
    body: bytes

    @property
    def line(self):
        return f"{self.method} {self.path}"


@dataclass
class Message:
    text: str
    arrived: float

    @property
    def json(self):
        return json.loads(self.text)


@dataclass
class Response:
    status: int = 200
    body: bytes = b""
    content_type: str = "application/json"


class FakeSimulator:
    """HTTP and WebSocket on one loopback port.

    `datarefs` gives each dataref's value as JSON text, or None for one that stays silent. `responses` maps a
    request line to the answer to it: a `Response`, a function from `HttpRequest` to one, or a list of them, one
    for each request. Set up what you need before the companion's first request.
    """

    def __init__(self):
        self.datarefs = {}
        self.commands = []
        self.responses = {}
        self.on_write = None
        # Bytes that leave in one packet with the answer to the upgrade.
        self.greeting = b""
        self.requests = []
        self.messages = []
        self.handshakes = 0
        self._changed = threading.Condition()
        self._held = {}
        self._sockets = []
        self._connections = []
        self._subscribed = set()
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    # What a test asks and orders

    def add(self, name, value=None):
        """Adds a dataref; `value` is anything that JSON can express. None: it never sends one."""
        self.datarefs[name] = None if value is None else json.dumps(value)

    def dataref_id(self, name):
        return FIRST_DATAREF_ID + list(self.datarefs).index(name)

    def command_id(self, name):
        return FIRST_COMMAND_ID + self.commands.index(name)

    def set(self, name, value):
        """Changes a value, and tells the companion if it has subscribed to it."""
        self.datarefs[name] = json.dumps(value)
        number = self.dataref_id(name)
        if number in self._subscribed:
            self.send_update({number: self.datarefs[name]})

    def send_update(self, texts):
        """Sends an update of the given JSON texts by id."""
        entries = ",".join(f'"{key}":{text}' for key, text in texts.items())
        self.send(f'{{"type":"dataref_update_values","data":{{{entries}}}}}')

    def send(self, text):
        self.send_frame(frames.TEXT, text.encode())

    def send_frame(self, opcode, payload, final=True):
        data = frames.encode(opcode, payload, final, masked=False)
        with self._changed:
            sockets = list(self._sockets)
        for connection in sockets:
            with contextlib.suppress(OSError):
                connection.sendall(data)

    def hang_up(self):
        """Ends all WebSocket connections without a word."""
        with self._changed:
            sockets = list(self._sockets)
        for connection in sockets:
            with contextlib.suppress(OSError):
                connection.shutdown(socket.SHUT_RDWR)

    @contextlib.contextmanager
    def holding(self, line):
        """Answers to the request line wait until the end of the block."""
        self._held[line] = threading.Event()
        try:
            yield
        finally:
            self._held.pop(line).set()

    def wait_for(self, condition, what="what the test waits for"):
        with self._changed:
            arrived = self._changed.wait_for(condition, PATIENCE)
        assert arrived, f"{what} has not come; requests {self.lines()}, messages {self.texts()}"

    def lines(self):
        return [request.line for request in list(self.requests)]

    def texts(self):
        return [message.text for message in list(self.messages)]

    def writes(self):
        """The datarefs entries of all writes, in order of arrival."""
        found = [m.json for m in list(self.messages)]
        return [m["params"]["datarefs"] for m in found if m["type"] == "dataref_set_values"]

    def written(self):
        """(name, value) of all writes, in order of arrival."""
        names = dict(enumerate(self.datarefs, FIRST_DATAREF_ID))
        return [(names[entry["id"]], entry["value"]) for entries in self.writes() for entry in entries]

    def close(self):
        for event in list(self._held.values()):
            event.set()
        with contextlib.suppress(OSError):
            self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
        for connection in list(self._connections):
            with contextlib.suppress(OSError):
                connection.shutdown(socket.SHUT_RDWR)

    # How it answers

    def _accept(self):
        while True:
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            self._connections.append(connection)
            threading.Thread(target=self._serve, args=(connection,), daemon=True).start()

    def _serve(self, connection):
        with contextlib.suppress(OSError), connection, connection.makefile("rb") as stream:
            while (request := _read_request(stream)) is not None:
                if request.headers.get("upgrade", "").lower() == "websocket":
                    self._serve_websocket(connection, stream, request)
                    return
                self._record(self.requests, request)
                self._answer(connection, request)

    def _record(self, where, what):
        with self._changed:
            where.append(what)
            self._changed.notify_all()

    def _answer(self, connection, request):
        held = self._held.get(request.line)
        if held is not None:
            held.wait(PATIENCE)
        response = self._response(request)
        head = (f"HTTP/1.1 {response.status} Whatever\r\nContent-Type: {response.content_type}\r\n"
                f"Content-Length: {len(response.body)}\r\n\r\n")
        connection.sendall(head.encode() + response.body)

    def _response(self, request):
        scripted = self.responses.get(request.line)
        if isinstance(scripted, list):
            scripted = scripted.pop(0) if scripted else None
        if callable(scripted):
            scripted = scripted(request)
        if scripted is not None:
            return scripted
        if request.line == DATAREFS:
            return catalogue(enumerate(self.datarefs, FIRST_DATAREF_ID))
        if request.line == COMMANDS:
            return catalogue(enumerate(self.commands, FIRST_COMMAND_ID))
        if request.method == "POST" and request.path.startswith("/api/v2/command/"):
            return Response(200, b"null")
        return Response(404, b"<html><body>Not here</body></html>", "text/html")

    def _serve_websocket(self, connection, stream, request):
        accept = frames.accept_key(request.headers["sec-websocket-key"])
        connection.sendall(("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                            f"Connection: Upgrade\r\nSec-WebSocket-Accept: {accept}\r\n\r\n").encode() + self.greeting)
        with self._changed:
            self.handshakes += 1
            self._sockets.append(connection)
            self._changed.notify_all()
        self._record(self.requests, request)
        while (frame := frames.read(stream)) is not None and frame.opcode != frames.CLOSE:
            if frame.opcode == frames.TEXT:
                message = Message(frame.payload.decode(), time.monotonic())
                self._record(self.messages, message)
                self._react(message.json)

    def _react(self, message):
        self.send(json.dumps({"req_id": message["req_id"], "type": "result", "success": True}))
        names = dict(enumerate(self.datarefs, FIRST_DATAREF_ID))
        entries = message["params"]["datarefs"]
        if message["type"] == "dataref_subscribe_values":
            numbers = [entry["id"] for entry in entries]
            self._subscribed.update(numbers)
            known = {n: self.datarefs[names[n]] for n in numbers if n in names and self.datarefs[names[n]]}
            if known:
                self.send_update(known)
        elif self.on_write is not None:
            for entry in entries:
                self.on_write(names[entry["id"]], entry["value"])


def catalogue(numbered_names):
    return Response(200, json.dumps({"data": [{"id": i, "name": n} for i, n in numbered_names]}).encode())


def _read_request(stream):
    first = stream.readline()
    if not first:
        return None
    method, path, _ = first.decode().split(" ", 2)
    headers = {}
    while (line := stream.readline().strip()):
        name, _, value = line.decode().partition(":")
        headers[name.lower()] = value.strip()
    return HttpRequest(method, path, headers, stream.read(int(headers.get("content-length", 0))))

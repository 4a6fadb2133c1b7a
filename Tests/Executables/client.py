"""The training application's side, on a WebSocket library that shares nothing with the companion's."""

import asyncio
import json
import threading
import time

import websockets

PATIENCE = 60.0
_ABSENT = object()


class _Loop:
    """One event loop on a thread of its own, so that tests are plain functions."""

    def __init__(self):
        self._loop = asyncio.new_event_loop()
        threading.Thread(target=self._loop.run_forever, daemon=True).start()

    def run(self, coroutine, patience=PATIENCE):
        future = asyncio.run_coroutine_threadsafe(asyncio.wait_for(coroutine, patience), self._loop)
        return future.result(patience + 10)


_loop = _Loop()


class Closed(Exception):
    """The companion has ended the connection."""


class Client:
    def __init__(self, port, host="127.0.0.1"):
        host = f"[{host}]" if ":" in host else host
        self._socket = _loop.run(self._connect(f"ws://{host}:{port}/"))
        self._next_id = 0
        self.pushes = []

    @staticmethod
    async def _connect(uri):
        return await websockets.connect(uri, max_size=None, ping_interval=None, open_timeout=PATIENCE,
                                        close_timeout=1)

    def send(self, message):
        """Sends a text as it is, bytes as a binary message, anything else as JSON."""
        if not isinstance(message, (str, bytes)):
            message = json.dumps(message)
        try:
            _loop.run(self._socket.send(message))
        except websockets.ConnectionClosed as error:
            raise Closed() from error

    def receive(self, patience=PATIENCE):
        """The next message, decoded. Raises `Closed` at the connection's end, TimeoutError without any."""
        try:
            text = _loop.run(self._socket.recv(), patience)
        except websockets.ConnectionClosed as error:
            raise Closed() from error
        assert isinstance(text, str), "the companion sends text messages only"
        return json.loads(text)

    def reply(self):
        """The next message that is no push; pushes on the way are kept."""
        while True:
            message = self.receive()
            if not is_push(message):
                return message
            self.pushes.append(message["data"])

    def push(self):
        """The values of the next push to arrive."""
        message = self.receive()
        assert is_push(message), message
        return message["data"]

    def is_quiet(self, seconds):
        """Whether nothing arrives for that long."""
        try:
            self.receive(seconds)
        except (TimeoutError, asyncio.TimeoutError):
            return True
        return False

    def post(self, type_, params=_ABSENT):
        """Sends a request with the next request id, and returns the id."""
        self._next_id += 1
        request = {"type": type_, "req_id": self._next_id}
        if params is not _ABSENT:
            request["params"] = params
        self.send(request)
        return self._next_id

    def request(self, type_, params=_ABSENT):
        """The reply to a request, which carries the request's id."""
        request_id = self.post(type_, params)
        reply = self.reply()
        assert reply["req_id"] == request_id, reply
        return reply

    def data(self, type_, params=_ABSENT):
        """The data of a successful reply."""
        reply = self.request(type_, params)
        assert reply["type"] == type_, reply
        assert set(reply) == {"type", "req_id", "data"}
        return reply["data"]

    def error(self, type_, params=_ABSENT):
        """The message of an error reply."""
        reply = self.request(type_, params)
        assert reply["type"] == "error", reply
        assert set(reply) == {"type", "req_id", "data"} and set(reply["data"]) == {"message"}
        return reply["data"]["message"]

    def pair(self, password=None):
        data = self.data("pair") if password is None else self.data("pair", {"password": password})
        assert data["accepted"] is True, data
        return data

    def subscribe(self, *names):
        return self.data("dataref_subscribe_values", {"datarefs": [{"name": name} for name in names]})

    def subscribe_error(self, *names):
        return self.error("dataref_subscribe_values", {"datarefs": [{"name": name} for name in names]})

    def set(self, *entries):
        return self.data("dataref_set_values", {"datarefs": list(entries)})

    def ends_without_reply(self):
        """Whether the connection ends and nothing at all came before."""
        try:
            self.receive()
        except Closed:
            return True
        return False

    def close(self):
        try:
            _loop.run(self._socket.close())
        except (TimeoutError, asyncio.TimeoutError, OSError):
            pass


def is_push(message):
    return message.get("type") == "dataref_subscribe_values" and "req_id" not in message


def arrivals(client, count):
    """The times at which the next `count` pushes arrived."""
    times = []
    for _ in range(count):
        client.push()
        times.append(time.monotonic())
    return times

"""Strangers on the network, and clients that behave badly: crowds of them, from addresses of one's choice.

    with Crowd(port, host="127.0.0.1", sources=["127.0.0.1"]) as crowd:
        crowd.idle(100)
        ...
        crowd.counts["idle closed"]

Each kind of attacker comes back when it has been closed, until the crowd ends. What happened is counted under the
attacker's kind: "idle opened", "idle closed", "guess refused"...
"""

import asyncio
import itertools
import json
import random
import socket
import threading
import time
from collections import Counter

import websocket_frames as frames

HANDSHAKE = ("GET / HTTP/1.1\r\nHost: {host}\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
             "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n")
# Of a browser that takes no gzip.
GET = "GET {path} HTTP/1.1\r\nHost: localhost\r\n\r\n"
# Seconds until one that was closed, or not let in, comes back.
BACK = 0.5


class Refused(Exception):
    """The handshake was not answered as one is."""


class Crowd:
    """Attackers on a thread of their own; a context manager. `sources` are the addresses they come from in turn."""

    def __init__(self, port, host="127.0.0.1", sources=("127.0.0.1",)):
        self._host, self._port = host, port
        self._sources = itertools.cycle(sources)
        self._loop = asyncio.new_event_loop()
        self._tasks = set()
        self._thread = threading.Thread(target=self._loop.run_forever, daemon=True)
        self._thread.start()
        self.counts = Counter()
        # Seconds that each answer to a guess took.
        self.guess_times = []

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()

    def close(self):
        """All connections end."""
        async def end():
            left = self._tasks
            while left:
                for task in left:
                    task.cancel()
                # A cancellation that comes together with what a task waits for is lost.
                _, left = await asyncio.wait(left, timeout=1)

        if self._thread.is_alive():
            asyncio.run_coroutine_threadsafe(end(), self._loop).result(60)
            self._loop.call_soon_threadsafe(self._loop.stop)
            self._thread.join(60)
            self._loop.close()

    # The kinds

    def idle(self, count):
        """Connect and say nothing."""
        self._add(count, "idle", self._idle)

    def slow_handshakes(self, count, seconds=1.0):
        """A byte of the handshake each so many seconds."""
        self._add(count, "slow handshake", self._slow_handshake, seconds)

    def slow_browsers(self, count, seconds=0.2):
        """A byte of the request for the page each so many seconds."""
        self._add(count, "slow browser", self._ask_slowly, seconds)

    def hoarders(self, count, path):
        """Ask for that file of the page, and read nothing."""
        self._add(count, "hoarder", self._hoard, path)

    def unpaired(self, count):
        """Shake hands, and never pair."""
        self._add(count, "unpaired", self._unpaired)

    def large_messages(self, count, size=900_000, seconds=1.0):
        """Shake hands, and send messages of that size without having paired."""
        self._add(count, "large", self._large, size, seconds)

    def passers_by(self, count, seconds=0.05):
        """Connect and go at once, that often."""
        self._add(count, "passer-by", self._pass_by, seconds)

    def guessers(self, count, seconds=0.0):
        """Guess the password, each as soon as the last guess was answered and so many seconds are over."""
        self._add(count, "guess", self._guess, seconds)

    def slow_readers(self, count, password=None, names=("sim/flightmodel/position/latitude",)):
        """Pair, subscribe to values, and read nothing."""
        self._add(count, "slow reader", self._read_slowly, password, names)

    def heavy(self, count, password=None, size=8_000_000, seconds=2.0):
        """Pair, and send messages of that size, which are no use: a script of one trigger with a long text."""
        self._add(count, "heavy", self._send_heavily, password, size, seconds)

    # What they are made of

    def _add(self, count, kind, attack, *arguments):
        for _ in range(count):
            source = next(self._sources)
            asyncio.run_coroutine_threadsafe(self._start(kind, attack, source, arguments), self._loop).result(60)

    async def _start(self, kind, attack, source, arguments):
        task = self._loop.create_task(self._come_back(kind, attack, source, arguments))
        self._tasks.add(task)

    async def _come_back(self, kind, attack, source, arguments):
        while True:
            writer = None
            try:
                reader, writer = await asyncio.wait_for(
                    asyncio.open_connection(self._host, self._port, local_addr=(source, 0)), 30)
                self.counts[f"{kind} opened"] += 1
                await attack(reader, writer, *arguments)
                self.counts[f"{kind} closed"] += 1
            except (OSError, asyncio.IncompleteReadError, asyncio.TimeoutError, TimeoutError, Refused):
                self.counts[f"{kind} {'closed' if writer else 'not let in'}"] += 1
            finally:
                if writer:
                    writer.transport.abort()
            await asyncio.sleep(BACK * random.uniform(0.5, 1.5))

    async def _shake_hands(self, reader, writer):
        writer.write(HANDSHAKE.format(host=f"{self._host}:{self._port}").encode())
        head = await reader.readuntil(b"\r\n\r\n")
        if b" 101 " not in head.split(b"\r\n")[0]:
            raise Refused(head)

    async def _ask(self, reader, writer, type_, params):
        """The data of the answer; pushes are passed over. None when it is an error."""
        writer.write(frames.encode(frames.TEXT, json.dumps({"type": type_, "req_id": 1, "params": params}).encode()))
        while True:
            message = json.loads(await self._message(reader))
            if message.get("req_id") == 1:
                return message["data"] if message["type"] == type_ else None

    async def _message(self, reader):
        pieces = []
        while True:
            head = await reader.readexactly(2)
            length = head[1] & 0x7F
            if length >= 126:
                length = int.from_bytes(await reader.readexactly(2 if length == 126 else 8), "big")
            payload = await reader.readexactly(length)
            opcode = head[0] & 0x0F
            if opcode == frames.CLOSE:
                raise ConnectionResetError
            if opcode in (frames.TEXT, frames.CONTINUATION):
                pieces.append(payload)
                if head[0] & 0x80:
                    return b"".join(pieces)

    async def _pair(self, reader, writer, password):
        await self._shake_hands(reader, writer)
        answer = await self._ask(reader, writer, "pair", {} if password is None else {"password": password})
        if not answer or not answer["accepted"]:
            raise Refused(answer)

    @staticmethod
    async def _until_closed(reader):
        while await reader.read(65536):
            pass

    # What each does on its connection

    async def _idle(self, reader, writer):
        await self._until_closed(reader)

    async def _slow_handshake(self, reader, writer, seconds):
        for byte in HANDSHAKE.format(host=self._host).encode() * 1000:
            writer.write(bytes([byte]))
            await asyncio.sleep(seconds)
            if reader.at_eof():
                return

    async def _ask_slowly(self, reader, writer, seconds):
        for byte in GET.format(path="/").encode():
            writer.write(bytes([byte]))
            await asyncio.sleep(seconds)
            if reader.at_eof():
                return
        await self._until_closed(reader)

    async def _hoard(self, reader, writer, path):
        writer.transport.pause_reading()
        writer.transport.get_extra_info("socket").setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        writer.write(GET.format(path=path).encode())
        while not writer.transport.is_closing():
            # Who has been sent away is told when it sends.
            await asyncio.sleep(1)
            writer.write(b"\r\n")

    async def _unpaired(self, reader, writer):
        await self._shake_hands(reader, writer)
        await self._until_closed(reader)

    async def _large(self, reader, writer, size, seconds):
        await self._shake_hands(reader, writer)
        message = frames.encode(frames.TEXT, b'{"type":"pair","params":{"password":"' + b"x" * size + b'"}}')
        while not reader.at_eof():
            writer.write(message)
            await writer.drain()
            self.counts["large sent"] += 1
            await asyncio.sleep(seconds)

    async def _pass_by(self, reader, writer, seconds):
        writer.transport.abort()
        await asyncio.sleep(max(0.0, seconds - BACK))

    async def _guess(self, reader, writer, seconds):
        await self._shake_hands(reader, writer)
        while True:
            begun = time.monotonic()
            answer = await self._ask(reader, writer, "pair", {"password": f"guess {random.random()}"})
            self.guess_times.append(time.monotonic() - begun)
            self.counts["guess accepted" if answer and answer["accepted"] else "guess refused"] += 1
            await asyncio.sleep(seconds)

    async def _read_slowly(self, reader, writer, password, names):
        await self._pair(reader, writer, password)
        await self._ask(reader, writer, "dataref_subscribe_values", {"datarefs": [{"name": name} for name in names]})
        writer.transport.pause_reading()
        catch_up = frames.encode(frames.TEXT, b'{"type":"catch_up"}')
        while not writer.transport.is_closing():
            # Its answers gather until the companion reads no more of it.
            writer.write(catch_up)
            await asyncio.wait_for(writer.drain(), 60)
            await asyncio.sleep(1)

    async def _send_heavily(self, reader, writer, password, size, seconds):
        await self._pair(reader, writer, password)
        while True:
            # An unknown kind: it is read and decoded as a whole, and changes nothing.
            answer = await self._ask(reader, writer, "no_such_kind", {"text": "x" * size})
            self.counts["heavy answered"] += answer is None
            await asyncio.sleep(seconds)

"""A network between a browser and a companion that can be cut, and mended."""

import asyncio
import contextlib


class CutNetwork:
    """Listens on `port` and hands all bytes on; to be used in one event loop."""

    def __init__(self, companion_port):
        self._companion_port = companion_port
        self._writers = set()
        self._is_cut = False

    async def start(self):
        self._server = await asyncio.start_server(self._carry, "127.0.0.1", 0)
        self.port = self._server.sockets[0].getsockname()[1]

    def cut(self):
        self._is_cut = True
        for writer in self._writers:
            writer.transport.abort()

    def mend(self):
        self._is_cut = False

    async def close(self):
        self.cut()
        self._server.close()
        await self._server.wait_closed()

    async def _carry(self, reader, writer):
        with contextlib.ExitStack() as stack:
            self._hold(stack, writer)
            if self._is_cut:
                return
            far_reader, far_writer = await asyncio.open_connection("127.0.0.1", self._companion_port)
            self._hold(stack, far_writer)
            await asyncio.gather(self._copy(reader, far_writer), self._copy(far_reader, writer))

    def _hold(self, stack, writer):
        self._writers.add(writer)
        stack.callback(writer.transport.abort)
        stack.callback(self._writers.discard, writer)

    @staticmethod
    async def _copy(reader, writer):
        with contextlib.suppress(ConnectionError):
            while data := await reader.read(65536):
                writer.write(data)
                await writer.drain()
        writer.transport.abort()

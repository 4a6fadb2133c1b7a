"""A network between two programs that can be cut, and mended."""

import asyncio
import contextlib


class CutNetwork:
    """Listens on `port` and hands all bytes on to who listens at `far_port`; to be used in one event loop."""

    def __init__(self, far_port, host="127.0.0.1", port=0):
        self._far_port, self._host, self.port = far_port, host, port
        self._writers = set()
        self._is_cut = False

    async def start(self):
        self._server = await asyncio.start_server(self._carry, self._host, self.port)
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
            far_reader, far_writer = await asyncio.open_connection("127.0.0.1", self._far_port)
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

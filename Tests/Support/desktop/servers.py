import contextlib
import ctypes
import os
import signal
import subprocess

PATIENCE = 30.0


class Servers:
    """Programs that a desktop consists of; they end in the reverse order of their start."""

    def __init__(self, folder):
        self._folder = folder
        self._running = []

    def start(self, *command, environment=None, **options):
        with open(self._folder / "servers.log", "ab") as log:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                       env=environment, preexec_fn=_end_with_parent, **options)
        self._running.append(process)
        return process

    def end(self, process):
        self._running.remove(process)
        process.terminate()
        try:
            process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def end_all(self):
        while self._running:
            self.end(self._running[-1])

    def ended(self):
        """The names of those that have ended by themselves, which none should."""
        return [process.args[0] for process in self._running if process.poll() is not None]

    def log(self):
        with contextlib.suppress(FileNotFoundError):
            return (self._folder / "servers.log").read_text(errors="replace")


def _end_with_parent():
    """Nothing stays behind when the tests are killed. Runs between fork and exec."""
    pr_set_pdeathsig = 1
    ctypes.CDLL(None).prctl(pr_set_pdeathsig, signal.SIGTERM)
    # A terminal's interrupt is for the tests, which then end their programs in order.
    os.setsid()

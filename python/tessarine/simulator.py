"""A simulated receiver (``tessarine-sim``) on a private socket directory, with its console."""

from __future__ import annotations

import itertools
import json
import os
import pty
import queue
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import tty
from pathlib import Path
from typing import List, Mapping, Optional, Union

__all__ = ["Simulator", "SimulatorError", "find_simulator"]

Scenario = Union[str, os.PathLike, Mapping, None]


class SimulatorError(RuntimeError):
    """The simulator did not start, did not stop cleanly, or refused a console command."""


def find_simulator(explicit: Optional[str] = None) -> str:
    """The tessarine-sim to run: ``explicit``, else ``$TESSARINE_SIM``, else the one
    built or installed with this package, else the first on PATH."""
    if explicit:
        return explicit
    if os.environ.get("TESSARINE_SIM"):
        return os.environ["TESSARINE_SIM"]
    try:
        from ._locations import SIMULATOR

        beside = os.path.join(os.path.dirname(__file__), SIMULATOR)
        if os.access(beside, os.X_OK):
            return os.path.normpath(beside)
    except ImportError:
        pass
    found = shutil.which("tessarine-sim")
    if not found:
        raise SimulatorError("tessarine-sim not found: set TESSARINE_SIM or put it on PATH")
    return found


def _is_file_source(source: str) -> bool:
    return source != "-" and not source.startswith("udp://")


class Simulator:
    """One ``tessarine-sim`` process.

    ``scenario`` is a JSON file or a dict (None: the built-in scenario); ``ts``
    a transport stream (file or ``udp://``). Relative paths, also a relative
    ``"ts"`` inside a dict, are taken from ``base_dir``. The sockets go to a
    new private directory (``socket_dir``), removed again by ``stop()``.
    The console is reached through a pseudo-terminal, its log (standard
    error) through a file.
    """

    START_TIMEOUT = 10.0
    STOP_TIMEOUT = 10.0

    def __init__(
        self,
        scenario: Scenario = None,
        ts: Optional[str] = None,
        ts_pace: Optional[str] = None,
        *,
        executable: Optional[str] = None,
        base_dir: Union[str, os.PathLike] = ".",
    ):
        self.executable = find_simulator(executable)
        self.base_dir = Path(base_dir)
        self.scenario = scenario
        self.ts = ts
        self.ts_pace = ts_pace
        self.socket_dir: Optional[str] = None
        self.process: Optional[subprocess.Popen] = None
        self.killed = False
        self._console: Optional[int] = None
        self._lines: "queue.Queue[Optional[str]]" = queue.Queue()
        self._reader: Optional[threading.Thread] = None
        self._lock = threading.Lock()
        self._fences = itertools.count()
        self._log_text: Optional[str] = None

    # ---- Life cycle ----

    def start(self) -> "Simulator":
        """Starts the process and returns once it serves both sockets."""
        self.socket_dir = tempfile.mkdtemp(prefix="tessarine-sim-")
        argv = [self.executable, "--socket-dir", self.socket_dir]
        scenario = self._scenario_file()
        if scenario:
            argv += ["--scenario", scenario]
        if self.ts:
            argv += ["--ts", self._resolve(self.ts) if _is_file_source(self.ts) else self.ts]
        if self.ts_pace:
            argv += ["--ts-pace", self.ts_pace]
        # The console reads a terminal only; a raw one leaves the lines to it.
        console, terminal = pty.openpty()
        tty.setraw(terminal)
        with open(self.log_path, "wb") as log:
            self.process = subprocess.Popen(
                argv, stdin=terminal, stdout=subprocess.PIPE, stderr=log, start_new_session=True
            )
        os.close(terminal)
        self._console = console
        self._reader = threading.Thread(target=self._read_console, name="tessarine-sim console", daemon=True)
        self._reader.start()
        try:
            self.wait_for_log(r"^tessarine-sim: serving ", timeout=self.START_TIMEOUT)
            self._next_line(self.START_TIMEOUT)  # "console ready"
        except SimulatorError:
            self.stop()
            raise
        return self

    def stop(self) -> int:
        """Stops the process (SIGTERM, as Ctrl-C would), removes the socket
        directory and returns the exit status (negative: killed by a signal)."""
        if self.process is None:
            return 0
        if self.process.poll() is None:
            self.resume()
            self.process.terminate()
            try:
                self.process.wait(self.STOP_TIMEOUT)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        if self._console is not None:
            os.close(self._console)
            self._console = None
        if self._reader:
            self._reader.join(self.STOP_TIMEOUT)
            self.process.stdout.close()
            self._reader = None
        if self._log_text is None:
            self._log_text = self.log()
        if self.socket_dir:
            shutil.rmtree(self.socket_dir, ignore_errors=True)
        return self.process.returncode

    def __enter__(self) -> "Simulator":
        return self.start()

    def __exit__(self, *exc) -> None:
        self.stop()

    def pause(self) -> None:
        """Freezes the process (SIGSTOP), as a middleware that hangs: calls then time out.

        Returns once every thread of it has stopped."""
        self._signal(signal.SIGSTOP)
        os.waitpid(self.process.pid, os.WUNTRACED)

    def resume(self) -> None:
        self._signal(signal.SIGCONT)

    def kill(self) -> None:
        """Ends the process at once (SIGKILL), as a middleware that crashes."""
        self.killed = True
        self._signal(signal.SIGKILL)
        self.process.wait()

    # ---- Console and log ----

    def command(self, line: str, timeout: float = 10.0) -> str:
        """Runs one console command and returns what it printed.

        Raises SimulatorError when the console answers ``error: ...``."""
        if "\n" in line:
            raise ValueError("one command, without a newline")
        with self._lock:
            while not self._lines.empty():  # lines no command printed (bridge diagnostics)
                if self._lines.get_nowait() is None:
                    raise SimulatorError(f"{line!r}: the simulator has stopped")
            # An unknown command after it answers with an error line naming
            # it: everything before that line is the command's output.
            fence = f"fence-{next(self._fences)}"
            os.write(self._console, f"{line}\n{fence}\n".encode())
            deadline = time.monotonic() + timeout
            output: List[str] = []
            while True:
                got = self._next_line(deadline - time.monotonic(), line)
                if fence in got:
                    break
                output.append(got)
        if any(text.startswith("error: ") for text in output):
            raise SimulatorError(f"{line!r}: " + "\n".join(output))
        return "\n".join(output)

    def app_state(self, state: int, timeout: float = 10.0) -> int:
        """Sends application-state request ``state`` and returns the client's answer."""
        answer = self.command(f"appstate {state}", timeout)
        found = re.search(r"client answered (-?\d+)", answer)
        if not found:
            raise SimulatorError(f"unexpected answer to appstate: {answer!r}")
        return int(found.group(1))

    @property
    def log_path(self) -> str:
        return os.path.join(self.socket_dir, "tessarine-sim.log")

    def log(self) -> str:
        """The simulator's log (its standard error) so far."""
        if self._log_text is not None:
            return self._log_text
        try:
            with open(self.log_path, encoding="utf-8", errors="replace") as log:
                return log.read()
        except OSError:
            return ""

    def wait_for_log(self, pattern: str, timeout: float = 5.0) -> "re.Match[str]":
        """Waits for a log line that matches the regular expression ``pattern``."""
        expression = re.compile(pattern, re.MULTILINE)
        deadline = time.monotonic() + timeout
        while True:
            found = expression.search(self.log())
            if found:
                return found
            if self.process.poll() is not None:
                raise SimulatorError(f"tessarine-sim exited with {self.process.returncode}:\n{self.log()}")
            if time.monotonic() >= deadline:
                raise SimulatorError(f"no log line matching {pattern!r} within {timeout} s:\n{self.log()}")
            time.sleep(0.02)

    # ---- Inner workings ----

    def _scenario_file(self) -> Optional[str]:
        if self.scenario is None:
            return None
        if not isinstance(self.scenario, Mapping):
            return self._resolve(self.scenario)
        scenario = dict(self.scenario)
        if isinstance(scenario.get("ts"), str) and _is_file_source(scenario["ts"]):
            scenario["ts"] = self._resolve(scenario["ts"])
        path = os.path.join(self.socket_dir, "scenario.json")
        with open(path, "w", encoding="utf-8") as out:
            json.dump(scenario, out)
        return path

    def _resolve(self, path) -> str:
        return str(self.base_dir / path)

    def _signal(self, number: int) -> None:
        if self.process is not None and self.process.poll() is None:
            self.process.send_signal(number)

    def _read_console(self) -> None:
        for raw in self.process.stdout:
            self._lines.put(raw.decode("utf-8", "replace").rstrip("\n"))
        self._lines.put(None)

    def _next_line(self, timeout: float, command: str = "start") -> str:
        try:
            got = self._lines.get(timeout=max(timeout, 0))
        except queue.Empty:
            raise SimulatorError(f"{command!r}: no answer from the console within the time limit") from None
        if got is None:
            raise SimulatorError(f"{command!r}: the simulator has stopped")
        return got

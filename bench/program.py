"""The real program, started without a display in places of its own, and spoken to through its scripted channel."""

import json
import os
import subprocess
import time

ANSWER_SECONDS = 60  # for what is answered at once, on a busy machine
SETTLE_SECONDS = 240


class Program:
    def __init__(self, executable, library, places, arguments=(), first=()):
        """Starts it. The commands in `first` stand in its channel before it does, so they run as soon as it listens."""
        for name in ("config", "data", "cache", "home"):
            os.makedirs(os.path.join(places, name), exist_ok=True)
        runtime = os.path.join(places, "run")
        os.makedirs(runtime, mode=0o700, exist_ok=True)
        self.commands = os.path.join(places, "commands")
        for path in (self.commands, self.commands + ".out"):
            if os.path.exists(path):
                os.remove(path)
        environment = {name: value for name, value in os.environ.items() if not name.startswith("CORVELLE_")}
        environment.update(
            CORVELLE_LIBRARY=library, CORVELLE_DRIVER=self.commands, QT_QPA_PLATFORM="offscreen",
            HOME=os.path.join(places, "home"), XDG_RUNTIME_DIR=runtime, XDG_CONFIG_HOME=os.path.join(places, "config"),
            XDG_DATA_HOME=os.path.join(places, "data"), XDG_CACHE_HOME=os.path.join(places, "cache"),
            DBUS_SESSION_BUS_ADDRESS="unix:path=" + os.path.join(places, "no-bus"))
        self.number = 0
        self.answers = None
        self.partial = b""
        numbers = [self._write(verb, arguments_) for verb, arguments_ in first]
        self.started_at = time.time()
        self.process = subprocess.Popen(
            [executable, *arguments], env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for number in numbers:
            self._answer(number, ANSWER_SECONDS)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self._write("quit", {})
            try:
                self.process.wait(60)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()

    def tell(self, verb, **arguments):
        """The result of a command."""
        return self._answer(self._write(verb, arguments), arguments.get("timeout", 0) + ANSWER_SECONDS)

    def settle(self):
        if not self.tell("settle", timeout=SETTLE_SECONDS)["idle"]:
            raise RuntimeError("the program doesn't come to rest")

    def resident_bytes(self):
        with open(f"/proc/{self.process.pid}/status") as status:
            for line in status:
                if line.startswith("VmRSS:"):
                    return int(line.split()[1]) * 1024
        raise RuntimeError("the system doesn't tell the memory")

    def _write(self, verb, arguments):
        self.number += 1
        with open(self.commands, "ab") as commands:
            commands.write((json.dumps({**arguments, "n": self.number, "do": verb}) + "\n").encode())
        return self.number

    def _answer(self, number, timeout):
        end = time.time() + timeout
        while time.time() < end:
            if self.answers is None and os.path.exists(self.commands + ".out"):
                self.answers = open(self.commands + ".out", "rb")
            if self.answers is not None:
                self.partial += self.answers.read()
            while b"\n" in self.partial:
                line, self.partial = self.partial.split(b"\n", 1)
                answer = json.loads(line)
                if answer.get("n") == number:
                    if not answer["ok"]:
                        raise RuntimeError(answer["error"])
                    return answer["result"]
            if self.process.poll() is not None:
                raise RuntimeError("the program ended")
            time.sleep(0.005)
        raise RuntimeError("no answer")

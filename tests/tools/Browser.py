"""A headless Chromium, spoken to through two pipes, without a port that others could reach.

Messages are JSON, each ended by a zero byte.
"""

import json
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import time


def find():
    """The program, or None."""
    return os.environ.get("CHROMIUM") or shutil.which("chromium") or shutil.which("chromium-browser")


class CannotRun(Exception):
    pass


class Browser:
    def __init__(self):
        self.home = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        to_browser, self._writer = os.pipe()
        self._reader, from_browser = os.pipe()

        def take_pipes():
            # The numbers that the browser expects; both are moved away from them first.
            here, there = os.dup(to_browser), os.dup(from_browser)
            os.dup2(here, 3)
            os.dup2(there, 4)

        self._log = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            [find(), "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
             "--remote-debugging-pipe", "--window-size=1200,1300", f"--user-data-dir={self.home.name}", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=self._log, close_fds=False, preexec_fn=take_pipes,
            env={**os.environ, "HOME": self.home.name},
        )
        os.close(to_browser)
        os.close(from_browser)
        self._pending = b""
        self._last_id = 0
        self.events = []
        try:
            target = self.call("Target.createTarget", url="about:blank")["targetId"]
            self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
            for domain in ("Page", "Runtime", "Log", "Network"):
                self.page(domain + ".enable")
        except (OSError, TimeoutError) as error:
            self._log.seek(0)
            said = self._log.read().decode(errors="replace")[-500:]
            self.close()
            raise CannotRun(f"{error}: {said}") from error

    def close(self):
        self.process.kill()
        self.process.wait()
        for descriptor in (self._writer, self._reader):
            os.close(descriptor)
        self._log.close()
        self.home.cleanup()

    def _receive(self, deadline):
        while b"\0" not in self._pending:
            ready, _, _ = select.select([self._reader], [], [], max(0, deadline - time.monotonic()))
            if not ready:
                raise TimeoutError("The browser does not answer")
            read = os.read(self._reader, 1 << 20)
            if not read:
                raise OSError("The browser ended")
            self._pending += read
        message, self._pending = self._pending.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, session=None, **parameters):
        self._last_id += 1
        message = {"id": self._last_id, "method": method, "params": parameters}
        if session:
            message["sessionId"] = session
        os.write(self._writer, json.dumps(message).encode() + b"\0")
        deadline = time.monotonic() + 60
        while True:
            answer = self._receive(deadline)
            if answer.get("id") != self._last_id:
                self.events.append(answer)
            elif "error" in answer:
                raise AssertionError(f"{method}: {answer['error']}")
            else:
                return answer["result"]

    def page(self, method, **parameters):
        return self.call(method, self._session, **parameters)

    def evaluate(self, expression):
        """The value of an expression of JavaScript, which may be a promise."""
        answer = self.page("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in answer:
            raise AssertionError(answer["exceptionDetails"])
        return answer["result"].get("value")

    def open(self, path):
        """Opens a file and waits until its script has run. Gives the seconds that it took."""
        self.events.clear()
        start = time.monotonic()
        self.page("Page.navigate", url=pathlib.Path(path).resolve().as_uri())
        while self.evaluate("document.readyState + document.documentElement?.dataset.ready") != "completeyes":
            if time.monotonic() > start + 60:
                raise AssertionError(f"The page is not ready: {self.complaints()}")
            time.sleep(0.05)
        return time.monotonic() - start

    def settle(self):
        """Waits until what was changed is drawn."""
        self.evaluate("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => done(1))))")

    def complaints(self):
        """What the console got, and every exception and refused load."""
        names = ("Runtime.exceptionThrown", "Log.entryAdded", "Runtime.consoleAPICalled", "Page.javascriptDialogOpening")
        return [event for event in self.events if event.get("method") in names]

    def requests(self):
        """Addresses that the page asked for, but for its own."""
        return [
            event["params"]["request"]["url"]
            for event in self.events
            if event.get("method") == "Network.requestWillBeSent" and event["params"].get("type") != "Document"
        ]

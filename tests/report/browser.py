"""Chromium without a window, driven through a pipe by its DevTools protocol."""

import json
import os
import shutil
import signal
import subprocess
import tempfile


class Browser:
    """One browser with one page. What happens in the page is kept in `events`."""

    def __init__(self, program="chromium"):
        self._profile = tempfile.mkdtemp()
        to_browser, self._out = os.pipe()
        self._in, from_browser = os.pipe()

        def pipes():
            # The protocol has the descriptors 3 and 4; neither may be closed by the other's move.
            a, b = os.dup(to_browser), os.dup(from_browser)
            high = [os.dup2(a, 100), os.dup2(b, 101)]
            os.dup2(high[0], 3)
            os.dup2(high[1], 4)
            os.setsid()

        self._process = subprocess.Popen(
            [program, "--headless=new", "--remote-debugging-pipe", "--no-sandbox",
             "--disable-gpu", "--hide-scrollbars", "--no-first-run", "--disable-extensions",
             "--disable-background-networking", "--disable-component-update",
             f"--user-data-dir={self._profile}", "about:blank"],
            preexec_fn=pipes, close_fds=False, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self._buffer = b""
        self._number = 0
        self._session = None
        self.events = []
        target = self.send("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.send("Target.attachToTarget", targetId=target,
                                  flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log", "Accessibility"):
            self.send(domain + ".enable")

    def close(self):
        try:
            self._session = None
            self.send("Browser.close")
        except (OSError, EOFError):
            pass
        for descriptor in (self._out, self._in):
            os.close(descriptor)
        try:
            self._process.wait(timeout=20)
        except subprocess.TimeoutExpired:
            os.killpg(self._process.pid, signal.SIGKILL)
            self._process.wait()
        shutil.rmtree(self._profile, ignore_errors=True)

    def _read(self):
        while b"\0" not in self._buffer:
            piece = os.read(self._in, 1 << 20)
            if not piece:
                raise EOFError("the browser has ended")
            self._buffer += piece
        message, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(message)

    def send(self, method, **params):
        self._number += 1
        message = {"id": self._number, "method": method, "params": params}
        if self._session:
            message["sessionId"] = self._session
        data = json.dumps(message).encode() + b"\0"
        while data:
            data = data[os.write(self._out, data):]
        while True:
            answer = self._read()
            if answer.get("id") == self._number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            self._take(answer)

    def _take(self, event):
        if "method" not in event:
            return
        self.events.append((event["method"], event["params"]))
        if event["method"] == "Page.javascriptDialogOpening":
            # Nothing goes on until the dialog is closed; the answer comes among the events.
            self._number += 1
            data = json.dumps({"id": self._number, "sessionId": self._session,
                               "method": "Page.handleJavaScriptDialog",
                               "params": {"accept": True}}).encode() + b"\0"
            os.write(self._out, data)

    def open(self, url):
        self.events = []
        self.send("Page.navigate", url=url)
        while not any(name == "Page.loadEventFired" for name, _ in self.events):
            self._take(self._read())

    def evaluate(self, expression):
        """The value of an expression. A policy against scripts is no matter: this is no script."""
        answer = self.send("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(str(answer["exceptionDetails"]))
        return answer["result"].get("value")

    def look(self, width, height, scheme="light", media=""):
        self.send("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.send("Emulation.setEmulatedMedia", media=media,
                  features=[{"name": "prefers-color-scheme", "value": scheme}])

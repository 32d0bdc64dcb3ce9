"""A headless Chromium, driven over the WebDriver protocol with nothing but Python's own library."""
import base64
import http.client
import json
import re
import shutil
import subprocess
import tempfile
import time

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


def missing():
    """What keeps the browser from running; empty if nothing does."""
    return [name for name in ("chromium", "chromedriver") if shutil.which(name) is None]


class Browser:
    """One browser with an empty profile and no way to any network."""

    def __init__(self, width=1280, height=900):
        self.profile = tempfile.mkdtemp(prefix="krlabpage")
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                       text=True)
        self.port = self._port()
        arguments = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                     "--disable-background-networking", "--disable-component-update", "--disable-sync",
                     "--disable-dev-shm-usage", "--host-resolver-rules=MAP * ~NOTFOUND",
                     f"--window-size={width},{height}", f"--user-data-dir={self.profile}"]
        self.session = None
        try:
            answer = self._call("POST", "/session", {"capabilities": {"alwaysMatch": {
                "browserName": "chrome", "goog:chromeOptions": {"args": arguments, "binary": shutil.which("chromium")},
                "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}}})
        except Exception:
            self.close()
            raise
        self.session = answer["sessionId"]

    def close(self):
        try:
            if self.session is not None:
                self._call("DELETE", f"/session/{self.session}")
        finally:
            self.driver.terminate()
            self.driver.wait()
            self.driver.stdout.close()
            shutil.rmtree(self.profile, ignore_errors=True)

    def open(self, url):
        self._post("/url", {"url": url})

    def run(self, script, *arguments):
        """Runs a script in the page and returns what it returns."""
        return self._post("/execute/sync", {"script": script, "args": list(arguments)})

    def wait(self, script, *arguments, seconds=10):
        """Waits until the script returns something true, and returns that."""
        end = time.monotonic() + seconds
        while True:
            value = self.run(script, *arguments)
            if value:
                return value
            if time.monotonic() > end:
                raise AssertionError(f"never came true: {script}")
            time.sleep(0.02)

    def find(self, selector):
        return self._post("/element", {"using": "css selector", "value": selector})[ELEMENT]

    def click(self, selector):
        self._post(f"/element/{self.find(selector)}/click", {})

    def type(self, selector, text):
        self._post(f"/element/{self.find(selector)}/value", {"text": text})

    def keys(self, *keys):
        """Presses and releases keys, wherever the focus is."""
        actions = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        self._post("/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": actions}]})

    def screenshot(self, file):
        with open(file, "wb") as out:
            out.write(base64.b64decode(self._get("/screenshot")))

    def paper(self, file):
        """Prints the page as PDF."""
        with open(file, "wb") as out:
            out.write(base64.b64decode(self._post("/print", {"background": True})))

    def log(self, kind):
        return self._post("/se/log", {"type": kind})

    def requests(self):
        """The addresses of all requests since the last call."""
        events = [json.loads(entry["message"])["message"] for entry in self.log("performance")]
        return [event["params"]["request"]["url"] for event in events if event["method"] == "Network.requestWillBeSent"]

    def _port(self):
        for line in self.driver.stdout:
            found = re.search(r"started successfully on port (\d+)", line)
            if found:
                return int(found.group(1))
        raise RuntimeError("chromedriver did not start")

    def _get(self, path):
        return self._call("GET", f"/session/{self.session}{path}")

    def _post(self, path, body):
        return self._call("POST", f"/session/{self.session}{path}", body)

    def _call(self, method, path, body=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        try:
            connection.request(method, path, None if body is None else json.dumps(body),
                               {"Content-Type": "application/json"})
            answer = json.loads(connection.getresponse().read())["value"]
        finally:
            connection.close()
        if isinstance(answer, dict) and "error" in answer:
            raise RuntimeError(f"{answer['error']}: {answer.get('message', '')}")
        return answer

#!/usr/bin/python3
"""page_test.py PAGE PROGRAM PLAYER [--pictures DIR]: explain.html in a browser. It tells of the log of
each call of the stories what the program tells, knows each of their lines, reaches no address, and
can be used by keyboard. With --pictures it also leaves pictures of itself."""
import base64
import http.server
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import threading

from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

sys.path.insert(0, str(pathlib.Path(__file__).parent / "pc"))
import play  # pylint: disable=wrong-import-position

# What the page shows of a log: verdict, sentence, where the path ends, lines without a meaning.
SHOW = """
    const shown = (log) => {
      showAll(Uint8Array.from(atob(log), (c) => c.charCodeAt(0)));
      const report = document.querySelector("article");
      if (!report) return [find("trouble").textContent, null, null, 0];
      return [report.querySelector(".verdict").dataset.verdict,
              report.querySelector(".sentence").textContent,
              report.querySelector(".steps .end")?.textContent ?? null,
              [...report.querySelectorAll(".again")].filter((p) => p.textContent !== "As above.").length];
    };
    return arguments[0].map(shown);
"""
faults = []


def expect(what, seen, wanted):
    if seen != wanted:
        faults.append(f"{what}: {seen!r} instead of {wanted!r}")


def story_logs(player):
    stories = play.read_stories()
    for story, answers in zip(stories, play.play(stories, [player])):
        for step, answer in zip(story.steps, answers):
            log = play.Reply(answer, answers[0]).log if step.startswith("call") else ""
            if log:  # Else the buffer stayed as it was.
                yield f"{story.title}: {step}", log.encode("latin1")


def explained(program, log):
    with tempfile.NamedTemporaryFile() as file:
        file.write(log)
        file.flush()
        done = subprocess.run([program, "explain", "--json", file.name], check=False,
                              stdout=subprocess.PIPE)
    return json.loads(done.stdout)


def browser(page, profile):
    options = webdriver.ChromeOptions()
    for option in ("headless=new", "no-sandbox", "disable-gpu", "disable-dev-shm-usage", "hide-scrollbars",
                   "window-size=1280,1000", f"user-data-dir={profile}"):
        options.add_argument("--" + option)
    options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
    driver = webdriver.Chrome(options=options)
    driver.get(page.as_uri())
    driver.set_script_timeout(60)
    driver.execute_async_script("const done = arguments[0]; const wait = () => 'ready' in "
                                "document.documentElement.dataset ? done() : setTimeout(wait, 10);"
                                "wait();")
    return driver


def check_logs(driver, program, player):
    titles, logs = zip(*story_logs(player))
    shown = driver.execute_script(SHOW, [base64.b64encode(log).decode() for log in logs])
    ends, cut = {}, set()
    for title, log, (verdict, sentence, end, unknown) in zip(titles, logs, shown):
        wanted = explained(program, log)
        expect(title, [verdict, sentence], [str(wanted["verdict"] or "null"), wanted["sentence"]])
        ends.setdefault(end and end.split()[0], set()).add(verdict)
        if unknown:
            cut.add(title.split(" (")[0])
    expect("how many logs there are", len(logs) > 100, True)
    expect("stories with lines of no meaning", cut,
           {"A zero byte ends a value, and the text of all values"})
    expect("verdicts by where the path ends", ends, {
        "stored": {"same", "forgiven", "not-compared", "made-anew"},
        "new": {"changes-now", "made-anew", "new-machine"},
        None: {"failed", "stored", "from-hardware"}})


def check_cases(driver, program):
    """Case files and what only looks like one."""
    report = subprocess.run([program, "report", "--redact"], check=True, stdout=subprocess.PIPE).stdout
    sentence = driver.execute_script("showAll(utf8.encode(arguments[0]));"
                                     "return document.querySelector('#reports .sentence').textContent",
                                     report.decode())
    expect("the case of this machine", sentence, explained(program, report)["sentence"])
    log = (pathlib.Path(__file__).parent.parent / "tools/page/example.log").read_text()
    explanation = {"schema": 1, "command": "explain", "verdict": "will-change", "sentence": "S <b>",
                   "situation": "known-machine", "id": "2-0-a", "parts": [], "warnings": [],
                   "next": {"result": 0, "id": "2-0-a", "random": False}}
    case = {"schema": 1, "command": "report", "explain": explanation, "log": log}
    for text, wanted in (
            (json.dumps(case), "WILL CHANGE S <b> new id KEPT 1 of 4 parts has changed, and one "
                               "change is forgiven. The call gave the stored id. stored id"),
            ("\ufeff" + log, "KEPT 1 of 4 parts has changed, and one change is forgiven. The call gave "
                             "the stored id. stored id"),
            (json.dumps(case)[:999], "This begins like a case file and is none, or a part of one"),
            (json.dumps(case | {"schema": 2}), "This case file has schema 2"),
            ("{}", "This is JSON, but holds neither"),
            (json.dumps({"log": [{"time": "09:05:03:107", "level": "Info", "message":
                                  "RecheckHardwareId is not supported with version 1.6"}]}),
             "FAILED The call was refused with result 8"), ("hello", "UNDECIDED This is not the log")):
        seen = driver.execute_script(
            "showAll(utf8.encode(arguments[0]));"
            "return find('trouble').hidden ? [...document.querySelectorAll("
            "'#reports .label, #reports .sentence, .end')].map((e) => e.className === 'end' ?"
            "e.textContent.split(',')[0] : e.textContent).join(' ')"
            " : find('trouble').textContent;", text)
        expect(f"a case of {text[:40]!r}", seen[:len(wanted)], wanted)


def check_keyboard(driver):
    """The second tab: its switches, and each pair in its table."""
    def press(*keys):
        ActionChains(driver).send_keys(*keys).perform()

    def label():
        return driver.find_element(By.CSS_SELECTOR, "#played .label").text
    driver.find_element(By.ID, "tab-explain").send_keys(Keys.ARROW_RIGHT)
    expect("the id with all parts", label(), "KEPT")
    press(Keys.TAB, Keys.ARROW_RIGHT)
    expect("the id without one change", label(), "KEPT")
    press(Keys.TAB, Keys.ARROW_RIGHT, Keys.ARROW_RIGHT)
    expect("the id after two changes", label(), "CHANGES")
    press(Keys.TAB, Keys.TAB, Keys.TAB, *[Keys.ARROW_DOWN] * 6, *[Keys.ARROW_RIGHT] * 6, Keys.ENTER)
    expect("the id without a network", label(), "KEPT")
    kept = driver.execute_script(
        "return [...document.querySelectorAll('#matrix .kept')].map((cell) => cell.ariaLabel)")
    expect("changes that are forgiven", kept, [f"{change}: kept" for change in (
        "volume changed", "product changed", "board changed", "board gone, network gone",
        "network changed", "network gone, board gone", "network gone")])


def check_network(driver, page):
    """No request was made, and what would make one is stopped before it leaves."""
    reached = []

    class Server(http.server.BaseHTTPRequestHandler):
        def do_GET(self):  # pylint: disable=invalid-name
            reached.append(self.path)
            self.send_error(404)

        def log_message(self, *_):  # pylint: disable=arguments-differ
            pass
    with http.server.HTTPServer(("127.0.0.1", 0), Server) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        address = f"http://127.0.0.1:{server.server_port}/"
        driver.execute_async_script("""
            const [address, done] = arguments;
            const image = new Image();
            image.onload = image.onerror = () =>
                fetch(address, {mode: "no-cors"}).finally(done).catch(() => 0);
            image.src = address;""", address)
        server.shutdown()
    expect("addresses that were reached", reached, [])
    for entry in driver.get_log("performance"):
        event = json.loads(entry["message"])["message"]
        # The browser has pages of its own, which make requests, too.
        if (event["method"] == "Network.requestWillBeSent"
                and event["params"]["documentURL"] == page.as_uri()):
            url = event["params"]["request"]["url"]
            if url not in (page.as_uri(), address) and not url.startswith("data:"):
                faults.append(f"a request to {url}")


def take_pictures(driver, folder):
    folder.mkdir(parents=True, exist_ok=True)
    log = driver.execute_script("return find('example-log').content.textContent.trimStart()")
    for width in (1280, 400):
        for scheme in ("light", "dark"):
            driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
                {"name": "prefers-color-scheme", "value": scheme}]})
            for tab in ("explain", "play"):
                driver.execute_script("showAll(null); find('text').value = arguments[0];"
                                      "showAll(utf8.encode(arguments[0]), 'an example');"
                                      "selectTab(find('tab-' + arguments[1]));", log, tab)
                driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
                    "width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
                picture = driver.execute_cdp_cmd("Page.captureScreenshot",
                                                 {"captureBeyondViewport": True})
                name = f"{tab}-{width}-{scheme}.png"
                (folder / name).write_bytes(base64.b64decode(picture["data"]))
    driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
    for tab in ("explain", "play"):
        driver.execute_script("selectTab(find('tab-' + arguments[0]))", tab)
        printed = driver.execute_cdp_cmd("Page.printToPDF", {"printBackground": False})
        (folder / f"{tab}.pdf").write_bytes(base64.b64decode(printed["data"]))


def main():
    page, program, player = map(pathlib.Path, sys.argv[1:4])
    with tempfile.TemporaryDirectory() as profile:
        os.environ["HOME"] = profile
        driver = browser(page.resolve(), profile)
        try:
            check_logs(driver, program, player)
            check_cases(driver, program)
            check_keyboard(driver)
            expect("the console", driver.get_log("browser"), [])
            check_network(driver, page.resolve())
            if sys.argv[4:5] == ["--pictures"]:
                take_pictures(driver, pathlib.Path(sys.argv[5]))
        finally:
            driver.quit()
    sys.exit("\n".join(faults) or 0)


main()

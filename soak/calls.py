#!/usr/bin/env python3
"""Lets each system call of the programs fail once and looks at what becomes of it.

calls.py BIN [SCENARIO[:CALL[:ERROR[:N]]]]

For each scenario, kind of call and error that the kernel may answer with, the program in BIN runs
with the first such call failing, then with the second, and so on until a run makes no more. The
window's calls count from when it is up and idle. A run is "recovered" when it did all the same what
it was asked for, "reported" when it failed in good order and said why, else wrong. A second
argument limits that to one scenario, call or error; with N, it is one run, with the call stack.
"""
import contextlib
import errno
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import threading
import time
import zipfile
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent / "hostile"))
from rig import Fault as Wrong, Home, Program, expect, wait_for  # noqa: E402

BIN = Path(sys.argv[1]).resolve()
FOLDER = Path(__file__).resolve().parent
RUN_LIMIT = 90  # seconds; a server that does not answer is given 60
JOBS = 6  # which mostly wait
# AddressSanitizer's own library goes first.
ASAN = re.findall(r"(/\S*libasan\.so\S*)", subprocess.run(
    ["ldd", BIN / "vornupdater-cli"], capture_output=True, text=True, check=True).stdout)
PRELOAD = ":".join([*ASAN, str(BIN / "libvorn_faults.so")])
SANITIZED = "asan " if ASAN else ""
TIMEOUT_SCALE = "1" if ASAN else "0.3"
SERVERS = {}  # by package: the arguments that name its server
WAITING = re.compile(r"elapsed|remaining|Checking|Unpacking|^$")
ERRORS = {
    "open": "EMFILE ENOMEM EIO EINTR ENOSPC",
    "fopen": "EMFILE EIO",
    "read": "EIO EINTR EAGAIN short",
    "write": "ENOSPC EIO EINTR EAGAIN short",
    "poll": "EINTR EAGAIN ENOMEM",
    "ioctl": "EIO EINTR ENOMEM",
    "termios": "EIO EINTR",
    "close": "EIO EINTR ENOSPC",
    "fsync": "EIO ENOSPC",
    "rename": "EIO ENOSPC ENOMEM",
    "link": "EIO ENOSPC ENOMEM",
    "mkdir": "EIO ENOSPC ENOMEM",
    "unlink": "EIO ENOMEM",
    "truncate": "EIO EINTR",
    "stat": "EIO ENOMEM",
    "attributes": "EIO",
    "lock": "ENOMEM EINTR",
    "eventfd": "EMFILE ENOMEM",
    "inotify": "EMFILE ENOMEM ENOSPC",
    "readdir": "EIO ENOMEM",
    "socket": "EMFILE ENOMEM",
    "thread": "EAGAIN",
}
NAME = "VORN_PLATINA-3.10.0.bin"
OLD = {NAME: b"old" * 100, "VORN_I-1.0.bin": b"older" * 50}
NEW = {NAME: bytes(range(256)) * 3, "VORN_I-1.0.bin": b"new" * 70}


class Raced(Exception):
    """The network library does not wait until its thread has really ended, and what that thread
    frees then, its encryption library may have freed at the program's exit."""


class Run(Home):
    """One run of the program in folders of its own."""

    def __init__(self, fault):
        self.__enter__()
        self.folder, self.home = Path(self.path), Path(self.caches)
        self.firmware = self.home / "VornUpdate2"
        self.firmware.mkdir()
        for name, content in OLD.items():
            (self.firmware / name).write_bytes(content)
        self.image = self.folder / NAME
        self.image.write_bytes(NEW[NAME])
        self.stack = self.folder / "stack"
        self.fault = fault
        self.device = None

    def environment(self, fault, probe=""):
        env = {"LD_PRELOAD": PRELOAD + probe,
               "LSAN_OPTIONS": f"suppressions={FOLDER}/lsan.supp:print_suppressions=0"}
        if fault:
            call, error, n = fault
            number = 0 if error == "short" else getattr(errno, error)
            env |= {"VORN_FAULT": f"{call}:{number}:{n}", "VORN_FAULT_REPORT": str(self.stack)}
        return env

    def start(self, arguments, fault=None):
        env = {**os.environ, "XDG_CACHE_HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home),
               "LC_ALL": "C.UTF-8", **self.environment(fault)}
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"):
            env.pop(name, None)
        command = [BIN / "vornupdater-cli", "--json", "--timeout-scale", TIMEOUT_SCALE, "--device-dir",
                   self.devices, *arguments]
        return subprocess.Popen(command, env=env, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                text=True, errors="replace")

    def finish(self, program, before=""):
        """Waits; sets the exit code, the events and the results in the output."""
        try:
            out, err = program.communicate(timeout=RUN_LIMIT)
        except subprocess.TimeoutExpired:
            program.kill()
            raise Wrong(f"hangs: {program.communicate()[1]}") from None
        self.judge_end(program.returncode, err)
        self.events = [json.loads(line) for line in (before + out).splitlines()]
        self.results = [event for event in self.events if event["event"] == "result"]

    def judge_end(self, code, err):
        self.exit, self.err = code, err
        if "nptl_deallocate_tsd" in self.err:
            raise Raced
        expect("Sanitizer" not in self.err and "runtime error" not in self.err, self.err)
        trace = self.trace()
        # A program that can have no event loop is ended by GLib, with a line that says so; without
        # a signalfd, Ctrl-C ends it as it ends any other.
        self.is_given_up = (self.exit == -signal.SIGTRAP and "g_wakeup" in trace or
                            self.exit == -signal.SIGINT and "signalfd" in trace)
        expect(self.exit >= 0 or self.is_given_up, f"ends by signal {-self.exit}: {self.err}")

    def run(self, arguments, fault=None):
        self.finish(self.start(arguments, fault))

    def plug_in(self):
        self.got, self.report = self.folder / "got", self.folder / "report"
        self.device = subprocess.Popen(
            [BIN / "vornsim", "device", "--dir", self.devices, "--name", "usbserial-1", "--image",
             self.got, "--report", self.report], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.device.stdout.readline()

    def unplug(self, image, most=1):
        """Whether the device was updated, `most` times at most, and holds the image."""
        self.device.terminate()
        self.device.communicate()
        self.device = None
        report = json.loads(self.report.read_text())
        expect(report["errors"] == [], f"the device complains: {report['errors']}")
        return 1 <= report["updates"] <= most and self.got.read_bytes() == image

    def end(self):
        if self.device:
            self.device.kill()
            self.device.communicate()
        self.__exit__()

    def trace(self):
        return self.stack.read_text() if self.stack.exists() else ""

    def names_the_error(self, text):
        if "libQt6Network" in self.trace():
            return True  # the network library has names of its own
        if self.fault[1] == "short":
            return False  # which is no error
        words = {"ENOSPC": "Not enough disk space", "EIO": "The connection to usbserial-1 was lost"}
        error = os.strerror(getattr(errno, self.fault[1]))
        return error in text or words.get(self.fault[1], error) in text

    def outcome(self):
        """What the program says of itself, judged as far as every scenario has it."""
        if self.is_given_up:
            return "reported"
        if self.exit == 2:  # not run at all, or no record
            expect(self.names_the_error(self.err), f"does not name the error: {self.err}")
            return "reported"
        if self.exit == 0:
            expect(all(each["result"] == "ok" for each in self.results), "exits with 0 on failure")
            return "recovered"
        expect([each["result"] for each in self.results[:1]] == ["failed"], "fails without a result")
        result = self.results[0]
        expect(result["cause"], "fails without a cause")
        expect(self.names_the_error(self.err) or
               result.get("errno") == getattr(errno, self.fault[1], -1),
               f"does not name the error: {result} {self.err}")
        return "reported"

    def folder_state(self):
        files = {each.name: each.read_bytes() for each in self.firmware.iterdir()}
        files.pop(".published-by-vornupdater", None)
        return "old" if files == OLD else "new" if files == NEW else f"mixed: {sorted(files)}"


def check_device(run, holds_image):
    # When only the last answer is lost, nobody can know.
    is_unknown = holds_image and run.results[0].get("step") == "finish"
    expect(holds_image == (run.exit == 0) or is_unknown,
           f"exits with {run.exit}, device updated: {holds_image}")


def update(run):
    run.plug_in()
    run.run(["update", "--firmware", run.image], run.fault)
    outcome = run.outcome()
    check_device(run, run.unplug(NEW[NAME]))
    return outcome


def info(run):
    run.plug_in()
    run.run(["info"], run.fault)
    outcome = run.outcome()
    run.unplug(b"")
    expect(run.exit != 0 or any(each.get("model") == 8 for each in run.events), "no model code")
    return outcome


def listing(run):
    run.run(["firmware"], run.fault)
    outcome = run.outcome()
    wanted = sorted(str(run.firmware / name) for name in OLD)
    expect(run.exit != 0 or run.results[0]["files"] == wanted, "another list of files")
    return outcome


def check_caches(run, is_installed, text):
    state = run.folder_state()
    expect(state == ("new" if is_installed else "old"), f"firmware folder {state}: {text}")
    leftovers = [name for name in run.leftovers() if name.startswith(".Vorn")]
    # What the clean-up itself could not remove, the next start does.
    expect(not leftovers or run.fault and run.fault[0] in ("open", "readdir", "stat", "unlink"),
           f"leaves {leftovers}")


def download(run, package="VornUpdate2"):
    arguments = [*SERVERS[package], "download"]
    run.run(arguments, run.fault)
    outcome = run.outcome()
    check_caches(run, run.exit == 0, f"exits with {run.exit}: {run.err}")
    if outcome == "recovered":
        return outcome
    run.run(arguments)
    expect(run.exit == 0, f"the next download fails: {run.err}")
    run.fault = None
    check_caches(run, True, run.err)
    return outcome


def download_other(run):
    """A package with a folder of its own name beside the firmware folder."""
    return download(run, "VornPack")


def watch(run):
    run.plug_in()
    record = run.folder / "record"
    earlier = '{"time":"earlier"}\n'
    record.write_text(earlier)
    program = run.start(["watch", "--newest", "--record", record], run.fault)
    # A station that does not see the device waits for one.
    limit = threading.Timer(15, program.send_signal, [signal.SIGINT])
    limit.start()
    out = ""
    for line in program.stdout:
        out += line
        if '"result"' in line:
            break
    limit.cancel()
    try:
        program.wait(1 if ASAN else 0.3)  # which it takes to end by itself
    except subprocess.TimeoutExpired:
        program.send_signal(signal.SIGINT)
    run.finish(program, out)
    holds_image = run.unplug(OLD[NAME])
    text = record.read_text()
    expect(text.startswith(earlier) and text.endswith("\n"), f"record: {text}")
    lines = [json.loads(line) for line in text.splitlines()[1:]]
    outcome = run.outcome()
    if run.exit == 2 or run.is_given_up:
        return outcome
    if run.results[0].get("cause") == "bad-image" and not lines:
        return outcome  # no update began
    expect(len(lines) == 1, f"{len(lines)} lines in the record")
    expect((lines[0]["result"] == "ok") == (run.exit == 0), f"record: {text}")
    check_device(run, holds_image)
    return outcome


@contextlib.contextmanager
def show_window(run, *arguments):
    environment = run.environment(run.fault, f":{BIN}/hostileprobe.so")
    with Program(run, *arguments, environment=environment) as program:
        program.start(device=run.device)
        expect(program.ask("count") == "ok", "the calls are not counted")
        try:
            yield program
            program.end("quit", range(-64, 256), 20 if ASAN else 2.2)
            run.judge_end(program.process.returncode, program.said())
        except Wrong as problem:
            if "ended before" not in str(problem):
                raise
            run.judge_end(program.process.wait(20), program.said())
            expect(run.is_given_up, f"{problem}: {run.err}")
        expect(run.is_given_up or run.exit == 0, f"exits with {run.exit}: {run.err}")
        expect(program.rts() == "0", "RTS is high")


def press(program, button, status, good, details):
    """Why it failed, or nothing."""
    program.ask("press " + button)
    program.ask("text " + status)  # by whose answer the button has been pressed

    def end():
        why = program.ask("text " + details)
        return good if good in program.ask("text " + status) else not WAITING.search(why) and why
    said = wait_for(end, RUN_LIMIT, f"{button} ends")
    return "" if said == good else said


def press_update(program):
    if "Open" in program.ask("text openButton_1011"):
        if why := press(program, "openButton_1011", "connectText_1001", "opened successfully",
                        "connectionDetails"):
            return why
        time.sleep(2 if ASAN else 0.8)  # until the list has been filled again
    program.ask("pick firmwareList_1002 " + NAME)
    return press(program, "updateButton_2001", "updateText_1015", "successfully", "updateDetails")


def judge_press(run, program, act):
    """One that fails says why, and the next one succeeds."""
    if not act(program):
        return "recovered"
    said = " ".join(program.ask(f"text {part}Details")
                    for part in ("connection", "firmware", "update"))
    expect(run.names_the_error(said), f"does not name the error: {said}")
    expect(not (why := act(program)), f"the next one fails: {why}")
    return "reported"


def window(run):
    run.plug_in()
    outcome = "reported"
    with show_window(run) as program:
        outcome = judge_press(run, program, press_update)
        program.ask("press openButton_1011")
        # A descriptor that could not be closed counts as open.
        said = "close successfully" + "|closeing failed" * (run.fault[0] == "close")
        wait_for(lambda: re.search(said, program.ask("text connectText_1001")), 20, said)
    holds_image = run.unplug(OLD[NAME], 1 if outcome == "recovered" else 2)
    expect(holds_image or run.is_given_up, "the device was not updated")
    return outcome


def window_download(run):
    outcome = "reported"
    with show_window(run, *SERVERS["VornUpdate2"]) as program:
        outcome = judge_press(run, program, lambda program: press(
            program, "downloadButton_2002", "perText_1012", "Success", "firmwareDetails"))
    check_caches(run, not run.is_given_up, run.err)
    return outcome


SCENARIOS = {each.__name__.replace("_", "-"): each
             for each in (update, info, listing, download, download_other, watch, window,
                          window_download)}


def judge(scenario, fault):
    """The outcome of one run, and the call stack; that is empty when the call was not reached."""
    run = Run(fault)
    try:
        outcome = SCENARIOS[scenario](run)
    except Raced:
        run.end()
        return judge(scenario, fault)
    except (Wrong, json.JSONDecodeError, OSError) as problem:
        outcome = f"wrong: {problem}"
    stack = run.trace()
    run.end()
    return outcome, stack


def judge_all(scenario, call, error):
    outcomes = []
    is_reached = True
    while is_reached:
        outcome, is_reached = judge(scenario, (call, error, len(outcomes) + 1))
        if is_reached or outcome != "recovered":
            outcomes.append(outcome)
    return scenario, call, error, outcomes


def serve(folder, name):
    """A package server; the package's folder is the firmware folder, or another one beside it."""
    package = folder / f"{name}.zip"
    with zipfile.ZipFile(package, "w", zipfile.ZIP_DEFLATED) as archive:
        if name != "VornUpdate2":
            archive.writestr(f"{name}/", "")
            archive.writestr(f"{name}/notes.txt", "notes")
        archive.writestr("VornUpdate2/", "")
        for file, content in NEW.items():
            archive.writestr(f"VornUpdate2/{file}", content)
    server = subprocess.Popen(
        [BIN / "vornsim", "package-server", "--package", package, "--last-modified",
         "Tue, 14 Jan 2025 10:00:00 GMT", "--suggested-name", package.name],
        stdout=subprocess.PIPE, text=True)
    return name, server, json.loads(server.stdout.readline())


def show(results):
    table, is_wrong = {}, False
    for scenario, call, error, outcomes in results:
        counts = table.setdefault(call, {}).setdefault(error, Counter())
        for n, outcome in enumerate(outcomes, 1):
            counts[outcome.split(":")[0]] += 1
            if outcome.startswith("wrong"):
                is_wrong = True
                print(f"{outcome}\n    again: ./run soak --calls {SANITIZED}"
                      f"{scenario}:{call}:{error}:{n}", flush=True)
    errors = list(dict.fromkeys(error for row in ERRORS.values() for error in row.split()))
    print("call      " + "".join(f"{error:>14}" for error in errors) +
          "\n          (runs that recovered / reported / went wrong)")
    for call in ERRORS:
        cells = [table.get(call, {}).get(error) for error in errors]
        print(f"{call:10}" + "".join(
            f"{cell['recovered']}/{cell['reported']}/{cell['wrong']}".rjust(14)
            if cell else " " * 14 for cell in cells))
    return is_wrong


def main():
    wanted = sys.argv[2].split(":") if len(sys.argv) > 2 else []
    tasks = [(scenario, call, error) for scenario in SCENARIOS for call, row in ERRORS.items()
             for error in row.split() if [scenario, call, error][:len(wanted)] == wanted[:3]]
    with tempfile.TemporaryDirectory(prefix="vorn-calls-") as folder:
        servers = [serve(Path(folder), name) for name in ("VornUpdate2", "VornPack")]
        SERVERS.update((name, ["--package-host", ready["host"], "--package-ca", ready["ca"]])
                       for name, _, ready in servers)
        try:
            if len(wanted) == 4:
                outcome, stack = judge(wanted[0], (wanted[1], wanted[2], int(wanted[3])))
                print(outcome, stack or "The call was not reached.", sep="\n")
                return outcome.startswith("wrong")
            with ThreadPoolExecutor(JOBS) as pool:
                return show(pool.map(lambda task: judge_all(*task), tasks))
        finally:
            for _, server, _ in servers:
                server.terminate()
                server.communicate()


sys.exit(main())

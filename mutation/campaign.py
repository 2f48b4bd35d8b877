"""What mutation/run does, once the packages are there and the sources are configured:

    campaign.py SOURCES WORK [--minutes N] [--go-on] [--list] [NUMBER | TEXT]...

SOURCES is the repository, configured in WORK/plain. A copy of it with every fault woven in is built in WORK/tree,
and each fault is shown to the unit tests that come by its place. What came of it is written to WORK/judged at once,
a line a fault.
"""

import collections
import concurrent.futures
import hashlib
import itertools
import json
import multiprocessing
import os
import pathlib
import pickle
import random
import re
import resource
import shlex
import signal
import subprocess
import sys
import threading
import time

import equivalents
import faults as faults_of

FOLDERS = ("model", "timeline", "reminders", "updates", "service")
# Beside the tests of these folders.
USERS = ("fuzz",)
# They are about other folders.
LEFT_OUT = {f"fuzz/{name}" for name in ("body_decoder", "bus_answers", "command_line", "http_answer", "http_messages",
                                        "logo_image", "pending_requests", "settings_file")}
WANTED_PERCENT = 95
AT_ONCE = 2
MINUTES = 20
SEED = 1
LEAST_PATIENCE = 10.0
PATIENCE_FACTOR = 5
MEMORY = 8 << 30
# What reads an optional without a value, or behind an end, is to be noticed. Tests that measure know by the other one
# that this build is slower.
FLAGS = "-D_GLIBCXX_ASSERTIONS -DORBITLEDGE_WITH_FAULTS"


def say(words):
    print(f"==> {words}", file=sys.stderr, flush=True)


def fail(words):
    sys.exit(f"error: {words}")


# The copy


def sources_of(root):
    """By real path: the name in the repository, and the text, a character a byte."""
    found = {}
    for folder in FOLDERS:
        for path in sorted((root / "src" / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                found[os.path.realpath(path)] = (str(path.relative_to(root)), path.read_text("latin-1"))
    return found


def arguments_of(command):
    words = shlex.split(command["command"])
    first = next(index for index, word in enumerate(words) if word.endswith(("c++", "g++"))) + 1
    kept = []
    skip = False
    for word in words[first:]:
        if skip or word in ("-o", "-c"):
            skip = not skip
        elif not word.startswith("-W"):
            kept.append(word)
    return kept


def found_in(job):
    texts, source, arguments = job
    finder = faults_of.Finder(texts)
    finder.read(source, arguments)
    return finder.found


def find_all(root, plain, texts):
    commands = json.loads((plain / "compile_commands.json").read_text())
    jobs = [(texts, command["file"], arguments_of(command))
            for command in commands if os.path.realpath(command["file"]) in texts]
    # Looking takes a minute or two, and what is found stays the same while all sources do.
    known_for = hashlib.sha256(repr([job[1:] for job in jobs]).encode())
    for path in [*sorted((root / "src").rglob("*.h")), *sorted((root / "src").rglob("*.cpp")),
                 pathlib.Path(faults_of.__file__)]:
        known_for.update(path.read_bytes())
    known = plain.parent / f"found-{known_for.hexdigest()[:16]}"
    if known.exists():
        return pickle.loads(known.read_bytes())
    found = {}
    with multiprocessing.Pool(AT_ONCE) as pool:
        for some in pool.imap(found_in, jobs):
            for key, fault in some.items():
                found.setdefault(key, fault)
    everything = faults_of.without_twins(list(found.values()))
    faults_of.describe(everything, dict(texts.values()))
    for old in known.parent.glob("found-*"):
        old.unlink()
    known.write_bytes(pickle.dumps(everything))
    return everything


def write_if_changed(path, content):
    if path.exists() and path.read_bytes() == content:
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)


def copy(root, tree):
    """All that the sources are, but for the files that faults are woven into."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=root,
                            check=True, capture_output=True, text=True).stdout
    names = {name for name in listed.split("\0") if name and (root / name).is_file()}
    woven = {name for name in names
             if name.startswith(tuple(f"src/{folder}/" for folder in FOLDERS)) and name.endswith((".h", ".cpp"))}
    for name in names - woven:
        write_if_changed(tree / name, (root / name).read_bytes())
        os.chmod(tree / name, os.stat(root / name).st_mode)
    for path in tree.rglob("*"):
        name = str(path.relative_to(tree))
        if not name.startswith("build/") and path.is_file() and name not in names:
            path.unlink()


def weave(tree, texts, faults):
    by_file = collections.defaultdict(list)
    for fault in faults:
        by_file[fault.file].append(fault)
    head = f'#include "{tree}/mutation/Fault.h"\n'
    woven = {}
    for name, text in texts.values():
        woven[name] = faults_of.Woven(text, by_file[name], head if by_file[name] else "")
        write_if_changed(tree / name, woven[name].text.encode("latin-1"))
    return woven


# The build


PLACE = re.compile(r"^(?:In file included from |\s+from )?(/[^\s:]+|\.\.?/[^\s:]+):(\d+):(\d+):? +(.*)$")


def refused(output, tree, woven):
    """The faults that the compiler's complaints are about, and complaints that are about none."""
    numbers = set()
    puzzling = []
    required = set()
    for line in output.splitlines():
        match = PLACE.match(line)
        if not match:
            continue
        path, row, column, words = match.groups()
        real = pathlib.Path(os.path.realpath(tree / "build/dev" / path))
        name = str(real.relative_to(tree)) if real.is_relative_to(tree) else ""
        near = woven[name].near(int(row), int(column)) if name in woven else set()
        if "required from" in words and near:
            required = near
        elif words.startswith(("error:", "fatal error:")):
            if not near | required:
                puzzling.append(line)
            numbers |= near or required
            required = set()
    return numbers, puzzling


def build(tree, texts, faults, targets):
    """Builds, and leaves out what does not compile; tells which faults those were."""
    left_out = set()
    for _ in range(15):
        woven = weave(tree, texts, [fault for fault in faults if fault.number not in left_out])
        result = subprocess.run(
            ["cmake", "--build", "--preset", "dev", "--target", *targets, "--", f"-j{AT_ONCE}", "-k0"], cwd=tree,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
        (tree.parent / "build.log").write_text(result.stdout)
        if result.returncode == 0:
            return left_out
        numbers, puzzling = refused(result.stdout, tree, woven)
        if not numbers - left_out:
            fail(f"the copy does not build; see {tree.parent}/build.log" + "".join(puzzling[:3]))
        say(f"{len(numbers - left_out)} faults do not compile and are left out")
        left_out |= numbers
    return fail("the copy does not build after many attempts")


# The tests


class Test:
    def __init__(self, description):
        self.name = description["name"]
        self.command = description.get("command")
        properties = {entry["name"]: entry["value"] for entry in description.get("properties", [])}
        self.folder = properties.get("WORKING_DIRECTORY", ".")
        self.alone = bool(properties.get("RUN_SERIAL"))
        self.labels = properties.get("LABELS", [])
        self.duration = 0.0
        self.reached = set()

    @property
    def target(self):
        group, name = self.name.split("/", 1)
        return f"replay_{name}" if group == "fuzz" else f"test_{group}_{name}"

    @property
    def group(self):
        return self.name.split("/")[0]


def tests_of(tree):
    listed = subprocess.run(["ctest", "--preset", "dev", "--show-only=json-v1"], cwd=tree, check=True,
                            capture_output=True, text=True).stdout
    tests = [Test(description) for description in json.loads(listed)["tests"]]
    return [test for test in tests if test.group in FOLDERS + USERS and test.name not in LEFT_OUT
            and "desktop" not in test.labels]


class Turns:
    """Tests that measure time run alone, all others beside each other."""

    def __init__(self):
        self.condition = threading.Condition()
        self.running = 0
        self.someone_alone = False
        self.waiting_alone = 0

    def enter(self, alone):
        with self.condition:
            if alone:
                self.waiting_alone += 1
                self.condition.wait_for(lambda: self.running == 0 and not self.someone_alone)
                self.waiting_alone -= 1
                self.someone_alone = True
            else:
                self.condition.wait_for(lambda: not self.someone_alone and self.waiting_alone == 0)
                self.running += 1

    def leave(self, alone):
        with self.condition:
            if alone:
                self.someone_alone = False
            else:
                self.running -= 1
            self.condition.notify_all()


TURNS = Turns()


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run_test(test, patience, extra, to_its_end=False):
    """Whether it passed, None where it did not end in time; how long that took, and its words.

    What fails is not waited for, unless told so.
    """
    environment = os.environ | {"RC_PARAMS": "seed=1"} | extra
    TURNS.enter(test.alone)
    started = time.monotonic()
    try:
        with subprocess.Popen(test.command, cwd=test.folder, env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True,
                              preexec_fn=limit_memory) as process:
            over = threading.Event()
            patience_ends = threading.Timer(patience, lambda: (over.set(), end(process)))
            patience_ends.start()
            words = []
            failed = False
            for line in process.stdout:
                words.append(line)
                if line.startswith(b"FAIL!"):
                    failed = True
                    if not to_its_end:
                        end(process)
            process.wait()
            patience_ends.cancel()
        passed = None if over.is_set() and not failed else process.returncode == 0
        return passed, time.monotonic() - started, b"".join(words).decode(errors="replace")
    finally:
        TURNS.leave(test.alone)


def end(process):
    """Ends the test, and what it has started."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def observe(tests, work):
    """Runs each test as it is, twice: what it takes, and by which places it comes."""
    notes = work / "reached"
    notes.mkdir(exist_ok=True)

    def one(test):
        file = notes / test.target
        file.unlink(missing_ok=True)
        # Noting takes time, which some tests do not grant: how this run ends does not matter.
        run_test(test, 300, {"ORBITLEDGE_FAULTS_REACHED": str(file)}, to_its_end=True)
        test.reached = {int(line) for line in file.read_text().split()} if file.exists() else set()

    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        list(pool.map(one, tests))
    check(tests)


def check(tests):
    """Runs each test as it is: one that fails of itself would notice everything."""
    def one(test):
        passed, duration, words = run_test(test, 300, {})
        test.duration = max(test.duration, duration)
        return passed or fail(f"{test.name} fails without any fault:\n{words[-2000:]}")

    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        list(pool.map(one, tests))


def order_for(fault, tests):
    reaching = [test for test in tests if fault.number in test.reached]
    return sorted(reaching, key=lambda test: (test.group != fault.folder, test.duration))


def run_with(fault, test):
    """As run_test, but what does not end counts only where the machine is not merely too busy."""
    patience = max(LEAST_PATIENCE, PATIENCE_FACTOR * test.duration)
    while True:
        passed, _, words = run_test(test, patience, {"ORBITLEDGE_FAULT": str(fault.number)})
        if passed is not None:
            return passed, words
        # Without the fault it has to end in half of the time.
        passed, duration, _ = run_test(test, patience, {})
        if passed and duration < patience / 2:
            return False, "does not end"
        patience *= 2


def noticed_by(fault, tests, first):
    """The test that notices the fault and its words, or None twice."""
    for test in sorted(order_for(fault, tests), key=lambda test: test.name != first):
        passed, words = run_with(fault, test)
        if not passed:
            said = [line for line in words.splitlines() if line.strip()] or ["ends without a word"]
            return test.name, next((line for line in said if line.startswith("FAIL!")), said[-1])
    return None, None


def digests_of(texts):
    return {name: hashlib.sha256(text.encode("latin-1")).hexdigest()[:16] for name, text in texts.values()}


def noticed_before(faults, digests, judged):
    """By number, what earlier runs had noticed, in files that are the same since."""
    if not judged.exists():
        return {}
    known = {}
    for line in judged.read_text().splitlines():
        entry = json.loads(line)
        known[tuple(entry["fault"]), entry["digest"]] = entry["noticed"]
    found = {fault.number: known.get((fault.identity, digests[fault.file])) for fault in faults}
    return {number: test for number, test in found.items() if test}


def judge(faults, tests, digests, log, minutes):
    """By number: the test that notices the fault, or None. What came of each fault is logged at once.

    The order is the same each time and mixes all places: what is judged when the time is over is an even sample.
    """
    results = {}
    noticing = {}
    writing = threading.Lock()
    done = itertools.count(1)
    deadline = time.monotonic() + 60 * minutes

    def one(fault):
        if time.monotonic() > deadline:
            return
        # What has noticed the last fault of this function probably notices this one.
        place = (fault.file, fault.function)
        results[fault.number], words = noticed_by(fault, tests, noticing.get(place))
        if results[fault.number]:
            noticing[place] = results[fault.number]
        entry = {"fault": fault.identity, "digest": digests[fault.file], "number": fault.number,
                 "reached": any(fault.number in test.reached for test in tests),
                 "noticed": results[fault.number], "words": words}
        with writing:
            print(json.dumps(entry), file=log, flush=True)
        count = next(done)
        if count % 100 == 0:
            say(f"{count} of {len(faults)}")

    mixed = sorted(faults, key=lambda fault: fault.number)
    random.Random(SEED).shuffle(mixed)
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        list(pool.map(one, mixed))
    return results


# The report


def show(fault, by=None, file=None):
    where = f"{fault.number:5} {fault.file}:{fault.line} {fault.function} ({fault.kind})"
    print(where + (f", noticed by {by}" if by else ""), file=file)
    again = f"  [{fault.occurrence}]" if fault.occurrence > 1 else ""
    print(f"      - {fault.before.encode('latin-1').decode()}", file=file)
    print(f"      + {fault.after.encode('latin-1').decode()}{again}", file=file, flush=True)


def table(faults, left_out, results, reasons):
    print(f"{'folder':12} {'made':>6} {'invalid':>8} {'noticed':>8} {'equivalent':>11} {'known':>6} {'survived':>9}"
          "   noticed of what can be")
    for folder in (*FOLDERS, "together"):
        mine = [fault for fault in faults if folder in (fault.folder, "together")]
        invalid = [fault for fault in mine if fault.number in left_out]
        judged = [fault for fault in mine if fault.number in results]
        noticed = [fault for fault in judged if results[fault.number]]
        unnoticed = [fault for fault in judged if not results[fault.number]]
        explained = [reasons[fault.identity] for fault in unnoticed if fault.identity in reasons]
        known = len([reason for reason in explained if reason.startswith(equivalents.KNOWN)])
        same = len(explained) - known
        share = 100 * len(noticed) / max(1, len(judged) - same)
        print(f"{folder:12} {len(mine):6} {len(invalid):8} {len(noticed):8} {same:11} {known:6}"
              f" {len(unnoticed) - len(explained):9}   {share:5.1f} %")
    return share


def chosen_from(faults, wanted):
    if not wanted:
        return faults
    return [fault for fault in faults
            if str(fault.number) in wanted
            or any(not word.isdigit() and word in f"{fault.file} {fault.function}" for word in wanted)]


def main():
    root, work = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    words = sys.argv[3:]
    minutes = MINUTES
    if words and words[0] == "--minutes":
        minutes = float(words[1])
        words = words[2:]
    only_list = "--list" in words
    going_on = "--go-on" in words
    wanted = {word for word in words if word not in ("--list", "--go-on")}
    tree = work / "tree"

    say("looking for places of faults")
    texts = sources_of(root)
    faults = find_all(root, work / "plain", texts)
    chosen = chosen_from(faults, wanted)
    if not chosen:
        fail("there is no such fault; mutation/run --list tells them all")
    if only_list:
        for fault in chosen:
            show(fault)
        return

    say(f"building {tree} with {len(faults)} faults")
    copy(root, tree)
    weave(tree, texts, faults)
    configured = subprocess.run(["cmake", "--preset", "dev", f"-DCMAKE_CXX_FLAGS={FLAGS}"], cwd=tree,
                                capture_output=True, text=True, check=False)
    if configured.returncode != 0:
        fail(f"configuring the copy failed: {configured.stderr[-2000:]}")
    left_out = build(tree, texts, faults, [test.target for test in tests_of(tree)])
    tests = tests_of(tree)

    say("running the tests without a fault")
    started = time.monotonic()
    observe(tests, work)

    reached = set().union(*(test.reached for test in tests))
    # The compiler alone calls these functions, and there are no faults for it.
    left_out |= {fault.number for fault in chosen if fault.constant and fault.number not in reached}
    valid = [fault for fault in chosen if fault.number not in left_out]
    digests = digests_of(texts)
    judged = work / "judged"
    known = noticed_before(valid, digests, judged) if going_on else {}
    if known:
        say(f"{len(known)} faults were noticed before")
    left = [fault for fault in valid if fault.number not in known]
    say(f"running them with each of {len(left)} faults")
    with open(judged, "a" if going_on or wanted else "w", encoding="utf-8") as log:
        results = known | judge(left, tests, digests, log, minutes)
    reasons = equivalents.read(root / "mutation/equivalent.txt")
    (work / "results.json").write_text(json.dumps(
        [vars(fault) | {"noticed": results.get(fault.number), "judged": fault.number in results,
                        "valid": fault.number not in left_out, "reached": fault.number in reached}
         for fault in chosen],
        indent=1))

    if len(results) < len(valid):
        say(f"the time is over; seed {SEED} chose {len(results)} faults of {len(valid)}")
        valid = [fault for fault in valid if fault.number in results]
    say("running the tests once more without a fault")
    check(tests)

    unexplained = 0
    for fault in valid:
        if wanted and results[fault.number]:
            show(fault, results[fault.number])
        elif not results[fault.number] and (wanted or fault.identity not in reasons):
            unexplained += 1
            show(fault)
    share = table(chosen, left_out, results, reasons)
    stale = set() if wanted else set(reasons) - {fault.identity for fault in faults}
    for file, function, before, after, _ in sorted(stale):
        print(f"said to be equivalent, but not found any more: {file} {function}: {before} -> {after}")
    for fault in valid:
        if results[fault.number] and fault.identity in reasons:
            print(f"said to be equivalent, but noticed by {results[fault.number]}:")
            show(fault)
    say(f"{len(results)} faults judged in {(time.monotonic() - started) / 60:.1f} minutes")
    if unexplained or (share < WANTED_PERCENT and not wanted):
        sys.exit(1)


main()

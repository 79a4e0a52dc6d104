#!/usr/bin/env python3
"""Which case of nacelle-check fails for which fault of the simulated pod.

  scripts/acceptance-matrix.py [--bin FOLDER]           writes docs/acceptance-matrix.md
  scripts/acceptance-matrix.py --check [--bin FOLDER]   holds it against what comes out now

--check leaves out the cases of timing, whose limits a busy machine may miss, and looks once more at
a fault that comes out otherwise than the document has it. Every case has to be failed by a fault,
and none by a pod without one. Ends with 0 when that is so.
"""

import argparse
import concurrent.futures
import json
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs" / "acceptance-matrix.md"
AT_ONCE = 12  # the runs wait nearly all of their time
CYCLES = 200
MINUTES = 0.1
LIMIT = 400  # seconds, after which a run hangs

# Options of podsim. A row a fault; the first is the pod that everything has to pass with.
FAULTS = [
    "",
    "--silent",
    "--hang-after 60",
    "--leave-after 60",
    "--version-byte 02",
    "--pad 3",
    "--bad-crc 25",
    "--bad-length 25",
    "--noise 5",
    "--drop 40",
    "--double 40",
    "--swap 40",
    "--delay 25",
    "--late 20:60",
    "--late 90:300",
    "--jitter 30",
    "--coalesce 2",
    "--no-subframe",
    "--reserved 55",
    "--flags FFFF",
    "--lie-mode 12",
    "--lie-mode 77",
    "--angle-offset 200",
    "--answer-broken",
    "--answer-broken --delay 350",
    "--deaf-after-broken",
    "--no-reassembly",
    "--wrong-code",
    "--no-ack",
    "--result 1",
    "--ack-after 100000",
    "--accept-unknown",
    "--accept-unknown --ack-after 100",
    "--ignore 24",
    "--ignore 06,07,08",
    "--ignore 20,21,25,26",
    "--ignore 2A,2B",
    "--ignore 30,31,32,33",
    "--ignore 73,74,75,76",
    "--ignore 80,81",
    "--ignore 03,12",
    "--stuck",
    "--drift 2",
    "--drift-pitch 0.3",
    "--slow 0.01",
    "--pitch-offset 8",
]


def judged(folder, options):
    """Judgement by case against a pod with these options."""
    pod = subprocess.Popen([folder / "podsim", "--tcp", "0", *options.split()],
                           stdout=subprocess.PIPE, text=True)
    try:
        port = re.search(r":(\d+)$", pod.stdout.readline().strip()).group(1)
        with tempfile.TemporaryDirectory() as place:
            result = pathlib.Path(place) / "result.json"
            subprocess.run([folder / "nacelle-check", f"tcp://127.0.0.1:{port}",
                            "--group", "link,timing,protocol,commands,payload,motion,endurance",
                            "--motion", "--cycles", str(CYCLES), "--minutes", str(MINUTES),
                            "--json", result],
                           stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL, timeout=LIMIT, check=False)
            cases = json.loads(result.read_text())["cases"]
    finally:
        pod.kill()
        pod.communicate()
    return {case["id"]: case["judgement"] for case in cases}


def measured(folder):
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        return list(pool.map(lambda options: judged(folder, options), FAULTS))


def documented():
    """The faults that each case fails for, as the document has it."""
    rows_there = re.findall(r"^\| `([^`]+)` \| (.*) \|$", DOCUMENT.read_text(encoding="utf-8"), re.M)
    return {case: set(re.findall("`([^`]*)`", faults)) for case, faults in rows_there}


def agrees(fault, result, known, without):
    looked_at = {case: judgement for case, judgement in result.items()
                 if case in known and not case.startswith(without)}
    return all((judgement == "failed") == (fault in known[case])
               for case, judgement in looked_at.items()) and (
                   fault != "" or "not_judged" not in looked_at.values())


def looked_at_again(folder, results, without):
    """The runs are many at once, and a busy machine can join or lose what a pod sends."""
    known = documented()

    def looked_at(fault, result):
        return result if agrees(fault, result, known, without) else judged(folder, fault)

    with concurrent.futures.ThreadPoolExecutor(3) as pool:
        return list(pool.map(looked_at, FAULTS, results))


def failed(results, case):
    return [fault for fault, result in zip(FAULTS, results) if result.get(case) == "failed"]


def rows(results, without=()):
    """A line a case: the faults that it fails for."""
    return [f"| `{case}` | {', '.join(f'`{fault}`' for fault in failed(results, case))} |"
            for case in results[0] if not case.startswith(tuple(without))]


def mistakes(results):
    for case in results[0]:
        faults = failed(results, case)
        if "" in faults:
            yield f"{case}: fails against a pod without a fault"
        if not faults:
            yield f"{case}: no fault makes it fail"
    for case, judgement in results[0].items():
        if judgement == "not_judged":
            yield f"{case}: isn't judged against a pod without a fault"


TEXT = """# What the cases of nacelle-check find

Each case against the faults that the simulated pod has to offer: `podsim` with one of these
options, over TCP. A pod without a fault passes all of them. What isn't named here for a case lets
it pass, or be not judged: without an answer, or a link, nothing else can be judged. Made by
`scripts/acceptance-matrix.py`.

| Case | fails for |
|---|---|
"""


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--bin", type=pathlib.Path, default=ROOT / "build" / "release" / "bin")
    arguments = parser.parse_args()
    results = measured(arguments.bin)
    timed = ("timing", "endurance.answer") if arguments.check else ()
    if arguments.check:
        results = looked_at_again(arguments.bin, results, timed)
    wrong = [text for text in mistakes(results) if not text.startswith(timed)] if timed else list(
        mistakes(results))
    if not arguments.check:
        DOCUMENT.write_text(TEXT + "\n".join(rows(results)) + "\n", encoding="utf-8")
    else:
        known = DOCUMENT.read_text(encoding="utf-8").splitlines()
        wrong += [f"not in the document: {row}" for row in rows(results, timed)
                  if row not in known]
    print("\n".join(wrong), file=sys.stderr, end="\n" if wrong else "")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

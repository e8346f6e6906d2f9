#!/usr/bin/env python3
"""Runs `qibosl stats` twice into one directory, as two processes of a product sharing their
report files, and reads the files back with the csv module: headers, row counts, labels and the
events counted."""
import csv
import re
import subprocess
import sys
import tempfile
from pathlib import Path

qibosl = sys.argv[1]
failures = []


def check(condition, text):
    if not condition:
        failures.append(text)


with tempfile.TemporaryDirectory() as tmp:
    for run in (1, 2):
        result = subprocess.run([qibosl, "stats", "-counters=A,B", "-events=50", f"-dir={tmp}"],
                                capture_output=True, text=True, timeout=120)
        check(result.returncode == 0, f"run {run}: status {result.returncode}: {result.stderr}")
        check(f"{tmp}/statistics_hour.csv" in result.stdout, f"run {run}: where the files went: {result.stdout}")
    bad = subprocess.run([qibosl, "stats", "-events=many"], capture_output=True, text=True, timeout=60)
    check(bad.returncode == 2, f"bad -events: status {bad.returncode}")

    header = ["Time", "A(Count)", "A(Duration)", "B(Count)", "B(Duration)"]
    label = {"hour": r"\d{4}/\d{1,2}/\d{1,2} 23:(\d{1,2})",
             "day": r"\d{4}/\d{1,2}/\d{1,2} (\d{1,2}):00",
             "month": r"\d{4}/\d{1,2}/(\d{1,2})"}
    rows = {"hour": 60, "day": 24, "month": 31}
    first = {"hour": 0, "day": 0, "month": 1}
    for kind in ("hour", "day", "month"):
        with open(Path(tmp) / f"statistics_{kind}.csv", newline="") as f:
            table = list(csv.reader(f))
        n = rows[kind]
        check(len(table) == 2 * (n + 1), f"{kind}: {len(table)} lines, not two reports of {n} rows")
        for start in (0, n + 1):
            report = table[start:start + n + 1]
            check(report[0] == header, f"{kind}: header {report[0]}")
            slots = [re.fullmatch(label[kind], r[0]) for r in report[1:]]
            check(all(slots) and [int(m.group(1)) for m in slots] == list(range(first[kind], first[kind] + n)),
                  f"{kind}: labels {[r[0] for r in report[1:4]]}...")
            check(all(len(r) == 5 for r in report[1:]), f"{kind}: a row without 5 fields")
            counts = sum(int(r[1]) + int(r[3]) for r in report[1:])
            check(counts == 50, f"{kind}: {counts} events, not 50")

for failure in failures:
    print("FAIL", failure)
sys.exit(1 if failures else 0)

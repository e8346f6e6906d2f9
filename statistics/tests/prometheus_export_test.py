#!/usr/bin/env python3
"""The Prometheus file of `qibosl stats`, read back through Debian's prometheus-node-exporter
started on a free loopback port with only its textfile collector."""
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

EXPORTER = "/usr/bin/prometheus-node-exporter"
qibosl = sys.argv[1]

with tempfile.TemporaryDirectory() as tmp:
    run = subprocess.run([qibosl, "stats", "-counters=req/s,req s", "-events=51", f"-dir={tmp}", f"-prometheus={tmp}"],
                         capture_output=True, text=True, timeout=120)
    if run.returncode != 0:
        sys.exit(f"FAIL qibosl stats: status {run.returncode}: {run.stderr}")
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        port = s.getsockname()[1]
    exporter = subprocess.Popen([EXPORTER, f"--web.listen-address=127.0.0.1:{port}", "--collector.disable-defaults",
                                 "--collector.textfile", f"--collector.textfile.directory={tmp}"],
                                stderr=subprocess.DEVNULL)
    metrics = ""
    try:
        for _ in range(100):
            time.sleep(0.1)
            try:
                metrics = urllib.request.urlopen(f"http://127.0.0.1:{port}/metrics", timeout=5).read().decode()
                break
            except OSError:
                pass
    finally:
        exporter.terminate()
        exporter.wait()

values = {}
for line in metrics.splitlines():
    if line and not line.startswith("#"):
        name, value = line.rsplit(" ", 1)
        values[name] = float(value)
# Events alternate between the two counters: 26 and 25; the values are (i * 37) % 1000.
expected = {
    "qib_req_s_events_total": 26, "qib_req_s_2_events_total": 25,
    "qib_req_s_sum_total": sum((i * 37) % 1000 for i in range(0, 51, 2)),
    "qib_req_s_2_sum_total": sum((i * 37) % 1000 for i in range(1, 51, 2)),
    "qib_stats_runs": 1, "node_textfile_scrape_error": 0,
}
failures = [f"{name} = {values.get(name)}, not {value}" for name, value in expected.items() if values.get(name) != value]
if "# TYPE qib_stats_runs gauge" not in metrics:
    failures.append("qib_stats_runs is not a gauge")
for failure in failures:
    print("FAIL", failure)
if failures:
    print(metrics)
sys.exit(1 if failures else 0)

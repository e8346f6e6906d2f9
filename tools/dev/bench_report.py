#!/usr/bin/env python3
"""bench_report.py RESULTS_DIR TARGETS REPORT.md: the benchmark report.

Reads the Google Benchmark JSON files of RESULTS_DIR (one per benchmark binary), groups the
benchmarks named "group/impl[/arg]", and writes one table: the hot path, our median ("osl"), each
peer's median, the ratio of ours to that peer (below 1: ours is faster) and the target an issue
named for it, from TARGETS. A row whose target is missed says so, with the note of TARGETS that
explains why and what would close it. Also prints the table, so that a run shows it at once.

TARGETS has one line per compared pair: GROUP PEER TARGET NOTE..., where TARGET is "<=1.2"
(ratio at most 1.2), "<1" (ahead of the peer) or "-" (reported, no target).
"""
import json
import platform
import re
import subprocess
import sys
from collections import defaultdict
from datetime import datetime, timezone
from pathlib import Path


def read_results(results_dir):
    groups, context, errors = defaultdict(dict), {}, {}
    for path in sorted(Path(results_dir).glob('*.json')):
        data = json.loads(path.read_text())
        context = data.get('context', context)
        for b in data['benchmarks']:
            if b.get('error_occurred'):
                parts = b.get('run_name', b['name']).split('/')
                group = '/'.join([parts[0]] + parts[2:])
                errors[(group, parts[1] if len(parts) > 1 else '')] = b.get('error_message', 'error')
                continue
            if b.get('aggregate_name', 'median') != 'median':
                continue
            parts = b.get('run_name', b['name']).split('/')
            if len(parts) < 2:
                continue
            group = '/'.join([parts[0]] + parts[2:])
            groups[group][parts[1]] = (b['real_time'], b['time_unit'])
    return groups, context, errors


def read_targets(path):
    targets = {}
    for line in Path(path).read_text().splitlines():
        if not line.strip() or line.startswith('#'):
            continue
        group, peer, target, *note = line.split(None, 3)
        targets[(group, peer)] = (target, note[0] if note else '')
    return targets


def meets(ratio, target):
    m = re.fullmatch(r'(<=|<)([0-9.]+)', target)
    if not m:
        return None
    bound = float(m.group(2))
    return ratio <= bound if m.group(1) == '<=' else ratio < bound


def fmt(t, unit):
    return f'{t:.3g} {unit}'


def machine():
    cpu = platform.processor() or platform.machine()
    try:
        for line in subprocess.run(['lscpu'], capture_output=True, text=True).stdout.splitlines():
            if line.startswith('Model name:'):
                cpu = line.split(':', 1)[1].strip()
    except OSError:
        pass
    try:
        load = Path('/proc/loadavg').read_text().split()[0]
    except OSError:
        load = '?'
    return cpu, load


def main(results_dir, targets_path, report_path):
    groups, context, errors = read_results(results_dir)
    targets = read_targets(targets_path)
    rows, missed = [], 0
    for group, impls in sorted(groups.items()):
        if 'osl' not in impls:
            continue
        ours, unit = impls['osl']
        for peer, (t, peer_unit) in sorted(impls.items()):
            if peer == 'osl' or t <= 0:
                continue
            ratio = ours / t
            target, note = targets.get((group, peer), ('-', ''))
            ok = meets(ratio, target)
            verdict = '' if ok is None else ('met' if ok else 'MISSED')
            failed = errors.get((group, 'osl')) or errors.get((group, peer))
            if failed:
                ok, verdict = False, 'ERROR: ' + failed
            missed += ok is False
            rows.append((group, fmt(ours, unit), peer, fmt(t, peer_unit), f'{ratio:.2f}', target,
                         verdict + (': ' + note if note and ok is False else '')))
    cpu, load = machine()
    when = context.get('date') or datetime.now(timezone.utc).isoformat(timespec='minutes')
    lines = [
        '# Benchmark report',
        '',
        'Written by `make bench` (tools/dev/bench_report.py) from the JSON files in `bench/results/`.',
        'Medians of wall time over the repetitions; the ratio is ours over the peer (below 1: ours',
        'is faster). Targets come from `bench/targets.txt`.',
        '',
        f'- run: {when}',
        f'- machine: {cpu}, {context.get("num_cpus", "?")} CPUs, load average {load} at the end'
        f' of the run, {platform.system()} {platform.release()}',
        f'- build: {context.get("library_build_type", "?")} Google Benchmark library',
        '',
        '| hot path | ours | peer | peer\'s | ratio | target | verdict |',
        '|---|---|---|---|---|---|---|',
    ]
    lines += ['| ' + ' | '.join(r) + ' |' for r in rows]
    lines += ['', f'{len(rows)} comparisons, {missed} targets missed.', '']
    Path(report_path).write_text('\n'.join(lines))
    for r in rows:
        print(f'  {r[0]:<40} osl {r[1]:>12}  {r[2]:>10} {r[3]:>12}  ratio {r[4]:>5}  {r[5]:>6} {r[6]}')
    print(f'{report_path}: {len(rows)} comparisons, {missed} targets missed')
    return 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:4]))

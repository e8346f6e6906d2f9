#!/usr/bin/env python3
"""Prints, per benchmark group "group/impl", each implementation's median time and the ratio of
ours ("osl") to each peer. A ratio below 1 means ours is faster."""
import json
import sys
from collections import defaultdict


def main(path):
    with open(path) as f:
        data = json.load(f)
    groups = defaultdict(dict)
    for b in data["benchmarks"]:
        if b.get("aggregate_name", "median") != "median":
            continue
        name = b.get("run_name", b["name"]).split("/")
        if len(name) < 2:
            continue
        # "group/impl" or "group/impl/arg": the implementation is the second part.
        group = "/".join([name[0]] + name[2:])
        groups[group][name[1]] = b["real_time"], b["time_unit"]
    for group, impls in groups.items():
        print(f"  {group}")
        for impl, (t, unit) in sorted(impls.items()):
            print(f"    {impl:>12}: {t:12.3f} {unit}")
        if "osl" in impls:
            ours = impls["osl"][0]
            for impl, (t, _) in sorted(impls.items()):
                if impl != "osl" and t > 0:
                    print(f"    osl / {impl}: {ours / t:.2f}")


if __name__ == "__main__":
    main(sys.argv[1])

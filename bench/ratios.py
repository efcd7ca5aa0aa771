#!/usr/bin/env python3
"""Reads the JSON output of vso_bench and prints each benchmark's median beside that of its limit."""
import json
import sys

medians = {
    run["run_name"]: run["cpu_time"]
    for run in json.load(sys.stdin)["benchmarks"]
    if run.get("aggregate_name") == "median"
}
print(f"{'benchmark':36} {'median, ns':>12} {'limit, ns':>12} {'ratio':>6}")
for name in sorted(medians):
    limit = medians.get(name.split("_")[0] + "_limit")
    if limit is None or name.endswith("_limit"):
        continue
    print(f"{name:36} {medians[name]:12.2f} {limit:12.2f} {medians[name] / limit:6.2f}")

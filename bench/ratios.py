#!/usr/bin/env python3
"""Reads the JSON output of vso_bench and prints each benchmark's median beside that of its limit."""
import json
import re
import sys

# The processor's time, but for work that several threads share: that goes by the clock.
medians = {
    run["run_name"]: run["real_time" if run["run_name"].endswith("/real_time") else "cpu_time"]
    for run in json.load(sys.stdin)["benchmarks"]
    if run.get("aggregate_name") == "median"
}
print(f"{'benchmark':36} {'median, ns':>12} {'limit, ns':>12} {'ratio':>6}")
for name in sorted(medians):
    base, variant, arguments = re.fullmatch(r"([^_/]+)(_[^/]*)?(/.*)?", name).groups()
    limit = medians.get(base + "_limit" + (arguments or ""))
    if limit is None or variant == "_limit":
        continue
    print(f"{name:36} {medians[name]:12.2f} {limit:12.2f} {medians[name] / limit:6.2f}")

#!/usr/bin/env python3
"""Times, as whole processes, how long a fresh start takes to have a cache file
ready for its first lookup, against md5sum reading the same file once.

    ready_vs_md5sum.py MEASURE_PROGRAM CACHE_FILE WORD

MEASURE_PROGRAM is lexicorn-measure-load-rss. The first run removes the index
beside the file (a first start after an import: the whole file is read,
checked and indexed); the next three use the index it wrote. md5sum runs
three times too; medians count. Prints "key value" lines.
"""
import subprocess
import sys
import time


def timed(command):
    start = time.perf_counter()
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True)
    seconds = time.perf_counter() - start
    values = dict(line.split(" ", 1) for line in done.stdout.splitlines() if " " in line)
    return seconds, values


def median(values):
    return sorted(values)[len(values) // 2]


program, cache, word = sys.argv[1:4]
first, first_values = timed([program, cache, word, "--without-index"])
ready = [timed([program, cache, word]) for _ in range(3)]
md5sum = [timed(["md5sum", cache])[0] for _ in range(3)]

print("file_mb", first_values["file_mb"])
print("first_start_s %.3f" % first)
print("first_start_peak_rss_over_file", first_values["peak_rss_over_file"])
print("ready_s %.3f" % median([seconds for seconds, _ in ready]))
print("ready_runs_s", ", ".join("%.3f" % seconds for seconds, _ in ready))
print("ready_peak_rss_mb", max(float(values["peak_rss_mb"]) for _, values in ready))
print("ready_peak_rss_over_file", max(float(values["peak_rss_over_file"]) for _, values in ready))
print("md5sum_s %.3f" % median(md5sum))

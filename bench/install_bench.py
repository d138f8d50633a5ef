#!/usr/bin/env python3
"""End-to-end install bench: `ord8kit install` (kit load plus pass) against the tools a
user would run instead on the same tree, in the same run: `tar -xzf` and `bsdtar -xf`
of a .tar.gz, and `cp -a` of the tree itself. Also the second install over the first
(everything skipped), a failed install (its last file blocked, so the whole pass is
rolled back), and the peak RSS and peak heap of one install. Timing only; see
bench/README.md for the table and how to read it."""

import argparse
import os
import random
import re
import shutil
import statistics
import subprocess
import sys
import time

WORDS = ("template config value path proxy service report monthly weekly summary the of "
         "and to in is for on with as by at from user name host port timeout retry").split()
FILE_TIME = 1600000000


def text_like(rng, size):
    out, length = [], 0
    while length < size:
        word = rng.choice(WORDS)
        out.append(word)
        length += len(word) + 1
    return (" ".join(out) + "\n").encode()[:size]


# Half the files text-like, half incompressible; every byte fixed by the seed.
def make_small_tree(root, files, folders, rng):
    for i in range(files):
        folder = os.path.join(root, "d%03d" % (i % folders))
        os.makedirs(folder, exist_ok=True)
        size = rng.randint(1024, 16 * 1024)
        data = text_like(rng, size) if i % 2 == 0 else rng.randbytes(size)
        write(os.path.join(folder, "f%05d.%s" % (i, "txt" if i % 2 == 0 else "bin")), data)


def make_large_tree(root, mib, rng):
    count = 8
    block = text_like(rng, 1 << 20)
    for i in range(count):
        size = (mib << 20) // count
        path = os.path.join(root, "big", "part%02d.%s" % (i, "txt" if i % 2 == 0 else "bin"))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as out:
            for _ in range(size >> 20):  # the text block repeats far beyond deflate's window
                out.write(block if i % 2 == 0 else rng.randbytes(1 << 20))
        os.utime(path, (FILE_TIME, FILE_TIME))


def write(path, data):
    with open(path, "wb") as out:
        out.write(data)
    os.utime(path, (FILE_TIME, FILE_TIME))


def run(command, env=None, check=True):
    result = subprocess.run(command, env=env, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if check and result.returncode != 0:
        sys.exit("failed (%d): %s\n%s" % (result.returncode, " ".join(command),
                                          result.stderr.decode(errors="replace")))
    return result


def timed(command, env=None, check=True):
    subprocess.run(["sync"])
    start = time.perf_counter()
    result = run(command, env, check)
    return time.perf_counter() - start, result


def bench_kit(name, tree, work, args, env):
    kit, tarball = os.path.join(work, name + ".dkz"), os.path.join(work, name + ".tar.gz")
    run([args.ord8kit, "pack", tree, "-o", kit, "--product", "en:Bench:Tavri:"])
    run(["tar", "-czf", tarball, "-C", tree, "."])
    files = sum(len(f) for _, _, f in os.walk(tree))
    last = sorted(os.path.relpath(os.path.join(d, f), tree) for d, _, fs in os.walk(tree)
                  for f in fs)[-1]
    print("%s: %d files, %.1f MiB, kit %.1f MiB, tar.gz %.1f MiB" % (
        name, files, sum(os.path.getsize(os.path.join(d, f)) for d, _, fs in os.walk(tree)
                         for f in fs) / 2**20, os.path.getsize(kit) / 2**20,
        os.path.getsize(tarball) / 2**20), flush=True)
    tools = {
        "ord8kit install": lambda out: [args.ord8kit, "install", kit, out, "--no-remember"],
        "tar -xzf": lambda out: ["sh", "-c", 'mkdir "$1" && tar -xzf "$2" -C "$1"', "-", out,
                                 tarball],
        "bsdtar -xf": lambda out: ["sh", "-c", 'mkdir "$1" && bsdtar -xf "$2" -C "$1"', "-", out,
                                   tarball],
        "cp -a": lambda out: ["cp", "-a", tree, out],
    }
    times = {tool: [] for tool in list(tools) + ["install again", "failed install"]}
    trash = os.path.join(work, "trash")
    os.makedirs(trash, exist_ok=True)
    for round_ in range(args.rounds):
        out = os.path.join(work, "%s-round%d" % (name, round_))
        os.makedirs(out)
        order = list(tools)[round_ % len(tools):] + list(tools)[:round_ % len(tools)]
        for tool in order:
            times[tool].append(timed(tools[tool](os.path.join(out, tool.split()[0])), env)[0])
        times["install again"].append(timed(tools["ord8kit install"](
            os.path.join(out, "ord8kit")), env)[0])
        blocked = os.path.join(out, "failed", last)
        os.makedirs(blocked)  # a folder where the last file goes: the pass rolls back at the end
        seconds, result = timed(tools["ord8kit install"](os.path.join(out, "failed")), env, False)
        assert result.returncode == 1, result.stderr
        times["failed install"].append(seconds)
        print("  round %d: " % round_ + ", ".join(
            "%s %.3f s" % (tool, times[tool][-1]) for tool in times), flush=True)
        os.rename(out, os.path.join(trash, os.path.basename(out)))  # deleted after the runs
    report(name, times)
    memory(kit, work, env, args)


def report(name, times):
    ours = times["ord8kit install"]
    print("%s medians:" % name)
    for tool, values in times.items():
        line = "  %-16s %.3f s" % (tool, statistics.median(values))
        if tool in ("tar -xzf", "bsdtar -xf", "cp -a"):
            ratios = [a / b for a, b in zip(ours, values)]
            line += "   install/%s per round: %s, median %.2fx" % (
                tool, " ".join("%.2f" % r for r in ratios), statistics.median(ratios))
        print(line)


def memory(kit, work, env, args):
    out = os.path.join(work, "memory")
    result = run(["/usr/bin/time", "-v", args.ord8kit, "install", kit, out + "-rss",
                  "--no-remember"], env)
    rss = int(re.search(rb"Maximum resident set size \(kbytes\): (\d+)", result.stderr).group(1))
    profile = os.path.join(work, "heap")
    run(["heaptrack", "-o", profile, args.ord8kit, "install", kit, out + "-heap",
         "--no-remember"], env)
    printed = run(["heaptrack_print", profile + ".zst"]).stdout.decode(errors="replace")
    peak = re.search(r"peak heap memory consumption: (\S+)", printed).group(1)
    print("  peak RSS %.1f MiB (kit %.1f MiB), peak heap %s" % (
        rss / 1024, os.path.getsize(kit) / 2**20, peak), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ord8kit", default="build/tools/ord8kit")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--small-files", type=int, default=10000)
    parser.add_argument("--large-mib", type=int, default=400)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--dir", default=".")
    args = parser.parse_args()
    args.ord8kit = os.path.abspath(args.ord8kit)
    work = os.path.abspath(os.path.join(args.dir, "ord8-install-bench-%d" % os.getpid()))
    os.makedirs(os.path.join(work, "home"))
    os.makedirs(os.path.join(work, "tmp"))
    env = dict(os.environ, HOME=os.path.join(work, "home"), TMPDIR=os.path.join(work, "tmp"))
    print("seed %d, %d rounds, in %s" % (args.seed, args.rounds, work), flush=True)
    rng = random.Random(args.seed)
    try:
        if args.small_files > 0:
            make_small_tree(os.path.join(work, "small"), args.small_files, 200, rng)
            bench_kit("small", os.path.join(work, "small"), work, args, env)
        if args.large_mib > 0:
            make_large_tree(os.path.join(work, "large"), args.large_mib, rng)
            bench_kit("large", os.path.join(work, "large"), work, args, env)
    finally:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    main()

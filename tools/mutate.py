#!/usr/bin/env python3
"""Mutation check of the tab code (Source/) and the shared tab code (SharedSource/).

Applies one small change at a time to a source file (a call statement
deleted, a condition negated, a number or a text changed, two adjacent
statements swapped), rebuilds incrementally in its own build folder, runs the
test programs that cover the file and lists the changes no test notices.

  tools/mutate.py [FILE...] [--max N] [--seed S] [--timeout SECONDS]
                  [--report FILE] [--build DIR] [--kinds K,...] [--list]

Run by hand, not in CI: a mutant costs a compile, a link and the test runs.
Known equivalent mutants (changes no test can tell apart, with the reason)
are listed in tools/mutate-equivalents.txt, one a line:

  FILE<TAB>LINE<TAB>MUTATION<TAB>WHY

where MUTATION is the description the report prints. They are not built and
are reported on their own. The source is restored after every mutant, also
on Ctrl-C; a run that was killed outright restores it at the next start from
the copy it keeps beside the file (FILE.mutate-orig).
"""

import argparse
import fcntl
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DEFAULT_FILES = ["SharedSource", "Source"]
EQUIVALENTS = os.path.join(ROOT, "tools", "mutate-equivalents.txt")
KINDS = ["delete-call", "negate", "constant", "string", "swap"]

SHARED_TESTS = ["tst_basetabpluginwidget", "tst_featuremanager", "tst_pluginfeatureobserver"]
WIDGET_TESTS = [
    "tst_widgetconstruction",
    "tst_triggerinput",
    "tst_presets",
    "tst_outputs",
    "tst_useroutputs",
    "tst_synchronisation",
    "tst_presetsignals",
    "tst_iotriggerwidget_smoke",
    "tst_endtoend",
]
PLUGIN_TESTS = ["tst_tabextensionplugin"]

# Which test programs cover a file, the likeliest killer first: the runs of a
# mutant stop at the first failure.
TESTS_FOR = {
    "SharedSource/BaseTabPluginWidget.cpp": ["tst_basetabpluginwidget"] + WIDGET_TESTS + PLUGIN_TESTS,
    "SharedSource/FeatureManager.cpp": ["tst_featuremanager"] + WIDGET_TESTS + ["tst_basetabpluginwidget"],
    "SharedSource/PluginFeatureObserver.cpp": ["tst_pluginfeatureobserver", "tst_basetabpluginwidget"] + WIDGET_TESTS,
    "SharedSource/FeatureText.h": SHARED_TESTS + WIDGET_TESTS,
    "Source/IOTriggerWidget.cpp": ["tst_widgetconstruction", "tst_iotriggerwidget_smoke"] + WIDGET_TESTS + PLUGIN_TESTS,
    "Source/IOTriggerWidgetTriggerInput.cpp": ["tst_triggerinput", "tst_widgetconstruction"] + WIDGET_TESTS,
    "Source/IOTriggerWidgetPresets.cpp": ["tst_presets", "tst_presetsignals"] + WIDGET_TESTS,
    "Source/IOTriggerWidgetOutputs.cpp": ["tst_outputs", "tst_useroutputs"] + WIDGET_TESTS,
    "Source/IOTriggerWidgetSync.cpp": ["tst_synchronisation"] + WIDGET_TESTS,
    "Source/IOTriggerWidgetHelpers.h": WIDGET_TESTS,
    "Source/TabExtensionPlugin.cpp": PLUGIN_TESTS,
    "Source/PluginEntryPoints.cpp": PLUGIN_TESTS,
    "SharedSource/TabPluginShell.h": PLUGIN_TESTS + WIDGET_TESTS,
    "SharedSource/TabPluginShell.cpp": PLUGIN_TESTS,
}


def tests_for(path):
    tests = TESTS_FOR.get(path)
    if tests is None:
        tests = (SHARED_TESTS if path.startswith("SharedSource/") else []) + WIDGET_TESTS + PLUGIN_TESTS
    seen = []
    for test in tests:
        if test not in seen:
            seen.append(test)
    return seen


# ---------------------------------------------------------------- mutants


class Mutant:
    def __init__(self, path, line, kind, description, apply):
        self.path = path  # relative to ROOT
        self.line = line  # from 1
        self.kind = kind
        self.description = description
        self.apply = apply  # lines -> mutated lines

    def key(self):
        return (self.path, self.line, self.description)

    def __str__(self):
        return "%s:%d: %s" % (self.path, self.line, self.description)


def code_only(lines):
    """Each line with comments and the insides of string and character
    literals blanked (same length), and whether it is a preprocessor line."""
    result = []
    in_block = False
    for text in lines:
        out = []
        i = 0
        in_string = None
        while i < len(text):
            c = text[i]
            if in_block:
                if text.startswith("*/", i):
                    in_block = False
                    out.append("  ")
                    i += 2
                    continue
                out.append(" ")
                i += 1
                continue
            if in_string:
                if c == "\\":
                    out.append("  "[: len(text[i : i + 2])])
                    i += 2
                    continue
                if c == in_string:
                    in_string = None
                    out.append(c)
                else:
                    out.append(" ")
                i += 1
                continue
            if text.startswith("//", i):
                out.append(" " * (len(text) - i))
                break
            if text.startswith("/*", i):
                in_block = True
                out.append("  ")
                i += 2
                continue
            if c in "\"'":
                in_string = c
            out.append(c)
            i += 1
        result.append("".join(out))
    return result


def matching_paren(code, open_index):
    depth = 0
    for i in range(open_index, len(code)):
        if code[i] == "(":
            depth += 1
        elif code[i] == ")":
            depth -= 1
            if depth == 0:
                return i
    return -1


STATEMENT_END = re.compile(r"[;{}]\s*$")
CALL_STATEMENT = re.compile(r"^\s*(?:[A-Za-z_][\w:]*(?:\s*(?:\.|->)\s*[A-Za-z_]\w*)*|emit\s+[\w:]+(?:->\w+)?)\s*\(.*\)\s*;\s*$")
KEYWORDS = ("return", "if", "else", "for", "while", "switch", "case", "break", "continue", "delete", "throw", "do")
NUMBER = re.compile(r"(?<![\w.])(\d+\.\d+|\d+)(?![\w.])")
STRING = re.compile(r'"((?:[^"\\]|\\.)*)"')


def starts_statement(code, index):
    """True when the line at index begins a statement of its own."""
    j = index - 1
    while j >= 0 and code[j].strip() == "":
        j -= 1
    if j < 0:
        return True
    prev = code[j].rstrip()
    return prev.endswith((";", "{", "}", ":")) or prev.lstrip().startswith("#") or bool(
        re.match(r"^\s*(else|if\s*\(.*\)|for\s*\(.*\)|while\s*\(.*\))\s*$", prev)
    )


def simple_statement(code, index):
    text = code[index]
    stripped = text.strip()
    if not stripped.endswith(";") or stripped.startswith(("#", "}")):
        return False
    if text.count("(") != text.count(")") or text.count("{") != text.count("}"):
        return False
    if not starts_statement(code, index):
        return False
    first = re.match(r"\s*(\w+)", text)
    if first and first.group(1) in ("return", "break", "continue", "case", "default", "public", "private", "protected"):
        return False
    return True


def replace_at(lines, index, start, end, new):
    text = lines[index]
    copy = list(lines)
    copy[index] = text[:start] + new + text[end:]
    return copy


def mutants_of(path, lines):
    code = code_only(lines)
    mutants = []
    depth = 0  # brace depth: only code inside functions is mutated
    for i, text in enumerate(code):
        number = i + 1
        in_function = depth >= 1
        depth += text.count("{") - text.count("}")
        stripped = text.strip()
        original = lines[i]
        if not in_function or stripped.startswith("#") or not stripped:
            continue

        # A call statement deleted (an empty statement keeps an unbraced if valid).
        if CALL_STATEMENT.match(text) and simple_statement(code, i):
            word = re.match(r"\s*(\w+)", text).group(1)
            if word not in KEYWORDS and not re.match(r"^\s*[\w:<>]+\s+\w+\s*\(", text):
                mutants.append(
                    Mutant(path, number, "delete-call", "delete call `%s`" % original.strip(),
                           lambda ls, i=i: ls[:i] + [re.match(r"\s*", ls[i]).group(0) + ";\n"] + ls[i + 1:])
                )

        # A condition negated.
        for match in re.finditer(r"\b(if|while)\s*\(", text):
            open_index = match.end() - 1
            close = matching_paren(text, open_index)
            if close < 0:
                continue
            condition = original[open_index + 1 : close]
            mutants.append(
                Mutant(path, number, "negate", "negate `%s (%s)`" % (match.group(1), condition.strip()),
                       lambda ls, i=i, o=open_index, c=close: replace_at(ls, i, o + 1, c, "!(" + ls[i][o + 1 : c] + ")"))
            )
        for match in re.finditer(r"\?", text):
            pass  # conditional expressions are left alone: their operands are hard to find by pattern

        # A constant changed.
        for match in NUMBER.finditer(text):
            value = match.group(1)
            if "." in value:
                new = repr(float(value) * 2 if float(value) != 0 else 1.0)
            else:
                new = "1" if value == "0" else ("0" if value == "1" else str(int(value) + 1))
            mutants.append(
                Mutant(path, number, "constant", "constant %s -> %s in `%s`" % (value, new, original.strip()),
                       lambda ls, i=i, s=match.start(1), e=match.end(1), n=new: replace_at(ls, i, s, e, n))
            )

        # A string literal changed (code_only blanked its inside: find it in the original).
        for match in STRING.finditer(original):
            if code[i][match.start()] != '"':
                continue
            inner = match.group(1)
            new = '"' + inner + '~"' if inner else '"~"'
            mutants.append(
                Mutant(path, number, "string", 'string "%s" -> %s' % (inner, new),
                       lambda ls, i=i, s=match.start(), e=match.end(), n=new: replace_at(ls, i, s, e, n))
            )

        # Two adjacent statements swapped.
        if i + 1 < len(code) and simple_statement(code, i) and simple_statement(code, i + 1):
            indent_a = re.match(r"\s*", text).group(0)
            indent_b = re.match(r"\s*", code[i + 1]).group(0)
            if indent_a == indent_b and original.strip() != lines[i + 1].strip():
                mutants.append(
                    Mutant(path, number, "swap", "swap `%s` with the next line `%s`" % (original.strip(), lines[i + 1].strip()),
                           lambda ls, i=i: ls[:i] + [ls[i + 1], ls[i]] + ls[i + 2:])
                )
    return mutants


# ---------------------------------------------------------------- equivalents


def read_equivalents(path):
    equivalents = {}
    if not os.path.exists(path):
        return equivalents
    with open(path, encoding="utf-8") as f:
        for number, text in enumerate(f, 1):
            text = text.rstrip("\n")
            if not text.strip() or text.startswith("#"):
                continue
            parts = text.split("\t")
            if len(parts) != 4:
                sys.exit("%s:%d: expected FILE<TAB>LINE<TAB>MUTATION<TAB>WHY" % (path, number))
            equivalents[(parts[0], int(parts[1]), parts[2])] = parts[3]
    return equivalents


# ---------------------------------------------------------------- source guard


class SourceGuard:
    """Keeps the original of the file being mutated and puts it back, also
    when the run is interrupted."""

    def __init__(self):
        self.path = None
        self.original = None

    @staticmethod
    def backup_of(path):
        return path + ".mutate-orig"

    @staticmethod
    def recover(paths):
        for path in paths:
            backup = SourceGuard.backup_of(path)
            if os.path.exists(backup):
                shutil.copyfile(backup, path)
                os.remove(backup)
                print("restored %s from an interrupted run" % path, file=sys.stderr)

    def write(self, path, text):
        if self.path != path:
            self.restore()
            with open(path, encoding="utf-8") as f:
                self.original = f.read()
            shutil.copyfile(path, self.backup_of(path))
            self.path = path
        with open(path, "w", encoding="utf-8") as f:
            f.write(text)

    def restore(self):
        if self.path is None:
            return
        with open(self.path, "w", encoding="utf-8") as f:
            f.write(self.original)
        if os.path.exists(self.backup_of(self.path)):
            os.remove(self.backup_of(self.path))
        self.path = None
        self.original = None


# ---------------------------------------------------------------- build and test


def run(command, timeout=None, cwd=None, env=None):
    """Runs command in its own process group; kills the group on timeout.
    Returns (exit code or None on timeout, output)."""
    process = subprocess.Popen(command, cwd=cwd, env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               start_new_session=True)
    try:
        output, _ = process.communicate(timeout=timeout)
        return process.returncode, output.decode("utf-8", "replace")
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        output, _ = process.communicate()
        return None, output.decode("utf-8", "replace")
    except BaseException:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        raise


def build(build_dir, targets, jobs):
    return run(["cmake", "--build", build_dir, "-j%d" % jobs, "--target"] + targets)


def test_command(build_dir, test, isolate):
    binary = os.path.join(build_dir, "bin", test)
    if not isolate:
        return [binary]
    # Loopback only: a test must never reach another address.
    return ["unshare", "--net", "sh", "-c", 'ip link set lo up && exec "$0"', binary]


def run_test(build_dir, test, timeout, isolate):
    env = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    code, output = run(test_command(build_dir, test, isolate), timeout=timeout, cwd=os.path.join(build_dir, "bin"),
                       env=env)
    return code, output


def failure_summary(output):
    failures = [line.strip() for line in output.splitlines() if line.startswith("FAIL!")]
    return failures[0][:200] if failures else ""


# ---------------------------------------------------------------- main


def collect_files(arguments):
    """Files from files and folders; FILE:FROM-TO keeps the mutants of those
    lines only. Returns the files and {file: (from, to)}."""
    files = []
    ranges = {}
    for argument in arguments or DEFAULT_FILES:
        match = re.match(r"^(.*):(\d+)-(\d+)$", argument)
        if match:
            argument = match.group(1)
            ranges[os.path.relpath(os.path.join(ROOT, argument), ROOT)] = (int(match.group(2)), int(match.group(3)))
        full = os.path.join(ROOT, argument) if not os.path.isabs(argument) else argument
        if os.path.isdir(full):
            for name in sorted(os.listdir(full)):
                if name.endswith(".cpp"):
                    files.append(os.path.relpath(os.path.join(full, name), ROOT))
        elif os.path.isfile(full):
            files.append(os.path.relpath(full, ROOT))
        else:
            sys.exit("mutate.py: no file or folder %s" % argument)
    return files, ranges


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("files", nargs="*",
                        help="source files or folders, FILE:FROM-TO for some lines (default: SharedSource/ and Source/)")
    parser.add_argument("--max", type=int, default=0, help="at most N mutants, drawn at random (default: all)")
    parser.add_argument("--seed", type=int, default=1, help="seed of the draw (default 1)")
    parser.add_argument("--timeout", type=float, default=120, help="seconds per test program run; a hung test is killed")
    parser.add_argument("--report", default=None, help="report file (default: BUILD/mutate-report.txt)")
    parser.add_argument("--build", default=os.path.join(ROOT, "build-mutate"), help="build folder (default build-mutate)")
    parser.add_argument("--kinds", default=",".join(KINDS), help="mutation kinds, comma-separated: " + ", ".join(KINDS))
    parser.add_argument("--jobs", type=int, default=2, help="build jobs (default 2)")
    parser.add_argument("--list", action="store_true", help="only list the mutants")
    parser.add_argument("--no-unshare", action="store_true", help="run tests without a loopback-only namespace")
    args = parser.parse_args()

    kinds = [k for k in args.kinds.split(",") if k]
    for kind in kinds:
        if kind not in KINDS:
            sys.exit("mutate.py: unknown kind %s" % kind)
    files, ranges = collect_files(args.files)
    equivalents = read_equivalents(EQUIVALENTS)
    if not args.list:
        # One run at a time: another run's mutated file is not ours to restore.
        os.makedirs(args.build, exist_ok=True)
        lock = open(os.path.join(args.build, "mutate.lock"), "w")
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            sys.exit("mutate.py: another run is using %s" % args.build)
        SourceGuard.recover([os.path.join(ROOT, f) for f in collect_files(DEFAULT_FILES)[0] + files])

    mutants = []
    for path in files:
        with open(os.path.join(ROOT, path), encoding="utf-8") as f:
            lines = f.readlines()
        first, last = ranges.get(path, (1, len(lines)))
        mutants += [m for m in mutants_of(path, lines) if m.kind in kinds and first <= m.line <= last]
    known = [m for m in mutants if m.key() in equivalents]
    candidates = [m for m in mutants if m.key() not in equivalents]
    if args.max and len(candidates) > args.max:
        candidates = random.Random(args.seed).sample(candidates, args.max)
    # File by file, so that one object file is rebuilt between mutants.
    candidates.sort(key=lambda m: (m.path, m.line, m.description))

    if args.list:
        for m in candidates:
            print(m)
        for m in known:
            print("%s [equivalent: %s]" % (m, equivalents[m.key()]))
        print("%d mutants, %d known equivalent" % (len(candidates), len(known)))
        return 0

    isolate = not args.no_unshare
    report_path = args.report or os.path.join(args.build, "mutate-report.txt")
    os.makedirs(os.path.dirname(os.path.abspath(report_path)), exist_ok=True)
    if not os.path.exists(os.path.join(args.build, "CMakeCache.txt")):
        code, output = run(["cmake", "-S", ROOT, "-B", args.build, "-DCMAKE_C_COMPILER_LAUNCHER=ccache",
                            "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"])
        if code != 0:
            sys.exit(output)
    all_tests = sorted({t for m in candidates for t in tests_for(m.path)})
    if not all_tests:
        print("nothing to do")
        return 0
    code, output = build(args.build, all_tests, args.jobs)
    if code != 0:
        sys.exit("mutate.py: the unmutated build fails:\n" + output[-3000:])
    # The unmutated tests must pass, or nothing can be learnt.
    for test in all_tests:
        code, output = run_test(args.build, test, args.timeout, isolate)
        if code != 0:
            sys.exit("mutate.py: %s fails without a mutation:\n%s" % (test, output[-3000:]))

    guard = SourceGuard()
    results = []
    stop = {"now": False}

    def on_signal(signum, frame):
        raise KeyboardInterrupt()

    signal.signal(signal.SIGTERM, on_signal)
    started = time.time()
    try:
        for index, mutant in enumerate(candidates, 1):
            full = os.path.join(ROOT, mutant.path)
            with open(full, encoding="utf-8") as f:
                lines = f.readlines() if guard.path != full else guard.original.splitlines(True)
            guard.write(full, "".join(mutant.apply(lines)))
            status, detail = "survived", ""
            # Each program is linked just before it runs: a mutant that the
            # first program kills costs one link.
            for test in tests_for(mutant.path):
                code, output = build(args.build, [test], args.jobs)
                if code != 0:
                    status, detail = "stillborn", "does not compile"
                    break
                code, output = run_test(args.build, test, args.timeout, isolate)
                if code is None:
                    status, detail = "killed", "%s hung (killed after %g s)" % (test, args.timeout)
                    break
                if code != 0:
                    status, detail = "killed", "%s: %s" % (test, failure_summary(output) or "exit %d" % code)
                    break
            results.append((mutant, status, detail))
            print("[%d/%d %ds] %s: %s %s" % (index, len(candidates), time.time() - started, mutant, status, detail),
                  flush=True)
    except KeyboardInterrupt:
        stop["now"] = True
        print("interrupted; restoring the source", file=sys.stderr)
    finally:
        guard.restore()

    # The restored sources are rebuilt, so that the folder is left unmutated.
    if results:
        build(args.build, sorted({t for m, _, _ in results for t in tests_for(m.path)}), args.jobs)

    killed = [r for r in results if r[1] == "killed"]
    survived = [r for r in results if r[1] == "survived"]
    stillborn = [r for r in results if r[1] == "stillborn"]
    with open(report_path, "w", encoding="utf-8") as report:
        report.write("Mutation check of %s, seed %d%s\n" % (" ".join(files), args.seed,
                                                             ", interrupted" if stop["now"] else ""))
        report.write("mutants run: %d; killed: %d; survived: %d; did not compile: %d; "
                     "known equivalent (not run): %d\n\n" % (len(results), len(killed), len(survived),
                                                              len(stillborn), len(known)))
        report.write("Survivors (no test failed):\n")
        for mutant, _, _ in survived:
            report.write("  %s\n" % mutant)
        report.write("\nKnown equivalent:\n")
        for mutant in known:
            report.write("  %s\n      %s\n" % (mutant, equivalents[mutant.key()]))
        report.write("\nKilled:\n")
        for mutant, _, detail in killed:
            report.write("  %s\n      %s\n" % (mutant, detail))
        report.write("\nDid not compile:\n")
        for mutant, _, _ in stillborn:
            report.write("  %s\n" % mutant)
    print("%d mutants: %d killed, %d survived, %d did not compile, %d known equivalent; report: %s"
          % (len(results), len(killed), len(survived), len(stillborn), len(known), report_path))
    return 130 if stop["now"] else 0


if __name__ == "__main__":
    sys.exit(main())

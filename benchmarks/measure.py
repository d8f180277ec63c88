# SPDX-License-Identifier: MIT
"""Measures vardo against the floor that SQLite and Qt set, vardo-report against vardo, and the curve fits.

The upgrades run against the sqlite3 shell, which executes the same statements; the run in which nothing
is left to do, against the least Qt program that writes the versions again. A rehearsal runs against two copies
and the upgrade of one of them, a comparison against the upgrade. Runs alternate, each on a
fresh copy of the files that is on the disk and in the page cache. A run of its own measures the memory, the
journal and the space on the disk, and checks that both programs make the same database.
Prints a table and writes benchmarks/results.md and benchmarks/results.svg. Takes a quarter of an hour and
6 GB on the disk. Called by scripts/benchmark, which builds the programs.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/release"
WORK = ROOT / "build/benchmark"
VARDO = BUILD / "coagulation/vardo/vardo"
VARDO_REPORT = BUILD / "coagulation/vardo/vardo-report"
SHELL = ["sqlite3", "-batch", "-bail", "-init", "/dev/null"]
SEED = 1
MIB = 1024 * 1024


def make(path, script, **parameters):
    """Makes a database by a script of benchmarks/."""
    commands = [part for name, value in parameters.items()
                for part in ("-cmd", f".param set :{name} {value}")]
    path.unlink(missing_ok=True)
    subprocess.run([*SHELL, *commands, path, f".read benchmarks/{script}"], cwd=ROOT, check=True)


def shell(database, command):
    return [*SHELL, WORK / "run" / database, command]


def copy_fresh(originals):
    """Copies the files into the folder of the run. What a run syncs is its own work alone."""
    folder = WORK / "run"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    for original in originals:
        shutil.copy(original, folder)
        with open(folder / original.name, "rb") as copy:
            os.fsync(copy)
    return folder


def spawn(command, folder):
    return subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def timed(command, originals):
    """Returns the seconds of one run, and those of them on a processor."""
    folder = copy_fresh(originals)
    start = time.perf_counter()
    _, status, usage = os.wait4(spawn(command, folder).pid, 0)
    seconds = time.perf_counter() - start
    if status != 0:
        sys.exit(f"{command[0]} failed: {status}")
    return seconds, usage.ru_utime + usage.ru_stime


def count_instructions(command, originals):
    """Returns how many instructions one run executes. Valgrind counts them also where the processor's
    own counters cannot be read, as in most virtual machines."""
    log = WORK / "instructions"
    status = spawn(["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null",
                    f"--log-file={log}", *command], copy_fresh(originals)).wait()
    if status != 0:
        sys.exit(f"{command[0]} ended with {status} in valgrind")
    return int(re.search(r"I +refs: +([0-9,]+)", log.read_text())[1].replace(",", ""))


class Observation:
    """What one run used, beside time."""

    def __init__(self, command, originals):
        folder = copy_fresh(originals)
        self.size = self.used(folder)
        self.library = None
        self.peak = self.size
        journals = {}  # held open: the size stays readable when SQLite has removed the file

        # GNU time, since a child of this script begins with the script's own memory
        timer = spawn(["time", "--format=%M", f"--output={WORK / 'memory'}", *command], folder)
        children = pathlib.Path(f"/proc/{timer.pid}/task/{timer.pid}/children")
        while timer.poll() is None:
            for journal in folder.glob("*-journal"):
                if journal not in journals:
                    journals[journal] = open(journal, "rb")
            for child in self.processes(children):
                self.peak = max(self.peak, self.used(folder) + self.temporary(child))
                self.library = self.library or self.sqlite_library(child)
            time.sleep(0.002)
        if timer.returncode != 0:
            sys.exit(f"{command[0]} ended with {timer.returncode}")

        self.memory = int((WORK / "memory").read_text()) * 1024
        self.journal = max((os.fstat(journal.fileno()).st_size for journal in journals.values()),
                           default=0)
        for journal in journals.values():
            journal.close()

    @staticmethod
    def processes(children):
        try:
            return children.read_text().split()
        except (FileNotFoundError, ProcessLookupError):
            return []

    @staticmethod
    def used(folder):
        """Returns the space that the files of a folder take, of which one may just be removed."""
        size = 0
        for path in folder.iterdir():
            try:
                size += path.stat().st_blocks * 512
            except FileNotFoundError:
                pass
        return size

    @staticmethod
    def temporary(process):
        """Returns the size of the files that are open and removed, as SQLite keeps temporary ones."""
        size = 0
        for link in pathlib.Path(f"/proc/{process}/fd").glob("*"):
            try:
                if "etilqs_" in os.readlink(link):
                    size += link.stat().st_blocks * 512
            except FileNotFoundError:
                pass
        return size

    @staticmethod
    def sqlite_library(process):
        """Returns the path of the library that the process has loaded, None if not yet."""
        try:
            maps = pathlib.Path(f"/proc/{process}/maps").read_text()
        except (FileNotFoundError, ProcessLookupError):
            return None
        return next((line.split()[-1] for line in maps.splitlines() if "libsqlite3" in line), None)


class Comparison:
    """Medians of vardo, a program that does the same to the same files, and maybe others."""

    def __init__(self, programs, originals, repeats):
        self.observations = {}
        contents = {}
        for name, command in programs.items():
            self.observations[name] = Observation(command, originals)
            contents[name] = [content(WORK / "run" / original.name) for original in originals]
        other = contents["shell" if "shell" in programs else "minimal"]
        if contents["vardo"] != other:
            sys.exit(f"The programs make different databases: {contents}")
        libraries = {observation.library for observation in self.observations.values()}
        if len(libraries - {None}) > 1:
            sys.exit(f"The programs use different libraries: {libraries}")

        self.instructions = {}
        if sum(original.stat().st_size for original in originals) < 200 * MIB:  # it takes long
            self.instructions = {name: count_instructions(command, originals)
                                 for name, command in programs.items()}

        self.repeats = repeats
        self.seconds, self.processor = medians(programs, originals, repeats)


def medians(programs, originals, repeats):
    """Returns the median seconds of each program, and those on a processor. Runs alternate."""
    times = {name: [] for name in programs}
    for repeat in range(repeats):
        order = list(programs.items())
        for name, command in order if repeat % 2 == 0 else reversed(order):
            times[name].append(timed(command, originals))
    return ({name: statistics.median(wall for wall, _ in runs) for name, runs in times.items()},
            {name: statistics.median(processor for _, processor in runs)
             for name, runs in times.items()})


def content(database):
    """Returns a hash of the layout and one of the rows of each table."""
    names = subprocess.run([*SHELL, database, "select name from sqlite_schema where type = 'table'"],
                           check=True, capture_output=True, text=True).stdout.split()
    result = {}
    for table in ["sqlite_schema", *names]:
        hashed = subprocess.run([*SHELL, database, f".sha3sum --schema {table}"],
                                check=True, capture_output=True, text=True).stdout
        result[table] = hashed.strip()
    return result


def compare_upgrade(database, script, repeats):
    """Compares the upgrade of a database with the shell's and with the damage check alone."""
    return Comparison({
        "vardo": [VARDO],
        "shell": shell(database, f".read {ROOT}/benchmarks/{script}"),
        "check": shell(database, "pragma integrity_check(1)"),
    }, [WORK / database], repeats)


def compare_data(patients, repeats):
    make(WORK / "data.db", "data_v0.sql", patients=patients, seed=SEED)
    return compare_upgrade("data.db", "upgrade_data.sql", repeats)


def compare_qc(targets, repeats):
    make(WORK / "qc.db", "qc_v2.sql", targets=targets, seed=SEED)
    return compare_upgrade("qc.db", "upgrade_qc.sql", repeats)


def compare_up_to_date(repeats):
    names = [f"{name}.db" for name in ("profile", "data", "qc", "syslog")]
    folder = copy_fresh([])
    for name in names:
        sample = ROOT / "samples" / name.replace(".db", "_v0.sql")
        subprocess.run([*SHELL, folder / name, f".read {sample}"], check=True)
    subprocess.run([VARDO, WORK / "upgrade.log"], cwd=folder, check=True)
    originals = [shutil.copy(folder / name, WORK) for name in names]
    return Comparison({
        "vardo": [VARDO],
        "minimal": [BUILD / "benchmarks/bench_uptodate", *names],
    }, [pathlib.Path(path) for path in originals], repeats)


class Reporting:
    """Medians of a rehearsal and a comparison, of what a rehearsal cannot do without, and of the upgrade."""

    def __init__(self, patients, repeats):
        make(WORK / "data.db", "data_v0.sql", patients=patients, seed=SEED)
        originals = [WORK / "data.db"]
        before = WORK / "before"
        after = WORK / "after"
        for folder in (before, after):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()
            shutil.copy(originals[0], folder)
        subprocess.run([VARDO, "upgrade.log"], cwd=after, check=True)

        (WORK / "copies").mkdir(exist_ok=True)
        os.environ["TMPDIR"] = str(WORK / "copies")  # on the same disk
        programs = {
            "rehearse": [VARDO_REPORT, "rehearse", "--quiet"],
            "alone": ["sh", "-c", f"mkdir before && cp data.db before && {VARDO}"],
            "compare": [VARDO_REPORT, "compare", before, after, "--quiet"],
            "upgrade": [VARDO],
        }
        self.memory = {name: Observation(programs[name], originals).memory
                       for name in ("rehearse", "compare")}
        self.repeats = repeats
        self.seconds, self.processor = medians(programs, originals, repeats)
        del os.environ["TMPDIR"]


def fits():
    """Returns the fits per second by method."""
    output = subprocess.run([BUILD / "benchmarks/bench_curvefit", "--benchmark_format=json"],
                            check=True, capture_output=True, text=True).stdout
    return {run["name"]: run["fits/s"] for run in json.loads(output)["benchmarks"]}


def upgrade_rows(upgrades):
    """Returns the table of the upgrades, of (name, N, comparison), as rows of texts."""
    rows = [["upgrade", "rows", "runs", "vardo s", "shell s", "ratio", "CPU ratio",
             "vardo 10⁶ instr.", "instr. ratio", "check", "vardo MiB", "shell MiB", "file MiB",
             "journal MiB", "disk MiB", "disk/file"]]
    for name, count, comparison in upgrades:
        seconds = comparison.seconds
        processor = comparison.processor
        tool = comparison.observations["vardo"]
        instructions, instruction_ratio = instruction_texts(comparison, "shell")
        rows.append([
            name, f"{count:,}", str(comparison.repeats), f"{seconds['vardo']:.2f}",
            f"{seconds['shell']:.2f}", f"{seconds['vardo'] / seconds['shell']:.3f}",
            f"{processor['vardo'] / processor['shell']:.3f}", instructions, instruction_ratio,
            f"{100 * seconds['check'] / seconds['vardo']:.0f} %", f"{tool.memory / MIB:.1f}",
            f"{comparison.observations['shell'].memory / MIB:.1f}", f"{tool.size / MIB:.1f}",
            f"{tool.journal / MIB:.1f}", f"{(tool.peak - tool.size) / MIB:.1f}",
            f"{(tool.peak - tool.size) / tool.size:.2f}"])
    return rows


def instruction_texts(comparison, other):
    """Returns vardo's instructions in millions and their ratio to the other program's, as texts."""
    counts = comparison.instructions
    if not counts:
        return "", ""
    return f"{counts['vardo'] / 1e6:,.0f}", f"{counts['vardo'] / counts[other]:.3f}"


def up_to_date_rows(comparison):
    seconds = comparison.seconds
    processor = comparison.processor
    memory = {name: observation.memory for name, observation in comparison.observations.items()}
    return [["", "runs", "vardo ms", "minimal ms", "ratio", "CPU ratio", "vardo 10⁶ instr.",
             "instr. ratio", "vardo MiB", "minimal MiB"],
            ["all four up to date", str(comparison.repeats), f"{1000 * seconds['vardo']:.1f}",
             f"{1000 * seconds['minimal']:.1f}", f"{seconds['vardo'] / seconds['minimal']:.3f}",
             f"{processor['vardo'] / processor['minimal']:.3f}",
             *instruction_texts(comparison, "minimal"), f"{memory['vardo'] / MIB:.1f}",
             f"{memory['minimal'] / MIB:.1f}"]]


def reporting_rows(measurements):
    """Returns the table of rehearsals and comparisons, of (patients, measurement)."""
    rows = [["patients", "runs", "rehearse s", "copy and upgrade s", "ratio", "compare s", "upgrade s",
             "ratio", "rehearse MiB", "compare MiB"]]
    for patients, measured in measurements:
        seconds = measured.seconds
        rows.append([
            f"{patients:,}", str(measured.repeats), f"{seconds['rehearse']:.2f}",
            f"{seconds['alone']:.2f}", f"{seconds['rehearse'] / seconds['alone']:.3f}",
            f"{seconds['compare']:.2f}", f"{seconds['upgrade']:.2f}",
            f"{seconds['compare'] / seconds['upgrade']:.3f}",
            f"{measured.memory['rehearse'] / MIB:.1f}", f"{measured.memory['compare'] / MIB:.1f}"])
    return rows


def table(rows):
    """Returns the rows as a table of Markdown, the columns as wide as their widest text."""
    widths = [max(map(len, column)) for column in zip(*rows)]
    rows = [rows[0], ["-" * width for width in widths], *rows[1:]]
    return "".join("| " + " | ".join(text.ljust(width) for text, width in zip(row, widths)) + " |\n"
                   for row in rows)


def machine():
    """Returns what was measured on, a line each."""
    processor = {}
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        name, _, value = line.partition(":")
        processor.setdefault(name.strip(), value.strip())
    wide = "with" if "avx512f" in processor.get("flags", "").split() else "without"
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / MIB / 1024
    file_system = subprocess.run(["findmnt", "-no", "FSTYPE", "-T", WORK], check=True,
                                 capture_output=True, text=True).stdout.strip()
    versions = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}, ", "libqt6core6",
                               "libsqlite3-0", "g++"], check=True, capture_output=True,
                              text=True).stdout.strip(", ")
    return (f"- {processor['model name']} (family {processor.get('cpu family')}, model"
            f" {processor.get('model')}, stepping {processor.get('stepping')}, {wide} AVX-512),"
            f" {os.cpu_count()} processors, {memory:.0f} GiB, {file_system}\n"
            f"- {platform.freedesktop_os_release()['PRETTY_NAME']}, Linux {platform.release()}\n"
            f"- {versions}\n")


REPORT = """# Measurements

Made by `scripts/benchmark{options}` on {date}.

{machine}
Times are medians over alternating runs, each on a fresh copy of the files, synced and in the page cache,
with SQLite's own durability. `shell` is the sqlite3 shell with the same statements, transaction and
settings, and makes the same database (compared table by table). It also runs the statements that `vardo`
leaves out when they would change nothing. `check` is the share of the damage check
(`pragma integrity_check`), which the shell runs too. A ratio is one of medians; the CPU ratio leaves out
the waiting for the disk. The instructions are one run's in user space, as valgrind counts them (not for the
largest databases). `MiB` is the peak resident set. `journal` is the largest size of the journal,
`disk` what the upgrade needed beside the file at its peak: its growth, the journal and temporary files.

## Upgrades

Data database, version 0 to 12, by patients (5 results and 3 curves each); quality-control database,
version 2 to 3, by target values.

{upgrades}
![Time and memory by patients](results.svg)

## Nothing to do

Against a Qt program that opens the same files and writes each version again in one transaction.

{up_to_date}
## Rehearsal and comparison

{reporting}
## Curve fits per second

Curves of 7 points with 1 % noise, on one core.

{fits}"""

REPORTING = """`vardo-report` on the data database, version 0 to 12, by patients (5 results and 3 curves each). A rehearsal
copies the database twice, upgrades one copy and compares both. `copy and upgrade` is the least of it: one copy
and the upgrade by `vardo`. A comparison reads both files, and stands beside the upgrade that made the second
one.

Measured on {date}.

{rows}"""

PLOT = """
set terminal svg size 900,380 background "white"
set output "{output}"
set multiplot layout 1,2
set logscale x
set format x "%.0s%c"
set xlabel "patients"
set key left top
set grid
set logscale y
set title "Upgrade of the data database"
set ylabel "seconds (median)"
plot $upgrades using 1:2 with linespoints title "vardo", \\
     $upgrades using 1:3 with linespoints title "sqlite3 shell", \\
     $upgrades using 1:4 with linespoints title "damage check alone"
unset logscale y
set title "Peak resident set"
set ylabel "MiB"
set yrange [0:45]
plot $upgrades using 1:5 with linespoints title "vardo", \\
     $upgrades using 1:6 with linespoints title "sqlite3 shell", \\
     40 dashtype 2 title "limit"
"""


def plot(upgrades, output):
    lines = [f"{count} {comparison.seconds['vardo']} {comparison.seconds['shell']}"
             f" {comparison.seconds['check']} {comparison.observations['vardo'].memory / MIB}"
             f" {comparison.observations['shell'].memory / MIB}"
             for _, count, comparison in upgrades]
    data = "$upgrades << EOD\n" + "\n".join(lines) + "\nEOD\n"
    subprocess.run(["gnuplot"], input=data + PLOT.format(output=output), text=True, check=True)


def replace_section(path, title, text, following):
    """Replaces what stands below a heading of the second level, or adds it before the following heading."""
    before, heading, rest = path.read_text().partition(f"## {title}\n")
    if heading:
        rest = rest[rest.find(f"## {following}"):]
    else:
        before, heading, rest = path.read_text().partition(f"## {following}")
        rest = heading + rest
    path.write_text(f"{before}## {title}\n\n{text}\n{rest}")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true",
                        help="small databases, to try the script; writes to build/benchmark")
    parser.add_argument("--report", action="store_true",
                        help="rehearsal and comparison only: a section of benchmarks/results.md")
    arguments = parser.parse_args()
    quick = arguments.quick

    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)

    reporting_runs = {1_000: 3} if quick else {100_000: 9, 1_000_000: 3}
    measured = [(patients, Reporting(patients, runs)) for patients, runs in reporting_runs.items()]
    reporting = REPORTING.format(date=datetime.date.today(), rows=table(reporting_rows(measured)))
    if arguments.report:
        results = (WORK if quick else ROOT / "benchmarks") / "results.md"
        if results.exists():
            replace_section(results, "Rehearsal and comparison", reporting,
                            "Curve fits per second")
        print(reporting)
        return

    data_runs = {1_000: 5, 10_000: 5} if quick else {10_000: 41, 100_000: 21, 1_000_000: 7}
    qc_runs = {10_000: 5} if quick else {1_000_000: 9}
    up_to_date = compare_up_to_date(11 if quick else 101)
    by_patients = [("data", patients, compare_data(patients, runs))
                   for patients, runs in data_runs.items()]
    by_targets = [("qc", targets, compare_qc(targets, runs)) for targets, runs in qc_runs.items()]

    output = WORK if quick else ROOT / "benchmarks"
    report = REPORT.format(
        options=" --quick" if quick else "", date=datetime.date.today(), machine=machine(),
        upgrades=table(upgrade_rows(by_patients + by_targets)),
        up_to_date=table(up_to_date_rows(up_to_date)), reporting=reporting,
        fits=table([["method", "fits/s"], *([name, f"{rate:,.0f}"] for name, rate in fits().items())]))
    (output / "results.md").write_text(report)
    plot(by_patients, output / "results.svg")
    shutil.rmtree(WORK / "run")
    print(report)


if __name__ == "__main__":
    sys.exit(main())

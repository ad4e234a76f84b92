#!/usr/bin/env python3
"""Measures the built program and prints one table of ratios.

    measure.py BUILD [NAME...]

Names are groups of rows: scan, first, opening, memory, canvas, edits, pages, documents, reading, sheets, live, parts; all of them when none is given. Ours and
the peer are measured in turn, so that both see the same machine. Every figure is the median of the runs. A missed target is
said, and is no failure of the script.
"""

import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

import documents
import folders
import sheets
import word
from program import Program

RUNS = 5
FRAME_LIMIT_MS = 8
BLOCK_LIMIT_MS = 50
BYTES_PER_NODE = 1229
SLICE_SECONDS = 0.2  # between two looks at a program that is busy


class Table:
    def __init__(self):
        self.rows = []

    def ratio(self, what, ours, peer, unit, target=None):
        ratio = ours / peer
        self._add(what, f"{ours:,.1f} {unit}", f"{peer:,.1f} {unit}", f"{ratio:.2f}",
                  "" if target is None else f"<= {target:g}", None if target is None else ratio <= target)

    def value(self, what, ours, unit, target=None, digits=1):
        self._add(what, f"{ours:,.{digits}f} {unit}", "", "",
                  "" if target is None else f"<= {target:,g} {unit}", None if target is None else ours <= target)

    def fact(self, what, holds, yes, no):
        self._add(what, yes if holds else no, "", "", yes, holds)

    def print(self):
        heads = ("what", "ours", "peer", "ratio", "target", "met")
        lines = [heads] + self.rows
        widths = [max(len(line[i]) for line in lines) for i in range(len(heads))]
        for number, line in enumerate(lines):
            cells = [line[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(line[1:], widths[1:])]
            print("  ".join(cells).rstrip())
            if number == 0:
                print("  ".join("-" * width for width in widths))
        missed = sum(row[5] == "NO" for row in self.rows)
        print(f"\n{missed} of {sum(bool(row[5]) for row in self.rows)} targets missed." if missed
              else "\nAll targets met.")

    def _add(self, what, ours, peer, ratio, target, met):
        self.rows.append((what, ours, peer, ratio, target, {True: "yes", False: "NO", None: ""}[met]))
        say(f"  {what}: {ours}" + (f" against {peer}" if peer else ""))


def say(text):
    print(text, file=sys.stderr, flush=True)


def middle(values):
    return statistics.median(values)


class Bench:
    def __init__(self, build):
        self.program_path = os.path.join(build, "src", "corvelle")
        self.programs = os.path.join(build, "bench")
        self.data = os.path.join(os.path.dirname(os.path.abspath(build)), "bench-data")
        self.places = os.path.join(self.data, "places")
        self.table = Table()
        os.makedirs(self.places, exist_ok=True)

    def start(self, library, arguments=(), first=()):
        return Program(self.program_path, library, self.places, arguments, first)

    def tool_ms(self, name, *arguments):
        """What one of our small programs says it took."""
        done = subprocess.run([os.path.join(self.programs, name), *arguments], check=True, capture_output=True, text=True)
        return float(done.stdout)

    def opened(self, library):
        """A library that the program has seen to the end."""
        if not os.path.exists(folders.database(library)):
            with self.start(library) as program:
                program.settle()
        return library

    # ---- the rows ----

    def scan(self):
        library = folders.large(self.data)
        ours, peer = [], []
        for run in range(RUNS + 1):  # the first one warms up
            ours.append(self._scan_ms(library))
            peer.append(self._find_ms(library))
        self.table.ratio("scan of 105,000 entries / find", middle(ours[1:]), middle(peer[1:]), "ms", 2.5)

    def _scan_ms(self, library):
        return self.tool_ms("bench_scan", library, folders.TOP)

    def _find_ms(self, library):
        start = time.perf_counter()
        subprocess.run(["find", os.path.join(library, folders.TOP), "-printf", r"%i %s %T@ %p\n"], check=True,
                       stdout=subprocess.DEVNULL)
        return (time.perf_counter() - start) * 1000

    def first(self):
        library = folders.large(self.data)
        blocks, settled, scans, inserts, shown = [], [], [], [], []
        for run in range(RUNS):
            folders.forget(library)
            with self.start(library, first=[("perf", {"reset": True})]) as program:
                progress = False
                while not program.tell("settle", timeout=SLICE_SECONDS)["idle"]:
                    progress |= any(toast.get("key") == "arrivals" for toast in program.tell("state")["toasts"])
                settled.append((time.time() - program.started_at) * 1000)
                blocks.append(program.tell("perf")["longestBlock"])
            shown.append(progress)
            scans.append(self._scan_ms(library))
            inserts.append(self.tool_ms(
                "bench_bare", "insert", folders.database(library), os.path.join(self.data, "inserted.sqlite")))
        self.table.value("first opening: longest block of the main thread", middle(blocks), "ms", BLOCK_LIMIT_MS)
        self.table.value("first opening: longest block, worst run", max(blocks), "ms")
        self.table.ratio("first opening until settled / scan + bare insert", middle(settled),
                         middle(scans) + middle(inserts), "ms")
        self.table.fact("first opening: progress", all(shown), "shown", "not shown")

    def opening(self):
        library = self.opened(folders.large(self.data))
        cards, faces, reads = [], [], []
        for run in range(RUNS + 1):
            with self.start(library) as program:
                perf = program.tell("perf")
                while perf["firstFacesAt"] == 0:
                    perf = program.tell("perf")
                cards.append((perf["firstCardsAt"] - program.started_at) * 1000)
                faces.append((perf["firstFacesAt"] - program.started_at) * 1000)
                program.settle()
            start = time.perf_counter()
            self.tool_ms("bench_bare", "read", folders.database(library))
            reads.append((time.perf_counter() - start) * 1000)
        peer = middle(reads[1:])
        self.table.ratio("second opening, exec to first cards / bare read", middle(cards[1:]), peer, "ms", 3)
        self.table.ratio("second opening, exec to first faces / bare read", middle(faces[1:]), peer, "ms", 3)

    def memory(self):
        library, empty = self.opened(folders.large(self.data)), self.opened(folders.empty(self.data))
        nodes = folders.count_nodes(library)
        later = [self._settled_bytes(library) - self._settled_bytes(empty) for run in range(RUNS)]
        self.table.value("memory for a node above an empty library", middle(later) / nodes, "bytes", BYTES_PER_NODE, 0)
        first = []
        for run in range(RUNS):
            folders.forget(library)
            first.append(self._settled_bytes(library) - self._settled_bytes(empty))
        self.table.value("the same after the first opening", middle(first) / nodes, "bytes", BYTES_PER_NODE, 0)

    def _settled_bytes(self, library):
        with self.start(library) as program:
            program.settle()
            return program.resident_bytes()

    def canvas(self):
        library = folders.wide(self.data)
        folders.forget(library)
        self.opened(library)
        pan_down = [(0, -60)] * 100 + [(0, 60)] * 100
        pan_across = [(-60, -45)] * 100 + [(60, 45)] * 100
        # From 100 % to 250 %, out to 20 %, and back.
        zoom = [(0, 4)] * 38 + [(0, -4)] * 105 + [(0, 4)] * 57
        self._frames("panning columns of four", library, pan_down)
        self._frames("zooming columns of four", library, zoom, mods="Ctrl")
        folders.spread(library)
        self._frames("panning a dense grid", library, pan_across)
        self._frames("zooming a dense grid", library, zoom, mods="Ctrl")

    def _frames(self, what, library, steps, mods=""):
        p95, longest, counts = [], [], []
        for run in range(RUNS):
            with self.start(library, arguments=("--size", "1440x900")) as program:
                program.settle()
                program.tell("camera", zoom=1.0)
                program.settle()
                program.tell("perf", reset=True)
                for dx, dy in steps:
                    # An answer comes with the next look into the channel: the frame of the last event was painted before it.
                    program.tell("wheel", x=720, y=450, dx=dx, dy=dy, pixel=True, mods=mods)
                time.sleep(0.05)
                perf = program.tell("perf")
            p95.append(perf["p95"])
            longest.append(perf["max"])
            counts.append(perf["frames"])
        self.table.value(f"{what}, p95 frame", middle(p95), "ms", FRAME_LIMIT_MS, 2)
        self.table.value(f"{what}, longest of {middle(counts):.0f} frames", middle(longest), "ms", digits=2)

    def edits(self):
        """What one edit costs, and one of a folder with 50,000 items, against SQLite's bare UPDATE of their rows."""
        with tempfile.TemporaryDirectory() as place:
            told = json.loads(subprocess.run([os.path.join(self.programs, "bench_edits"), place], check=True, capture_output=True).stdout)
        self.table.ratio("renaming a folder of 50,000 / bare UPDATE", told["rename"], told["bare"], "ms", 5)
        self.table.ratio("trashing a folder of 50,000 / bare UPDATE", told["trash"], told["bare"], "ms", 5)
        self.table.value("longest silence of either", told["silence"], "ms", 100)
        self.table.ratio("four edits among 100,000 / among 100", told["huge"], told["small"], "ms", 1.2)

    def pages(self):
        """Pages from Markdown and HTML and back, and a heavy page opened from its stored form."""
        markdown, html = documents.large_markdown(self.data, say), documents.large_html(self.data, say)
        runs = []
        for run in range(RUNS):
            text, ten, web, web_ten = (self._pages(*each) for each in (
                ("markdown", markdown), ("markdown", markdown, "10"), ("html", html), ("html", html, "10")))
            runs.append({
                "peer": documents.rendering_ms(markdown) - documents.rendering_ms(os.devnull),
                "read": text["read"], "write": text["write"], "readTen": ten["read"], "html": web["read"],
                "writeHtml": web["write"], "htmlTen": web_ten["read"], "libxml": self._pages("libxml", html)["read"],
                **self._pages("hostile"), **self._pages("heavy")})
        took = {key: middle([each[key] for each in runs]) for key in runs[0]}
        ratio = self.table.ratio
        ratio("10 MB of Markdown into blocks / cmark-gfm's parse and render", took["read"], took["peer"], "ms", 2)
        ratio("the same blocks into Markdown / reading them", took["write"], took["read"], "ms", 1)
        ratio("100 MB of Markdown / 10 MB", took["readTen"], took["read"], "ms", 11)
        ratio("its HTML into blocks / libxml2's events alone", took["html"], took["libxml"], "ms", 2)
        ratio("the same blocks into HTML / reading them", took["writeHtml"], took["html"], "ms", 1)
        ratio("ten times that HTML / once", took["htmlTen"], took["html"], "ms", 11)
        ratio("1 MB of hostile Markdown / of prose", took["markdownHostile"], took["markdownProse"], "ms", 20)
        ratio("1 MB of hostile HTML / of prose", took["htmlHostile"], took["htmlProse"], "ms", 20)
        ratio(f"page of {took['pageBytes'] / 1e6:.1f} MB into flat text / QJsonDocument's parse", took["open"], took["qtParse"],
              "ms", 1.5)
        self.table.value("saving that page again", took["save"], "ms", digits=2)

    def _pages(self, *arguments):
        return json.loads(subprocess.run([os.path.join(self.programs, "bench_pages"), *arguments], check=True,
                                         stdout=subprocess.PIPE).stdout)

    def sheets(self):
        """A workbook to text, the memory of opening one, and a sheet scrolled in the window."""
        path, empty = sheets.table(self.data, 20_000, 20), sheets.table(self.data, 0, 20)
        whole, look, peer = [], [], []
        for run in range(RUNS):
            whole.append(self._sheets("text", path)["ms"])
            look.append(self._sheets("look", path)["ms"])
            peer.append(sheets.table_ms(path) - sheets.table_ms(empty))
        self.table.ratio("workbook of 400,000 cells to text / xlsx2csv", middle(whole), middle(peer), "ms", 0.05)
        self.table.ratio("the 20,000 of them that a preview shows / xlsx2csv's all", middle(look), middle(peer), "ms", 0.05)
        path, largest = sheets.many_strings(self.data, 400_000)
        self.table.ratio("memory of opening 400,000 strings / the part of them", self._sheets("open", path)["kilobytes"] / 1024,
                         largest / (1 << 20), "MiB", 3)
        self._scroll(sheets.table(self.data, 1000, 40))

    def _scroll(self, path):
        library = self.opened(folders.wide(self.data))
        painted, p95 = [], []
        with self.start(library, arguments=("--size", "1440x900")) as program:
            program.tell("add", paths=[path], x=0, y=0)
            program.settle()
            sheet = program.tell("find", title=os.path.basename(path))[-1]
            for run in range(RUNS):
                program.tell("open", id=sheet)
                program.settle()
                time.sleep(1)  # it has come up
                painted.append(program.tell("state")["open"]["paintedAfter"])
                program.tell("perf", reset=True)
                for step in range(60):
                    program.tell("wheel", x=700, y=500, dx=-(step % 3 == 0), dy=-1)
                p95.append(program.tell("perf")["p95"])
                program.tell("close")
            program.tell("delete", ids=[sheet])
            program.settle()
        self.table.value("sheet of 1,000 x 40 cells, to its first picture", middle(painted), "ms")
        self.table.value("the same scrolled, frames p95", middle(p95), "ms", 16)

    def _sheets(self, *arguments):
        return json.loads(subprocess.run([os.path.join(self.programs, "bench_sheets"), *arguments], check=True,
                                         stdout=subprocess.PIPE).stdout)

    def documents(self):
        """A Word file into text, inside of a process and as a process of its own, and what it stands on."""
        page, report, large = word.page(self.data), word.report(self.data), word.large(self.data)
        runs = []
        for run in range(2 * RUNS):
            runs.append({
                "text": self._documents("text", report)["text"],
                "pandoc": word.processor_ms(word.pandoc(report)) - word.processor_ms(["pandoc", "--from=markdown", os.devnull]),
                **{name + kind: word.elapsed_ms(command(path)) for name, path in (("report", report), ("page", page))
                   for kind, command in (("Ours", self._dump), ("Pandoc", word.pandoc), ("Docx2txt", word.docx2txt))}})
        took = {key: middle([each[key] for each in runs]) for key in runs[0]}
        ratio = self.table.ratio
        ratio("Word file of 40 pages into text / pandoc without its start", took["text"], took["pandoc"], "ms", 0.05)
        for name, what, target in (("report", "40 pages", True), ("page", "1 page", False)):
            ours = took[name + "Ours"]
            ratio(f"--docx-dump of {what} / pandoc, whole processes", ours, took[name + "Pandoc"], "ms", 0.333 if target else None)
            ratio(f"--docx-dump of {what} / docx2txt, whole processes", ours, took[name + "Docx2txt"], "ms", 1)
        memory = self._documents("memory", large)
        ratio("peak memory of reading a large Word file / its largest part", memory["peak"] / 1e6, memory["largest"] / 1e6, "MB", 3)
        unpacked = self._documents("zip", large)
        ratio("reading all of its entries / libzip", unpacked["ours"], unpacked["libzip"], "ms", 1.2)

    def _dump(self, path):
        return [self.program_path, "--docx-dump", path]

    def _documents(self, *arguments):
        return json.loads(subprocess.run([os.path.join(self.programs, "bench_documents"), *arguments], check=True,
                                         stdout=subprocess.PIPE).stdout)

    def reading(self):
        """A page of 20,000 blocks, opened and scrolled in the window."""
        library = self.opened(folders.wide(self.data))
        painted, p95, longest = [], [], []
        with self.start(library, arguments=("--size", "1440x900")) as program:
            page = program.tell("make", kind="page", title="Long", x=0, y=0)["id"]
            program.tell("write", id=page, doc=documents.long_page())
            program.settle()
            for run in range(RUNS):
                program.tell("open", id=page)
                program.settle()
                painted.append(program.tell("state")["open"]["paintedAfter"])
                time.sleep(0.4)  # until it has come up
                program.tell("perf", reset=True)
                for step in range(200):
                    program.tell("wheel", x=720, y=450, dx=0, dy=-60 if step < 150 else 90, pixel=True)
                time.sleep(0.05)
                perf = program.tell("perf")
                p95.append(perf["p95"])
                longest.append(perf["max"])
                program.tell("close")
                program.settle()
            program.tell("delete", ids=[page])
        self.table.value("page of 20,000 blocks: until the first picture", middle(painted), "ms", 150)
        self.table.value("scrolling it, p95 frame", middle(p95), "ms", 16, 2)
        self.table.value("scrolling it, longest frame", middle(longest), "ms", 16, 2)

    def live(self):
        """What watching a library of 105,000 entries costs while nothing, little and much happens."""
        library = self.opened(folders.large(self.data))
        with self.start(library, arguments=("--size", "1440x900")) as program:
            program.settle()
            time.sleep(2)
            idle = self._spent_ms(program, lambda: time.sleep(20)) / 20
            self.table.value("a second of idling, with the looks into the scripted channel: processor time", idle, "ms", 5)
            top = os.path.join(library, folders.TOP)
            file = next(os.path.join(place, names[0]) for place, _, names in os.walk(top) if names)

            def change():
                with open(file, "a") as one:
                    one.write("more\n")
                program.settle()
            change()
            self.table.value("one changed file: processor time", middle([self._spent_ms(program, change) for _ in range(RUNS)]),
                             "ms", digits=1)
            frames, longest = self._stream(program, os.path.join(top, "stream"))
        self.table.value("2,000 events a second, panning: p95 frame", frames, "ms", 16, 2)
        self.table.value("2,000 events a second: longest block of the main thread", longest, "ms", digits=1)

    def _spent_ms(self, program, act):
        def spent():
            with open(f"/proc/{program.process.pid}/stat") as stat:
                fields = stat.read().rsplit(")", 1)[1].split()
            return (int(fields[11]) + int(fields[12])) * 1000 / os.sysconf("SC_CLK_TCK")
        before = spent()
        act()
        return spent() - before

    def _stream(self, program, folder, seconds=10, rate=2000):
        os.makedirs(folder, exist_ok=True)
        program.tell("perf", reset=True)
        start, done = time.time(), 0
        while time.time() - start < seconds:
            while done < (time.time() - start) * rate:
                with open(os.path.join(folder, f"{done % 50}.txt"), "w") as one:
                    one.write(str(done))
                done += 3  # made or cut, written, closed
            program.tell("wheel", x=720, y=450, dx=0, dy=30 if done % 2 else -30, pixel=True)
        perf = program.tell("perf")
        for name in os.listdir(folder):
            os.remove(os.path.join(folder, name))
        os.rmdir(folder)
        program.settle()
        return perf["p95"], perf["longestBlock"]

    def parts(self):
        library = self.opened(folders.large(self.data))
        times = self._part_times(folders.database(library))

        def compare(what, ours, peer, scale, unit):
            self.table.ratio(what, times[ours] * scale, times[peer] * scale, unit)

        compare("read and apply a row / bare read", "readAndApply/process", "bareRead", 1000, "ns")
        compare("the same with texts of its own", "readAndApply/own", "bareRead", 1000, "ns")
        compare("compare an entry, nothing new / hash of paths", "compareUnchanged", "hashOfPaths", 1000, "ns")
        compare("compare an entry, all new / hash of paths", "compareNew", "hashOfPaths", 1000, "ns")
        for scale in (1100, 220):
            compare(f"cards in sight at {scale / 1000:g} / look at all", f"queryGrid/scale:{scale}",
                    f"lookAtAll/scale:{scale}", 1, "us")
        for number, kind in enumerate(("folder", "page", "file", "picture", "link")):
            for scale in (220, 924, 1100, 2750):
                case = f"/kind:{number}/scale:{scale}"
                compare(f"face of a {kind} at {scale / 1000:g} / clear its pixels", "drawFace" + case,
                        "clearPixels" + case, 1, "us")

    def _part_times(self, database):
        """Microseconds for one item, by the benchmark's name."""
        done = subprocess.run(
            [os.path.join(self.programs, "bench_parts"), "--benchmark_format=json", "--benchmark_min_time=0.05",
             f"--benchmark_repetitions={RUNS}", "--benchmark_enable_random_interleaving=true",
             "--benchmark_report_aggregates_only=true"],
            check=True, capture_output=True, text=True, env={**os.environ, "CORVELLE_BENCH_DATABASE": database})
        micro = {"ns": 1e-3, "us": 1, "ms": 1e3, "s": 1e6}
        times = {}
        for entry in json.loads(done.stdout)["benchmarks"]:
            if entry.get("error_occurred"):
                raise RuntimeError(f"{entry['name']}: {entry['error_message']}")
            if entry.get("aggregate_name") == "median":
                name = entry["run_name"].replace("/iterations:4", "")
                name = name.split("/repeats:")[0]
                times[name] = entry["cpu_time"] * micro[entry["time_unit"]] / entry["items"]
        return times


def main():
    names = ("scan", "first", "opening", "memory", "canvas", "edits", "pages", "documents", "reading", "sheets", "live", "parts")
    if len(sys.argv) < 2 or any(name not in names for name in sys.argv[2:]):
        print(f"measure.py BUILD [NAME...], where NAME is one of: {' '.join(names)}", file=sys.stderr)
        return 2
    bench = Bench(sys.argv[1])
    load = os.getloadavg()[0]
    quiet = "" if load < 0.5 else " The machine is busy: absolute times are too long, ratios less so."
    print(f"Load {load:.2f} on {os.cpu_count()} cores; medians of {RUNS} runs.{quiet}\n", flush=True)
    for name in names:
        if not sys.argv[2:] or name in sys.argv[2:]:
            say(f"{name}:")
            getattr(bench, name)()
    say("")
    bench.table.print()
    return 0


if __name__ == "__main__":
    sys.exit(main())

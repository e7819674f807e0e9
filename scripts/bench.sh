#!/bin/bash
# Builds the release benches, runs them one after the other and writes one
# Markdown table (path, ours, baseline, ratio, target) to the file given
# (default: build/release/bench.md). Every baseline is timed in the same run
# as the path it is compared with. Run it on an idle machine: the figures are
# real time.
#   scripts/bench.sh [output.md]
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-build/release/bench.md}
benches=(bench_live_view bench_graph_live bench_genicam_live bench_interval_save bench_picture_save bench_startup_exec)

cmake --preset release >/dev/null
cmake --build --preset release -j2 --target "${benches[@]}" tavix >/dev/null

json=$(mktemp -d)
trap 'rm -rf "$json"' EXIT
run() {  # bench, filter, the name of its results (default: the bench's)
    local name=$1 filter=$2 results=${3:-$1}
    echo "running $name ($filter)" >&2
    QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} "build/release/bench/$name" --benchmark_filter="$filter" \
        --benchmark_out="$json/$results.json" --benchmark_out_format=json >/dev/null ||
        echo "$name failed; its rows stay empty" >&2
}
# In a process of its own: its first window is the process's first.
run bench_live_view 'StartupToFirstLiveFrame' startup
run bench_live_view 'DisplayOneFrame|ScaleOneFrame|StreamAt30Fps'
run bench_graph_live '.'
run bench_genicam_live '.'
run bench_interval_save 'SeriesPicture'
run bench_picture_save 'BmpSave_SavePicture'
run bench_startup_exec '.'

python3 - "$json" "$out" <<'PY'
import json, os, sys
folder, out = sys.argv[1], sys.argv[2]

def load(name):
    path = os.path.join(folder, name + ".json")
    if not os.path.exists(path):
        return {}
    runs = json.load(open(path))["benchmarks"]
    return {r["name"]: r for r in runs if r.get("run_type", "iteration") == "iteration" and not r.get("error_occurred")}

rows = []
def row(path, ours, base, target, unit="ms"):
    fmt = lambda v: "–" if v is None else (f"{v:.2f} {unit}" if unit else f"{v:g}")
    ratio = f"{ours / base:.2f}x" if ours is not None and base else "–"
    rows.append(f"| {path} | {fmt(ours)} | {fmt(base)} | {ratio} | {target} |")

def ms(run):  # a run's time in milliseconds
    scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[run.get("time_unit", "ns")]
    return run["real_time"] * scale

live = load("bench_live_view")
def counter(runs, name, key):
    r = runs.get(name)
    return r.get(key) if r else None
row("Live view, sim 2592x1944 to 1000x750, per shown frame (baseline: memcpy of the frame)",
    counter(live, "DisplayOneFrame/manual_time", "ours_ms"), counter(live, "DisplayOneFrame/manual_time", "base_ms"), "≤ 1.0x")
row("Live view, sim, the driver thread's part alone: scaled into the view's picture, not painted (baseline: memcpy of the frame)",
    counter(live, "ScaleOneFrame/manual_time", "ours_ms"), counter(live, "ScaleOneFrame/manual_time", "base_ms"), "–")
row("Live view, sim, ours against GStreamer's scale + convert + sink on the same frames (baseline: GStreamer)",
    counter(live, "DisplayOneFrameVsGStreamer/manual_time", "ours_ms"),
    counter(live, "DisplayOneFrameVsGStreamer/manual_time", "base_ms"), "peer")
stream = next((r for n, r in live.items() if n.startswith("StreamAt30Fps")), None)
if stream:
    row(f"Live view at 30 fps, 3 s: frames lost (produced {stream['produced/s']:.1f}/s, shown {stream['shown/s']:.1f}/s, "
        f"replaced {stream['replaced/s']:.1f}/s)", stream["lost"], None, "0", unit="")
startup = next(iter(load("startup").values()), None)
if startup:
    row("Start-up to the first live frame (in process, sim): the process's first window", startup["first_ms"], None, "≤ 50 ms")
    row("Start-up to the first live frame (in process, sim): later windows, median", startup["later_median_ms"], None, "≤ 50 ms")

# The graph and GenICam live views: the display's CPU per shown frame (the
# live view's scaling, timed on the driver's thread, plus the painting),
# against a memcpy of the camera's frame in the cache and against a memcpy of
# each frame where the driver hands it over; and the graph bench's scaling of
# one frame alone.
kinds = {"format:0": "RGB", "format:1": "YUY2", "format:2": "Bayer", "bayer:0": "Mono8", "bayer:1": "Bayer"}
for bench, label, size in (("bench_graph_live", "Graph camera", "1920x1200"),
                           ("bench_genicam_live", "GenICam camera", "2048x1536")):
    runs = load(bench)
    for name, r in runs.items():
        if not name.startswith(("GraphLive/", "GenICamLive/")):
            continue
        kind = name.split("/")[1]
        row(f"{label} {size} {kinds.get(kind, kind)}, display CPU per shown frame "
            f"(process {r['cpu_ms_per_frame']:.2f} ms a frame with the source; {r['fps']:.1f} fps, "
            f"lost {r['lost']:g}) (baseline: memcpy of the frame)",
            r["display_ms"], r["memcpy_ms"], "≤ 1.0x")
        if "handed_memcpy_ms" in r:
            row(f"{label} {size} {kinds.get(kind, kind)}, the same display CPU "
                f"(baseline: memcpy of each frame as the driver hands it over)",
                r["display_ms"], r["handed_memcpy_ms"], "–")
    for name, r in runs.items():
        if name.startswith("LiveViewScaleOneFrame"):
            row(f"{label} {size} {kinds.get(name.split('/')[1], name)}, scaled into the view alone "
                f"(baseline: memcpy of the frame)", r["ours_ms"], r["base_ms"], "–")

series = {"crosses:1": "two cross lines, the frame handed over",
          "crosses:2": "two cross lines, a camera that only writes files",
          "crosses:0": "no cross lines, the camera writes the JPEG"}
for name, r in load("bench_interval_save").items():
    what = series.get(name.split("/")[1], name)
    if name.startswith("SeriesPictureWritten"):
        row(f"Series picture, {what} (baseline: JPEG encode + the same safe write of its bytes"
            f"{' + the camera writing its bitmap' if name.endswith('crosses:2/manual_time') else ''})",
            r["ours_ms"], r["base_ms"], "–")
    else:
        row(f"Series picture, {what} (baseline: JPEG encode alone)", r["ours_ms"], r["base_ms"], "≤ 1.1x")
for name, r in load("bench_picture_save").items():
    row(f"BMP save {name.split('/')[1]}-bit still (baseline: raw write + fsync + rename)", r["ours_ms"], r["base_ms"], "≤ 1.05x")
exec_runs = load("bench_startup_exec")
auto = next((ms(r) for n, r in exec_runs.items() if "sim:0" in n), None)
sim = next((ms(r) for n, r in exec_runs.items() if "sim:1" in n), None)
row("tavix exec to window, DRIVER=auto, no camera (baseline: --camera sim)", auto, sim, "≤ 0.3 s")

with open(out, "w") as f:
    f.write("| Path | Ours | Baseline | Ratio | Target |\n|---|---|---|---|---|\n")
    f.write("\n".join(rows) + "\n")
print(open(out).read())
PY

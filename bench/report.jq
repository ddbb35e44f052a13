# SPDX-License-Identifier: Apache-2.0
# Tables of docs/performance.md and data for its plots, from what the benchmark programs write.

def wanted: {
  "intake": 2, "measureOnce": 10, "sampling-calibration": 10, "growing-calibration": 6,
  "sampling-calibration-no-files": 10, "growing-calibration-no-files": 6, "tracking-frame": 8, "batch-of-four": 10
};

def pipeline_names: {
  "intake": "intake", "measureOnce": "measureOnce", "single-shot": "intake and measureOnce",
  "sampling-calibration": "sampling calibration, 80 % area", "growing-calibration": "growing calibration, 80 % area",
  "sampling-calibration-no-files": "sampling calibration, folder not writable",
  "growing-calibration-no-files": "growing calibration, folder not writable",
  "tracking-frame": "tracking frame: intake, fit, measureOnce", "batch-of-four": "batch of four"
};

def stages: [
  "back-projection", "height-cut", "component", "surface-filter", "footprint", "height-quantile", "detection-area",
  "normal-map", "dominant-normal", "sampling-fit", "region-growth", "least-squares"
];

# Medians as {work, point, plain, fast, bytes}, times in ms. Both forms must have found the same number.
def pairs:
  [.[] | select(.aggregate_name == "median") | (.run_name | split("/")) as $name
    | {work: $name[0], point: $name[1], form: $name[2], ms: .real_time, outcome, bytes}]
  | group_by([.work, .point])
  | map((map({(.form): .}) | add) as $forms
    | if $forms.plain.outcome != $forms.fast.outcome
      then error("\($forms.fast.work) at \($forms.fast.point): the forms differ")
      else {work: .[0].work, point: .[0].point, plain: $forms.plain.ms, fast: $forms.fast.ms, bytes: .[0].bytes} end);

def text($decimals):
  pow(10; $decimals) as $scale
  | ((. * $scale | round) / $scale | tostring) as $number
  | if $decimals == 0 then $number
    else ($number | split(".")) as $parts
      | $parts[0] + "." + (($parts[1] // "") + "0" * $decimals)[0:$decimals] end;

# About three significant digits.
def short: if . >= 100 then text(0) elif . >= 10 then text(1) elif . >= 0.1 then text(2) else text(4) end;

def ratio: (.plain / .fast) | text(if . >= 9.95 then 1 else 2 end);

def row: "| " + join(" | ") + " |";
def header($titles): ($titles | row), ($titles | map("---") | row);

def pixels: split("x") | map(tonumber) | .[0] * .[1];
def sort_key: if contains("x") then pixels else tonumber end;

def frames_per_second: (if .work == "batch-of-four" then 4 else 1 end) * 1000 / .fast | short;

def millions: if . == null then "" else . / 1e6 | short end;

# $instructions: array of {work, point, form, count}
def pipeline_table($instructions):
  pairs as $pairs
  | header(["work", "picture", "plain, ms", "fast, ms", "ratio", "wanted", "frames/s", "MB a call", "GB/s",
      "instructions plain, 10⁶", "instructions fast, 10⁶"]),
    (("640x480", "1280x720", "1920x1080") as $point | (pipeline_names | keys_unsorted)[] as $work
      | $pairs[] | select(.work == $work and .point == $point)
      | def count($form):
          first($instructions[] | select(.work == $work and .point == $point and .form == $form) | .count) // null;
        [pipeline_names[$work], $point, (.plain | short), (.fast | short), ratio, (wanted[$work] // "" | tostring),
          frames_per_second, (.bytes / 1e6 | text(1)), (.bytes / 1e6 / .fast | text(1)), (count("plain") | millions),
          (count("fast") | millions)] | row);

def stage_table:
  pairs as $pairs
  | header(["stage", "plain, ms", "fast, ms", "ratio"]),
    (stages[] as $stage | $pairs[] | select(.work == $stage) | [$stage, (.plain | short), (.fast | short), ratio] | row);

def sweep($name): pairs | map(select(.work == $name)) | sort_by(.point | sort_key);

def sweep_table($name; $title):
  header([$title, "plain, ms", "fast, ms", "ratio", "MB a call"]),
  (sweep($name)[] | [.point, (.plain | short), (.fast | short), ratio, (.bytes / 1e6 | text(1))] | row);

# "X PLAIN FAST" a line; X is in megapixels for picture sizes.
def plot_data($name):
  sweep($name)[]
  | "\(.point | if contains("x") then pixels / 1e6 else . end) \(.plain) \(.fast)";

def allocation_table:
  header(["work", "blocks a frame", "MB a frame"]),
  (.[] | [.work, (.blocks | text(2)), (.bytes / 1e6 | text(2))] | row);

def memory_table:
  def cell($rows; $work): first($rows[] | select(.work == $work))
    | "\(.peak_kib / 1024 | text(0)) (\(.before_kib / 1024 | text(0)))";
  header(["picture", "measuring", "calibrating, sampling fit", "batch of four"]),
  (group_by(.size) | sort_by(.[0].size | pixels) | .[]
    | [.[0].size, cell(.; "measure"), cell(.; "calibrate"), cell(.; "batch-of-four")] | row);

#!/usr/bin/env bash
# ardour.sh BUNDLE CORVANE: the strip in Ardour, without a window. On a track with a recorded voice, a factory
# preset is chosen from the host's own list; session and sound are kept. A second process opens the session: its
# parameters and its sound must be the same, and both must be what CORVANE renders.
set -euo pipefail

bundle=$(realpath "$1")
corvane=$(realpath "$2")
script=$(realpath "$(dirname "$0")/ardour.lua")
recording=/usr/share/sounds/alsa/Front_Center.wav  # 48 kHz, one channel
number=187                                          # the preset's index in the factory bank

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
. "$(dirname "$(realpath "$0")")/alone.sh"

see_bundle_alone

export SESSION=$work/session PLUGIN=https://quadrexa.example/lv2/corvane-mono
PRESET=$(sed -n "/^<.*#preset-$number>/,/\.$/s/.*rdfs:label \"\(.*\)\" ;/\1/p" "$bundle"/presets-*.ttl)
export PRESET
audio=$SESSION/interchange/session/audiofiles
ardour() {
  STEP=$1 timeout 120 ardour7-lua "$script" >"$1.told" 2>&1 || fail "$1: $(tail "$1.told")"
  grep -qx "done $1" "$1.told" || fail "$1: $(tail "$1.told")"
}
samples() {
  ffmpeg -v error -y -i "$1" -f f32le whole.raw
  head -c "$2" whole.raw
}

ardour lay
ffmpeg -v error -y -i "$recording" -c:a pcm_f32le "$audio/voice.wav"
ardour choose
ardour reopen

count=$(sed -n 's/^presets //p' choose.told)
[ "$count" -eq "$("$corvane" presets | wc -l)" ] || fail "Ardour lists $count presets"

grep '^control ' choose.told >chosen
grep '^control ' reopen.told >reopened
diff chosen reopened || fail "the second process holds other parameters"
# labels to symbols, to find each value of the preset's file among those that Ardour holds
awk -v head="<$PLUGIN#preset-$number>" '
  NR == FNR { sub(/^control /, ""); split($0, pair, "="); gsub(/[^A-Za-z0-9]/, "_", pair[1]); held[tolower(pair[1])] = pair[2]; next }
  $0 == head { within = 1 }
  within && /lv2:symbol/ {
    gsub(/"/, "")
    d = held[$3] - $6
    if (!($3 in held) || d > 1e-4 * ($6 + 1) && d > 1e-4 || d < -1e-4) { print $3, "is", held[$3], "and not", $6; wrong = 1 }
    seen++
  }
  within && / \.$/ { within = 0 }
  END { exit wrong || seen < 100 }' chosen "$bundle"/presets-*.ttl || fail "Ardour does not hold the preset's values"

whole=$((48000 * 4))
samples "$audio/first.wav" $whole >first.raw
samples "$audio/second.wav" $whole >second.raw
cmp first.raw second.raw || fail "the second process sounds different"
# Ardour ran for a second before, and fades the end of a region
played=$((46000 * 4))
ffmpeg -v error -i "$audio/voice.wav" -af adelay=1000 -c:a pcm_f32le delayed.wav
"$corvane" render --quiet delayed.wav --preset $number -o expected.wav
samples expected.wav $((whole + played)) | tail -c $played >expected.raw
head -c $played first.raw >head.raw
cmp head.raw expected.raw || fail "Ardour's sound is not what the strip renders"
echo "Ardour: $count presets listed, \"$PRESET\" chosen; $(wc -l <chosen) parameters and 1 s of sound the same in a" \
  "second process; the sound equals that of \`corvane render\` to the bit"

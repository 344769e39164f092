#!/usr/bin/env bash
# validators.sh BUNDLE CORVANE CHECK: what programs that we did not write say about the bundle.
#
# One check a call: schemas lists info bench lv2apply lv2file ffmpeg jalv. Those that make sound apply a factory
# preset to a recorded voice and compare with what CORVANE renders. Only the bundle and the descriptions that
# belong to LV2 itself can be found, whatever else this machine has.
set -Eeuo pipefail

bundle=$(realpath "$1")
corvane=$(realpath "$2")
check=$3
uri=https://quadrexa.example/lv2/corvane-mono
preset=187                                       # works at seven places; its name stands once in the bank
# A value that goes through its unit may come out one rounding away, which is far below this.
quiet_db=-100
recording=/usr/share/sounds/alsa/Front_Center.wav  # 48 kHz, one channel

work=$(mktemp -d)
jackd_id=""
finish() {
  [ -z "$jackd_id" ] || kill "$jackd_id" 2>/dev/null || true
  wait
  rm -rf "$work"
}
trap finish EXIT
trap 'echo "error: $check: line $LINENO failed" >&2' ERR

. "$(dirname "$(realpath "$0")")/alone.sh"
# The file must be empty; what stands in it is shown.
must_be_empty() {
  [ ! -s "$1" ] || fail "$check complains:"$'\n'"$(head -20 "$1")"
}

see_bundle_alone

# Lines "symbol value" of the preset, as its file in the bundle holds them.
preset_values() {
  awk -v head="<$uri#preset-$preset>" '
    $0 == head                  { within = 1 }
    within && /lv2:symbol/      { gsub(/"/, ""); print $3, $6; count++ }
    within && / \.$/            { exit }
    END                         { exit count < 100 }' "$bundle"/presets-*.ttl
}

# The voice as floats, and what the strip's own program makes of it.
prepare_sound() {
  ffmpeg -v error -i "$recording" -c:a pcm_f32le voice.wav
  "$corvane" render --quiet voice.wav --preset "$preset" -o expected.wav
  preset_values >values
  local moved
  moved=$(difference_db voice.wav expected.wav)
  above "$moved" -40 || fail "the preset changes the voice by no more than $moved dB: nothing is shown by it"
}
# Highest difference between two files of one channel, in dB of full scale; "-inf" for none.
difference_db() {
  ffmpeg -hide_banner -nostats -i "$1" -i "$2" -filter_complex \
    "[0:a][1:a]amerge=inputs=2,pan=mono|c0=c0-c1,astats=measure_perchannel=none:measure_overall=Peak_level" \
    -f null - 2>&1 | sed -n 's/.*Peak level dB: //p'
}
above() { awk -v a="$1" -v b="$2" 'BEGIN { exit !(a != "" && a != "-inf" && a + 0 > b + 0) }'; }
samples_of() { ffmpeg -v error -i "$1" -f f32le - | wc -c; }
same_sound() {
  local db
  [ "$(samples_of "$1")" = "$(samples_of expected.wav)" ] || fail "$1: not as long as what the strip renders"
  db=$(difference_db "$1" expected.wav)
  [ -n "$db" ] || fail "$1: cannot be compared"
  ! above "$db" "$quiet_db" || fail "$1: differs by $db dB from what the strip renders"
  echo "$check: differs by $db dB"
}

check_schemas() {
  local said
  said=$(lv2_validate "$bundle"/*.ttl 2>&1) || fail "$said"
  grep -q '^Found 0 errors' <<<"$said" || fail "$said"
  [ "$(sed -n 's/.*checked \([0-9]*\) restrictions.*/\1/p' <<<"$said")" -gt 10000 ] || fail "too little read: $said"
  # the judge himself: a port without a name must not pass
  sed '0,/lv2:name "Output" ;/s///' "$bundle/corvane.ttl" >nameless.ttl
  if lv2_validate "$bundle/manifest.ttl" nameless.ttl >said 2>&1 && grep -q '^Found 0 errors' said; then
    fail "a port without a name was passed"
  fi
  echo "$said" | tail -1
}

check_lists() {
  lv2ls >listed 2>complaints
  must_be_empty complaints
  diff - <(sort listed) <<<"$uri"$'\n'"$uri-sidechain" || fail "other plug-ins than ours two are listed"
}

check_info() {
  local count which
  count=$("$corvane" presets | wc -l)
  for which in "$uri" "$uri-sidechain"; do
    lv2info "$which" >told 2>complaints
    must_be_empty complaints
    grep -q 'Has latency: *yes, reported by port 2' told || fail "$which: no latency is told"
    [ "$(sed -n '/Presets:/,/Port 0:/p' told | grep -c $'^\t  ')" -eq "$count" ] || fail "$which: not $count presets"
    [ "$(grep -c 'Symbol:' told)" -eq "$(grep -c '^	Port [0-9]*:' told)" ] || fail "$which: a port without symbol"
  done
  grep -q 'isSideChain' told || fail "no port of $uri-sidechain is a side chain"
  echo "$count presets, $(grep -c 'Symbol:' told) ports"
}

check_bench() {
  lv2bench -n 96000 >timed 2>complaints
  must_be_empty complaints
  [ "$(awk '$1 > 0 && $1 < 60 { print $2 }' timed | sort)" = "$uri"$'\n'"$uri-sidechain" ] || fail "$(cat timed)"
  cat timed
}

check_lv2apply() {  # blocks of one sample
  prepare_sound
  local arguments
  mapfile -t arguments < <(awk '{ print "-c"; print $1; print $2 }' values)
  lv2apply -i voice.wav -o lv2apply.wav "${arguments[@]}" "$uri" 2>complaints
  must_be_empty complaints
  same_sound lv2apply.wav
}

check_lv2file() {  # finds the preset by its name
  prepare_sound
  local name
  name=$(sed -n "/^<.*#preset-$preset>/,/\.$/s/.*rdfs:label \"\(.*\)\" ;/\1/p" "$bundle"/presets-*.ttl)
  lv2file -L "$uri" >listed
  grep -qx "Preset: $name" listed || fail "\"$name\" is not in the list of presets"
  lv2file -i voice.wav -o lv2file.wav -P "$name" "$uri" >said 2>&1 || fail "$(cat said)"
  same_sound lv2file.wav
  # the second input must be named
  lv2file -i voice.wav -o keyed.wav -c 1:in -P "$name" "$uri-sidechain" >said 2>&1 || fail "$(cat said)"
  same_sound keyed.wav
}

check_ffmpeg() {
  prepare_sound
  ffmpeg -v warning -i voice.wav -af "lv2=p='${uri/:/\\:}':c='$(awk '{ printf "%s%s=%s", n++ ? "|" : "", $1, $2 }' values)'" \
    -c:a pcm_f32le ffmpeg.wav 2>complaints </dev/null || fail "$(cat complaints)"
  same_sound ffmpeg.wav
}

check_jalv() {  # ten seconds, live
  preset_values >values
  export JACK_DEFAULT_SERVER=corvane-$$ JACK_NO_START_SERVER=1
  jackd -n "$JACK_DEFAULT_SERVER" -r -d dummy -r 96000 -p 64 >jackd.log 2>&1 &
  jackd_id=$!
  local tries=0
  until jack_wait --server "$JACK_DEFAULT_SERVER" --check 2>/dev/null | grep -q '^running'; do
    [ $((tries += 1)) -lt 100 ] || fail "no JACK server: $(tail -5 jackd.log)"
    sleep 0.1
  done
  local arguments
  mapfile -t arguments < <(awk '{ print "-c"; print $1 "=" $2 }' values)
  {
    sleep 2
    echo controls
    # nothing is plugged in: the noise of a preamp has to reach the last place
    echo "set pre_type 4"
    echo "set pre_noiselevel -75"
    echo "set pre_noisein 2"
    sleep 8
    echo monitors
    echo quit
  } | timeout 60 jalv "${arguments[@]}" "$uri" >jalv.log 2>complaints || fail "jalv: $(cat complaints)"
  # jalv takes the end of its input for a command
  sed -i '/invalid command/d' complaints
  if grep -qi 'error\|warning' complaints; then fail "$(cat complaints)"; fi
  # the list after "controls" is the second; the first is what jalv itself prints as it starts
  awk 'NR == FNR { want[$1] = $2; next }
       /^> / && ++prompts { sub(/^> /, "") }
       prompts == 1 && $2 == "=" && $1 in want { if ($3 - want[$1] > 0.001 || want[$1] - $3 > 0.001) wrong = wrong " " $1; seen++ }
       END { if (seen < 100 || wrong) { print seen " seen, wrong:" wrong; exit 1 } }' values jalv.log ||
    fail "jalv does not hold the preset's values"
  local level
  level=$(sed -n 's/^mstr_out_level = //p' jalv.log | tail -1)
  above "$level" -90 || fail "no sound in ten seconds: the last place is at \"$level\" dB"
  ! grep -qi 'zombi\|timed out' jackd.log || fail "$(cat jackd.log)"
  echo "jalv: $level dB behind the last place"
}

declare -F "check_$check" >/dev/null || fail "no check \"$check\""
"check_$check"

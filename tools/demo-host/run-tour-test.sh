#!/usr/bin/env bash
# The short tour of the demo host against a small sample library, at one
# scale: every step must run, and every screenshot must exist and show a
# picture, not a blank.
#   run-tour-test.sh DEMO SAMPLE SERVICE LIBRARY WORKDIR
set -euo pipefail
demo=$1 sample=$2 service=$3 library=$4 work=$5
here=$(cd "$(dirname "$0")" && pwd)
source "$here/demo-env.sh"
export QT_QPA_PLATFORM=offscreen

rm -rf "$work"
mkdir -p "$work"
"$sample" --out "$work/sample" --galleries 2 --classes 2 --blocks 6 >/dev/null
demo_profile "$work/profile"
demo_set_option Rate 1.0
trap demo_stop_service EXIT
demo_start_service "$service" "$work/sample" "$work/service.log"

status=0
"$demo" --library "$library" --sample "$work/sample" --tour "$work/tour" --short \
  --rate-label 1.0 --step-timeout 10000 > "$work/host.out" 2>&1 || status=$?
cat "$work/tour/tour.log" 2>/dev/null || cat "$work/host.out"
if [ "$status" != 0 ]; then
  echo "FAIL: the tour ended with $status" >&2
  exit 1
fi

# What the walk must have left: its log says every step ran, and the shots.
grep -q 'tour ends: .*, 0 failed,' "$work/tour/tour.log" || { echo "FAIL: tour.log does not end clean" >&2; exit 1; }
# Numbers follow the order of the shots, which modal windows (a sign-in the
# panel asks for) may shift; the names are fixed.
expected="host panel gallery insert place-block recent manager collections search search-typed search-use feedback-form after-feedback host-window"
for name in $expected; do
  found=$(ls "$work/tour/"[0-9][0-9]-"$name"-1.0.png 2>/dev/null | head -n1)
  if [ -z "$found" ] || [ ! -s "$found" ]; then
    echo "FAIL: missing screenshot NN-$name-1.0.png" >&2
    ls "$work/tour" >&2
    exit 1
  fi
done
# Sizes and colours read back from the files: a blank shot has one colour.
"$demo" --inspect "$work"/tour/*.png || { echo "FAIL: a screenshot is blank or unreadable" >&2; exit 1; }
# The panel shots are the panel's own size at Rate 1: 755 by 454.
"$demo" --inspect "$work"/tour/[0-9][0-9]-panel-1.0.png | grep -q ' 755 454 ' || { echo "FAIL: the panel shot is not 755x454" >&2; exit 1; }
# The inserted block came from the store in the test's own documents folder.
grep -q "placed $work/profile/documents/.*\.dwg" "$work/tour/tour.log" || { echo "FAIL: no block placed from the test's store" >&2; exit 1; }
# Nothing was written outside the test's folder: the profile holds the service.
grep -q "ServiceBase=http://127.0.0.1:" "$XDG_CONFIG_HOME/Tarvex/Marrowfin.ini"
echo "tour ok"

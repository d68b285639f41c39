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
expected="01-host 02-panel 03-gallery 04-recent 05-collections 06-search 07-search-typed 08-feedback-form 09-after-feedback 10-host-window"
for name in $expected; do
  if [ ! -s "$work/tour/$name-1.0.png" ]; then
    echo "FAIL: missing screenshot $name-1.0.png" >&2
    ls "$work/tour" >&2
    exit 1
  fi
done
# Sizes and colours read back from the files: a blank shot has one colour.
"$demo" --inspect "$work"/tour/*.png || { echo "FAIL: a screenshot is blank or unreadable" >&2; exit 1; }
# The panel shots are the panel's own size at Rate 1: 755 by 454.
"$demo" --inspect "$work/tour/02-panel-1.0.png" | grep -q ' 755 454 ' || { echo "FAIL: the panel shot is not 755x454" >&2; exit 1; }
# Nothing was written outside the test's folder: the profile holds the service.
grep -q "ServiceBase=http://127.0.0.1:" "$XDG_CONFIG_HOME/Tarvex/Marrowfin.ini"
echo "tour ok"

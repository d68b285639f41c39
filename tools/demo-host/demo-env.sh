# Shell helpers shared by scripts/demo and the tour test: the stand-in
# service on a free loopback port and a profile of the demo's own, so that
# nothing touches the user's real profile or documents. Source it; bash only.

# demo_profile DIR: points XDG_CONFIG_HOME at DIR/config and the documents
# folder at DIR/documents (both made here).
demo_profile() {
  local dir=$1
  mkdir -p "$dir/config/Tarvex" "$dir/documents"
  export XDG_CONFIG_HOME="$dir/config"
  # The library falls back on the XDG documents folder when docDir is unset.
  printf 'XDG_DOCUMENTS_DIR="%s"\n' "$dir/documents" > "$dir/config/user-dirs.dirs"
  demo_set_option docDir "$dir/documents"
}

# demo_set_option KEY VALUE: sets KEY in [options] of the demo profile,
# keeping the other keys and sections.
demo_set_option() {
  local file="$XDG_CONFIG_HOME/Tarvex/Marrowfin.ini" key=$1 value=$2 tmp
  mkdir -p "$(dirname "$file")"
  [ -f "$file" ] || printf '[options]\n' > "$file"
  grep -qi '^\[options\]' "$file" || printf '[options]\n' >> "$file"
  tmp="$file.tmp.$$"
  awk -v key="$key" -v value="$value" '
    BEGIN { lk = tolower(key) }
    /^\[/ { if (inopt && !done) { print key "=" value; done = 1 }
            inopt = (tolower($0) == "[options]") }
    { split($0, kv, "="); if (inopt && tolower(kv[1]) == lk) { if (!done) { print key "=" value; done = 1 } ; next } print }
    END { if (inopt && !done) print key "=" value }
  ' "$file" > "$tmp" && mv "$tmp" "$file"
}

# demo_start_service SERVICE DATA LOG [LATENCY_MS]: starts the service on a
# free port, sets DEMO_SERVICE_PID and DEMO_SERVICE_BASE, and writes
# ServiceBase. With LATENCY_MS above 0 every answer waits that long first.
demo_start_service() {
  local service=$1 data=$2 log=$3 latency=${4:-0} line="" i
  local faults=()
  if [ "$latency" -gt 0 ]; then faults=(--fault "*?latency=$latency"); fi
  "$service" --data "$data" --port 0 "${faults[@]}" > "$log" 2>&1 &
  DEMO_SERVICE_PID=$!
  for i in $(seq 1 100); do
    line=$(head -n1 "$log" 2>/dev/null || true)
    case "$line" in "listening on "*) break ;; esac
    if ! kill -0 "$DEMO_SERVICE_PID" 2>/dev/null; then
      echo "demo: the service did not start:" >&2; cat "$log" >&2; return 1
    fi
    sleep 0.1
  done
  # "listening on ADDR port N"
  set -- $line
  if [ "${1:-}" != listening ] || [ -z "${5:-}" ]; then
    echo "demo: the service did not report its port" >&2; cat "$log" >&2; return 1
  fi
  DEMO_SERVICE_BASE="http://$3:$5"
  demo_set_option ServiceBase "$DEMO_SERVICE_BASE"
}

demo_stop_service() {
  if [ -n "${DEMO_SERVICE_PID:-}" ] && kill -0 "$DEMO_SERVICE_PID" 2>/dev/null; then
    kill "$DEMO_SERVICE_PID" 2>/dev/null || true
    wait "$DEMO_SERVICE_PID" 2>/dev/null || true
  fi
  DEMO_SERVICE_PID=
}

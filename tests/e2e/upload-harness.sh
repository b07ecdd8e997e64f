# Helpers of the upload cases, sourced after harness.sh: a real S3 server
# (OpenStack Swift's S3 API on 127.0.0.1, tests/cloud/fixture/swift-s3) with
# a bucket anyone can read through Swift's own API, glimpso's settings
# pointed at it, and the desktop's keyring.
#
#   start_swift            Swift for this case; sets S3_ENDPOINT, S3_ACCESS_KEY_ID,
#                          S3_SECRET_ACCESS_KEY (a secret of its own), BUCKET and
#                          PUBLIC_BASE, the link base that curl reads without keys
#   point_glimpso_at_swift writes the cloud settings (before glimpso starts)
#   store_credentials KEY SECRET  `glimpso cloud-credentials`, the two lines on stdin
#   fetch URL FILE         curl without credentials; fails on any HTTP error
#   s3 ACTION ARGS...      a boto3 call with the case's keys (tools/s3.py)
#   stop_swift_proxy / start_swift_proxy   the S3 endpoint goes away and comes back
#   start_keyring          gnome-keyring-daemon on the case's bus, unlocked
#   keyring_store ACCOUNT VALUE / keyring_lookup ACCOUNT (secret-tool), keyring_has ACCOUNT

UPLOAD_FIXTURE=$E2E_HARNESS_DIR/../cloud/fixture/swift-s3
BUCKET=shots

start_swift() {
  local exports
  # A secret that appears nowhere else, so a log holding it is easy to see.
  export SWIFT_S3_SECRET="Sec$(head -c 12 /dev/urandom | od -An -tx1 | tr -d ' \n')Ret"
  exports=$("$UPLOAD_FIXTURE" "$E2E_DIR") || e2e_fail "Swift did not start"
  eval "$exports"
  E2E_CLEANUPS+=("$SWIFT_STOP")
  # Swift's servers run in sessions of their own: should this case be killed
  # (a test time-out) before its clean-up runs, a watcher outside it stops
  # them once the case's shell is gone.
  setsid bash -c "while kill -0 $$ 2>/dev/null; do sleep 1; done; '$SWIFT_STOP'" </dev/null >/dev/null 2>&1 &
  case "$S3_ENDPOINT" in
    http://127.0.0.1:*) ;;
    *) e2e_fail "the fixture gave no loopback endpoint: $S3_ENDPOINT" ;;
  esac
  s3 create-public-bucket "$BUCKET" >/dev/null
  PUBLIC_BASE=$S3_ENDPOINT/v1/AUTH_test/$BUCKET
  e2e_log "Swift's S3 API at $S3_ENDPOINT, links under $PUBLIC_BASE"
}

s3() { /usr/bin/python3 "$E2E_HARNESS_DIR/tools/s3.py" "$@"; }

point_glimpso_at_swift() {
  local conf=$XDG_CONFIG_HOME/glimpso/glimpso.conf
  mkdir -p "$(dirname "$conf")"
  {
    printf '[General]\n'
    printf 'settings.cloud.provider=s3Compatible\n'
    printf 'settings.cloud.endpoint=%s\n' "$S3_ENDPOINT"
    printf 'settings.cloud.bucket=%s\n' "$BUCKET"
    printf 'settings.cloud.publicBaseURL=%s\n' "$PUBLIC_BASE"
  } >>"$conf"
}

store_credentials() {
  set +e
  printf '%s\n%s\n' "$1" "$2" | timeout 20 "$GLIMPSO_BIN" cloud-credentials >"$E2E_DIR/out" 2>"$E2E_DIR/err"
  E2E_STATUS=$?
  set -e
  E2E_OUT=$(cat "$E2E_DIR/out")
  E2E_ERR=$(cat "$E2E_DIR/err")
}

# glimpso_upload FILE [SECONDS]: `glimpso upload`, waiting up to SECONDS (60).
glimpso_upload() {
  set +e
  timeout "${2:-60}" "$GLIMPSO_BIN" upload "$1" >"$E2E_DIR/out" 2>"$E2E_DIR/err"
  E2E_STATUS=$?
  set -e
  E2E_OUT=$(cat "$E2E_DIR/out")
  E2E_ERR=$(cat "$E2E_DIR/err")
}

fetch() { curl --silent --show-error --fail --max-time 60 -o "$2" "$1"; }

stop_swift_proxy() {
  local pid
  pid=$(cat "$SWIFT_RUN_DIR/run/proxy.pid")
  kill "$pid"
  wait_for "the Swift proxy to stop" 20 bash -c "! kill -0 $pid 2>/dev/null"
}

start_swift_proxy() {
  setsid /usr/bin/python3 /usr/bin/swift-proxy-server "$SWIFT_RUN_DIR/etc/proxy-server.conf" -v \
    </dev/null >>"$SWIFT_RUN_DIR/log/proxy.log" 2>&1 &
  echo $! >"$SWIFT_RUN_DIR/run/proxy.pid"
  wait_for "the Swift proxy to answer" 60 curl --silent --fail --max-time 2 "$S3_ENDPOINT/healthcheck"
}

# The desktop's keyring, as a session has it once the user logged in.
start_keyring() {
  command -v gnome-keyring-daemon >/dev/null || { echo "gnome-keyring-daemon is not installed"; exit 77; }
  printf 'keyring-password' | gnome-keyring-daemon --unlock --components=secrets --foreground \
    >"$E2E_DIR/keyring.log" 2>&1 &
  E2E_PIDS+=($!)
  wait_for "the keyring on the bus" 20 bus_name_has_owner org.freedesktop.secrets
}

keyring_store() {
  printf '%s' "$2" | secret-tool store --label="glimpso $1" service com.tovarine.glimpso account "$1"
}
# keyring_lookup ACCOUNT: the secret; unlocks the keyring, so it may prompt.
keyring_lookup() { secret-tool lookup service com.tovarine.glimpso account "$1" 2>/dev/null || true; }
# keyring_has ACCOUNT: whether an item exists, locked or not, without a prompt.
keyring_has() {
  dbus-send --session --print-reply --dest=org.freedesktop.secrets /org/freedesktop/secrets \
    org.freedesktop.Secret.Service.SearchItems \
    dict:string:string:"service","com.tovarine.glimpso","account","$1" | grep -q 'object path "/org/freedesktop/secrets/collection'
}
keyring_lock() {
  dbus-send --session --print-reply --dest=org.freedesktop.secrets /org/freedesktop/secrets \
    org.freedesktop.Secret.Service.Lock array:objpath:/org/freedesktop/secrets/collection/login >/dev/null
}

# file_mode PATH: the permission bits in octal, as 600.
file_mode() { stat -c %a "$1"; }

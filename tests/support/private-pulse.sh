#!/usr/bin/env bash
# A PulseAudio server of a test's own, in the foreground, in the folder given:
#
#   private-pulse.sh DIR
#
# Clients reach it with PULSE_SERVER=unix:DIR/native. It has two null sinks:
# "speakers", the default output (its monitor is the system's sound), and
# "microphone", whose monitor is the default input, so a test plays into
# "microphone" what the microphone should hear. Nothing of the user's own
# sound setup is read or touched; the server ends with its process.
set -euo pipefail
dir=$1
mkdir -p "$dir/home/.config"
cat > "$dir/server.pa" <<PA
load-module module-null-sink sink_name=speakers rate=48000 sink_properties=device.description=Speakers
load-module module-null-sink sink_name=microphone rate=48000 sink_properties=device.description=Microphone
load-module module-native-protocol-unix socket=$dir/native auth-anonymous=1
set-default-sink speakers
set-default-source microphone.monitor
PA
export HOME=$dir/home XDG_CONFIG_HOME=$dir/home/.config XDG_RUNTIME_DIR=$dir PULSE_RUNTIME_PATH=$dir/runtime
unset PULSE_SERVER DBUS_SESSION_BUS_ADDRESS DISPLAY
exec pulseaudio --daemonize=no -n -F "$dir/server.pa" --exit-idle-time=-1 --use-pid-file=no \
  --log-target=stderr --log-level=error

#!/bin/sh
# Runs a command on a virtual display of its own. xvfb-run may fail when it removes its files.
set -eu
number=$(mktemp)
Xvfb -displayfd 3 -screen 0 800x600x24 -nolisten tcp -terminate 3>"$number" 2>/dev/null &
server=$!
trap 'kill $server 2>/dev/null || true; rm "$number"' EXIT
until [ -s "$number" ]; do
    kill -0 $server
    sleep 0.1
done
status=0
DISPLAY=:$(cat "$number") "$@" || status=$?
exit $status

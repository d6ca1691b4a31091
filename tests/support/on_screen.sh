#!/usr/bin/env bash
# Runs a program on a virtual screen of its own and ends as it does. The server says itself when it is ready:
# any number of these may start at the same time, on a machine as busy as it likes.
#
#   tests/support/on_screen.sh PROGRAM [ARGUMENT]...
set -u
messages=$(mktemp)
server=
trap 'rm -f "$messages"; [ -z "$server" ] || { kill "$server" && wait "$server"; } 2>/dev/null' EXIT

ready=
for _ in {1..50}; do # a number that is taken, or left behind by a server that was killed, is one of many
  number=$((100 + RANDOM))
  [ -e "/tmp/.X$number-lock" ] && continue
  exec {answer}< <(exec Xvfb ":$number" -displayfd 1 -screen 0 2560x1600x24 -noreset -nolisten tcp 2>"$messages")
  server=$!
  read -r ready <&"$answer" && break
  server=
done
if [ -z "$ready" ]; then
  cat "$messages" >&2
  printf 'There is no virtual screen.\n' >&2
  exit 1
fi
DISPLAY=:$ready "$@"

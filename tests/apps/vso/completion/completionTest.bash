#!/usr/bin/env bash
# What bash completes of command lines of vso, and whether that is what the program takes.
#
#   completionTest.bash SCRIPT PROGRAM
set -u
script=$1
program=$2
failures=0

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
mkdir state "state of mine"
touch "map one.svg" map-two.svg mesh.state

# shellcheck source=/dev/null
source "$script" || exit 1

# The completions of the last of these words, sorted, one a line.
completions() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=("left from before")
  _vso
  [[ ${#COMPREPLY[@]} -eq 0 ]] || printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort
}

# expect EXPECTED WORD...: EXPECTED has a completion a line.
expect() {
  local expected=$1 found
  shift
  found=$(completions "$@")
  [[ $found == "$expected" ]] && return
  failures=$((failures + 1))
  printf 'completing "%s"\nexpected: %s\nfound:    %s\n' "$*" "${expected//$'\n'/ }" "${found//$'\n'/ }" >&2
}

lines() { printf '%s\n' "$@"; }

# The long options that a command's help names, sorted.
options_of() { "$program" "$@" --help | sed -nE '/^Options:$/,/^$/s/^  (-h,)?(--[a-z-]+).*/\2/p' | LC_ALL=C sort; }
# The commands that a command's help names, sorted.
commands_of() {
  "$program" "$@" --help | sed -nE '/^Subcommands:$/,/^$/s/^  ([a-z][a-z-]*)( .*)?$/\1/p' | LC_ALL=C sort
}

# It is known to bash under the program's name, and so wherever that is installed.
[[ $(complete -p vso) == "complete -F _vso vso" ]] || {
  echo "vso has another completion: $(complete -p vso)" >&2
  failures=$((failures + 1))
}

# Commands and options
all_commands=$(commands_of)
[[ $(wc -l <<< "$all_commands") -ge 5 ]] || {
  echo "the help names too few commands: $all_commands" >&2
  failures=$((failures + 1))
}
expect "$(lines "$(options_of)" "$all_commands" | LC_ALL=C sort)" vso ""
expect "$(options_of)" vso --
expect "$(lines decode)" vso d
expect "" vso x
for command in $all_commands; do
  expect "$(options_of "$command")" vso "$command" --
done
expect "--json" vso node mesh.state --j
expect "$(lines --metrics --metrics-name)" vso decode --json --me

# Values
for command in decode replay node; do
  expect "$(lines always auto never)" vso "$command" --color ""
  expect "never" vso "$command" --color n
  expect "$(lines always auto)" vso "$command" --color = a
  expect "$(lines always auto never)" vso "$command" --color =
done
expect "$(lines state "state of mine")" vso replay --state s
expect "$(lines state "state of mine")" vso serve --state = s
expect "$(lines "map one.svg" map-two.svg)" vso node --map ma
expect "" vso serve --listen ""
expect "" vso decode --node ""

# Files
for command in decode replay node; do
  expect "$(lines "map one.svg" map-two.svg mesh.state state "state of mine")" vso "$command" ""
  expect "mesh.state" vso "$command" --color never me
done
expect "$(options_of serve)" vso serve ""

# What can be encoded
groups=$(commands_of encode)
expect "$groups" "$program" encode ""
expect "$(options_of encode)" "$program" encode --
for group in $groups; do
  expect "$(commands_of encode "$group")" "$program" encode "$group" ""
done
expect "level-control" "$program" encode le
expect "$(lines move-to-level move-to-level-with-on-off)" "$program" encode level-control move-to-
"$program" encode --list | while read -r group command _; do
  expect "$(options_of encode "$group" "$command")" "$program" encode "$group" "$command" --
  [[ $failures -eq 0 ]] || exit 1
done || failures=$((failures + 1))
expect "" "$program" encode level-control move-to-level --level ""
expect "--level" "$program" encode level-control move-to-level --line --le
expect "" "$program" encode nobody ""
expect "" ./no-such-program encode ""

# As the shell calls it
HOME=$(dirname "$program")
# shellcheck disable=SC2088
expect "$groups" "~/$(basename "$program")" encode ""

[[ $failures -eq 0 ]] || {
  echo "$failures completions are wrong" >&2
  exit 1
}

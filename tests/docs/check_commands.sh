#!/usr/bin/env bash
# check_commands.sh ROOT PROGRAM: runs the svmscore commands that the README and docs/ show, and
# fails if their standard output is not what is shown below them.
#
# It checks blocks marked `console`: a line "$ ./svmscore ..." and the lines below it, up to the next
# command or the end of the block. A last line "..." means further lines.
set -euo pipefail
cd -- "$1"
program=$2

wrong=0 seen=0
run_one() {
  local page=$1 command=$2 shown=$3 printed cut=cat
  seen=$((seen + 1))
  if [[ $shown == *$'\n...' ]]; then
    shown=${shown%$'\n...'}
    cut="head -n $(wc -l <<<"$shown")"
  fi
  printed=$(PROGRAM=$program bash -c "${command//.\/svmscore/\"\$PROGRAM\"}" 2>/dev/null |
    $cut) || true
  if [ "$printed" != "$shown" ]; then
    echo "$page: $command"
    diff <(echo "$shown") <(echo "$printed") || true
    wrong=1
  fi
}

check_page() {
  local page=$1 line inside=0 command='' shown=''
  finish() {
    [[ $command != './svmscore'* ]] || run_one "$page" "$command" "${shown#$'\n'}"
    command='' shown=''
  }
  while IFS= read -r line; do
    case $line in
      '```console') inside=1 ;;
      '```') finish; inside=0 ;;
      '$ '*) [ $inside -eq 0 ] || { finish; command=${line#'$ '}; } ;;
      *) [ $inside -eq 0 ] || shown+=$'\n'$line ;;
    esac
  done <"$page"
}

for page in README.md docs/*.md; do check_page "$page"; done
[ $seen -gt 0 ] || { echo "no command found"; exit 1; }
exit $wrong

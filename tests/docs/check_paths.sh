#!/usr/bin/env bash
# check_paths.sh ROOT: fails if a README or a page under docs/ names a file or folder that does not
# exist, or, in a row that names a file and then a function, a function that the file lacks.
#
# A path is a text in backticks that contains a slash or ends like a file of this project. It is
# relative to the root, or to the folder of the page that names it.
set -euo pipefail
cd -- "$1"

is_path() {
  [[ $1 == *[a-z]* && $1 =~ ^[A-Za-z0-9_.-]+(/[A-Za-z0-9_.-]+)*/?$ ]] &&
    [[ $1 == */* || $1 =~ \.(h|cpp|md|txt|py|sh|cmake|csv|pmml)$ ]]
}

wrong=0 seen=0
complain() {
  echo "$1"
  wrong=1
}

# The pieces between backticks in a line, one a line.
# shellcheck disable=SC2016  # backquotes are meant as such
quoted() { grep -oE '`[^`]+`' <<<"$1" | tr -d '`' || true; }

check_page() {
  local page=$1 line piece file
  while IFS= read -r line; do
    [[ $line == *'`'* ]] || continue
    file=''
    while IFS= read -r piece; do
      if is_path "$piece"; then
        # Files made by a build or an installation are not in the tree.
        [[ $piece == build/* || $piece == lib/* || $piece == bin/* ]] && continue
        seen=$((seen + 1))
        file=$piece
        [ -e "$file" ] || file=${page%/*}/$piece
        [ -e "$file" ] || complain "$page: no $piece"
      elif [[ $line == '|'* && $piece =~ ^[A-Za-z_:~]+\(\)$ && -f $file ]]; then
        piece=${piece##*::}
        grep -qF -- "${piece%)}" "$file" || complain "$page: no $piece in $file"
      fi
    done < <(quoted "$line")
  done <"$page"
}

while IFS= read -r page; do
  check_page "$page"
done < <(find . -path ./build -prune -o -path ./.git -prune -o \
  \( -name README.md -o -path './docs/*.md' \) -print)
[ $seen -gt 0 ] || complain "no page names a path"
exit $wrong

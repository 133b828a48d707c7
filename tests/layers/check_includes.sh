#!/usr/bin/env bash
# check_includes.sh ROOT: fails where an include goes the wrong way between the folders under ROOT.
set -euo pipefail
cd -- "$1"

constants='svm/export/constants.h svm/export/messages.h'
# What each folder may include beside itself, as prefixes of paths.
declare -A allowed=(
  [host]=''
  [common]='host/'
  [math]='host/ common/'
  [svm/kernel]="host/ math/ common/ $constants"
  [svm/learn]="host/ math/ common/ $constants"
  [svm/result]="host/ $constants"
  [svm/model]="host/ math/ common/ svm/kernel/ svm/learn/ svm/result/ $constants"
  [svm/translator]="host/ common/ svm/model/ $constants"
  [svm/export]='host/ svm/translator/'
  [app]='host/'
  [fuzz]='app/ host/ svm/kernel/ tests/kernel_packed/'
)

# The folder of the table that a source file belongs to.
room_of() {
  case $1 in
    svm/*) echo "svm/$(cut -d/ -f2 <<<"$1")" ;;
    *) echo "${1%%/*}" ;;
  esac
}

wrong=0 seen=0
complain() {
  echo "$1:$2: $3"
  wrong=1
}

while IFS=: read -r file line text; do
  seen=$((seen + 1))
  included=${text#*\"} included=${included%%\"*}
  room=$(room_of "$file")
  if [[ ! -v allowed[$room] ]]; then
    complain "$file" "$line" "$room has no place in the order of folders"
  elif [[ $included != */* || ! -e $included ]]; then
    complain "$file" "$line" "\"$included\" is not a path from the root of the project"
  elif [[ $file == svm/export/@(constants|messages).h ]]; then
    complain "$file" "$line" "a header that all of svm/ may include includes none of the project"
  else
    fits=0
    for prefix in "$room/" ${allowed[$room]}; do
      [[ $included == "$prefix"* ]] && fits=1
    done
    [ $fits -eq 1 ] || complain "$file" "$line" "$room may not include \"$included\""
  fi
done < <(grep -rnE --include='*.h' --include='*.cpp' --include='*.inc' \
  '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' app common fuzz host math svm || true)

if [ $seen -eq 0 ]; then
  echo "no include found under $PWD"
  exit 1
fi
exit $wrong

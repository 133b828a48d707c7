#!/usr/bin/env bash
# check_includes_test.sh CHECKER: the checker accepts a tree with includes in the right direction,
# and refuses it with any one that is not.
set -euo pipefail
checker=$1
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree"/{app,common,fuzz,host/pmml,math,svm/{export,kernel,learn,model,other,result,translator}}
touch "$tree"/{app/a,common/c,fuzz/f,host/h,host/pmml/p,math/m}.h
touch "$tree"/svm/{kernel/k,learn/l,model/m,result/r,translator/t,export/e,export/constants}.h

failed=0
# expect STATUS FILE INCLUDED: with that include the checker ends so.
expect() {
  local status=0
  echo "#include \"$3\"" >"$tree/$2"
  "$checker" "$tree" >/dev/null || status=$?
  [ $status -eq "$1" ] || { echo "$2 including $3: status $status, not $1"; failed=1; }
}
right() { expect 0 "$@"; }
wrong() { expect 1 "$@"; rm "$tree/$1"; }

right app/a.cpp host/pmml/p.h
right svm/model/m.cpp svm/kernel/k.h
right svm/kernel/k.cpp svm/export/constants.h
right fuzz/f.cpp app/a.h
right svm/export/e.cpp svm/translator/t.h
wrong app/b.cpp svm/model/m.h
wrong host/b.cpp common/c.h
wrong host/pmml/b.cpp app/a.h
wrong app/b.cpp fuzz/f.h
wrong fuzz/b.cpp svm/model/m.h
wrong math/b.cpp svm/learn/l.h
wrong svm/kernel/b.cpp svm/model/m.h
wrong svm/result/b.cpp svm/kernel/k.h
wrong svm/model/b.cpp svm/translator/t.h
wrong svm/translator/b.cpp svm/kernel/k.h
wrong svm/translator/b.cpp svm/export/e.h
wrong svm/export/b.cpp app/a.h
wrong svm/other/b.cpp host/h.h
wrong svm/model/b.cpp m.h
exit $failed

#!/usr/bin/env bash
# check_c_program.sh C_PROGRAM PROGRAM FOLDER: what the C program prints of the example in FOLDER is what
# the program prints.
set -euo pipefail
"$1" "$3/model.pmml" "$3/cases.csv" | diff - <("$2" score "$3/model.pmml" "$3/cases.csv" 2>/dev/null)

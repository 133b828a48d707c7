#!/usr/bin/env bash
# check_embed.sh EMBED PROGRAM EXAMPLE: fails if the embedding program prints other predictions than
# the command line.
set -euo pipefail
"$1" "$3/model.pmml" "$3/cases.csv" |
  diff - <("$2" score "$3/model.pmml" "$3/cases.csv" 2>/dev/null | tail -n +2 | cut -d, -f1)

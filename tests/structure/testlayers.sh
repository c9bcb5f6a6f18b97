#!/usr/bin/env bash
# Every quoted include in src/ must point down: a folder may include itself,
# the folders its row of the layer table in docs/architecture.md names, and
# whatever those may include. A folder missing from the table is an error too.
set -euo pipefail
root=${1:?source folder}
table="$root/docs/architecture.md"

declare -A direct
while IFS='|' read -r _ _ folder uses _; do
    folder=$(sed -E 's/[` ]//g; s#^src/##' <<<"$folder")
    uses=$(sed -E 's/—|-//g; s/,/ /g' <<<"$uses")
    direct[$folder]=$(xargs <<<"$uses")
done < <(grep -E '^\| *[a-z]+ *\| *`src/[a-z]+`' "$table")
((${#direct[@]})) || { echo "no layer table found in $table"; exit 1; }

# The closure of what each folder may use.
declare -A allowed
closure() {
    local seen=" $1 " queue=($1) next
    while ((${#queue[@]})); do
        next=${queue[0]}; queue=("${queue[@]:1}")
        for used in ${direct[$next]}; do
            [[ $seen == *" $used "* ]] && continue
            [[ -v direct[$used] ]] || { echo "the table names an unknown layer: $used"; exit 1; }
            seen+="$used "; queue+=("$used")
        done
    done
    echo "$seen"
}
for folder in "${!direct[@]}"; do allowed[$folder]=$(closure "$folder"); done

status=0
while IFS= read -r file; do
    rel=${file#"$root/src/"}
    folder=${rel%%/*}
    [[ $rel == */* ]] || { echo "$rel: a source file outside every layer"; status=1; continue; }
    if [[ ! -v direct[$folder] ]]; then
        echo "src/$folder: a folder the layer table does not name"; status=1; continue
    fi
    while IFS=: read -r line target; do
        used=${target%%/*}
        [[ $target == */* && -v direct[$used] ]] || continue
        if [[ ${allowed[$folder]} != *" $used "* ]]; then
            echo "src/$rel:$line includes \"$target\": $folder may not use $used"
            status=1
        fi
    done < <(grep -nE '^#include "' "$file" | sed -E 's/^([0-9]+):#include "([^"]+)".*/\1:\2/')
done < <(find "$root/src" -type f \( -name '*.h' -o -name '*.cpp' \) | sort)
exit $status
